"use strict";
(function () {
  const form = document.getElementById("envio");
  const input = document.getElementById("arquivos");
  const target = document.getElementById("alvo");
  const state = document.getElementById("estado");
  const actions = document.getElementById("acoes");
  const report = document.getElementById("relatorio");
  const limit = Number(form.dataset.limite);
  let running = false;

  document.getElementById("soltar").hidden = false;

  function tell(text, failed) {
    state.textContent = text;
    state.className = failed ? "falha" : "";
  }

  // Answers that are not ok carry a sentence for people.
  async function post(address, files, accept) {
    const body = new FormData();
    let size = 0;
    for (const file of files) {
      body.append("arquivo", file, file.name);
      size += file.size;
    }
    if (size > limit) {
      throw new Error("Os arquivos passam do limite deste serviço, " + Math.floor(limit / 1048576) + " MB.");
    }
    let response;
    try {
      response = await fetch(address, { method: "POST", body: body, headers: { Accept: accept } });
    } catch (failure) {
      throw new Error("O serviço não respondeu. Tente de novo.");
    }
    if (response.ok) {
      return response;
    }
    let text = "O serviço respondeu com o erro " + response.status + ".";
    try {
      text = (await response.json()).erro || text;
    } catch (failure) {
      // the status says it
    }
    throw new Error(text);
  }

  async function work(what, action) {
    if (running) {
      return;
    }
    running = true;
    for (const button of document.querySelectorAll("button")) {
      button.disabled = true;
    }
    tell(what, false);
    try {
      tell(await action(), false);
    } catch (failure) {
      tell(failure.message, true);
    }
    running = false;
    for (const button of document.querySelectorAll("button")) {
      button.disabled = false;
    }
  }

  function save(blob, name) {
    const address = URL.createObjectURL(blob);
    const link = document.createElement("a");
    link.href = address;
    link.download = name;
    link.click();
    setTimeout(function () { URL.revokeObjectURL(address); }, 60000);
  }

  function count(number, one, many) {
    return number + " " + (number === 1 ? one : many);
  }

  function print(files) {
    if (files.length === 0) {
      return tell("Escolha um arquivo XML.", true);
    }
    return work("Imprimindo…", async function () {
      const response = await post("/imprimir", files, "application/pdf");
      const name = files.length === 1 ? files[0].name.replace(/\.[^.]*$/, "") + ".pdf" : "guias.pdf";
      save(await response.blob(), name);
      return name + ": " + count(Number(response.headers.get("Conferix-Guias")), "guia", "guias") + ", " +
        count(Number(response.headers.get("Conferix-Paginas")), "página", "páginas") + ".";
    });
  }

  function addButton(text, action) {
    const button = document.createElement("button");
    button.type = "button";
    button.className = "segundo";
    button.textContent = text;
    button.addEventListener("click", action);
    actions.append(button);
  }

  function correct(file) {
    return work("Corrigindo " + file.name + "…", async function () {
      const response = await post("/corrigir?estrutura&todas", [file], "application/xml");
      const applied = Number(response.headers.get("Conferix-Correcoes"));
      const left = Number(response.headers.get("Conferix-Nao-Corrigidas"));
      const verdicts = { sim: "válido", nao: "ainda inválido", "nao-verificado": "não verificado" };
      save(await response.blob(), file.name);
      return file.name + ": " + count(applied, "correção", "correções") +
        (left === 0 ? "" : ", " + count(left, "não corrigida", "não corrigidas")) +
        "; " + verdicts[response.headers.get("Conferix-Valido")] + ".";
    });
  }

  function validate(files) {
    if (files.length === 0) {
      return tell("Escolha um arquivo XML.", true);
    }
    return work(files.length === 1 ? "Conferindo…" : "Conferindo " + files.length + " arquivos…", async function () {
      report.replaceChildren();
      actions.replaceChildren();
      const response = await post("/validar?formato=html", files, "text/html");
      // The page has the stylesheet of reports itself, and its policy takes no other.
      const text = (await response.text()).replace(/<style>[^]*?<\/style>/, "");
      const page = new DOMParser().parseFromString(text, "text/html");
      report.replaceChildren(...document.adoptNode(page.querySelector("main")).childNodes);
      for (const file of files) {
        addButton("Baixar corrigido: " + file.name, function () { correct(file); });
        addButton("Imprimir: " + file.name, function () { print([file]); });
      }
      return "";
    });
  }

  form.addEventListener("submit", function (event) {
    event.preventDefault();
    const files = Array.from(input.files);
    const action = event.submitter ? event.submitter.formAction : "";
    if (action.includes("/imprimir")) {
      print(files);
    } else if (action.includes("/corrigir")) {
      if (files.length === 1) {
        correct(files[0]);
      } else {
        tell("Um arquivo é corrigido de cada vez; confira-os todos e baixe cada um.", true);
      }
    } else {
      validate(files);
    }
  });
  document.addEventListener("dragover", function (event) {
    event.preventDefault();
    target.classList.add("sobre");
  });
  document.addEventListener("dragleave", function () {
    target.classList.remove("sobre");
  });
  document.addEventListener("drop", function (event) {
    event.preventDefault();
    target.classList.remove("sobre");
    const files = Array.from(event.dataTransfer.files);
    if (files.length !== 0) {
      validate(files);
    }
  });
})();
