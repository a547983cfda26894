#!/bin/bash
# Prints the examples and reads the PDF with other programs. Usage: imprimir.sh CONFERIX EXEMPLOS
set -u
conferix=$1 exemplos=$2
for programa in qpdf pdftotext pdfinfo; do
    command -v "$programa" >/dev/null || { echo "$programa não está instalado: não executado"; exit 77; }
done
pasta=$(mktemp -d)
trap 'rm -rf "$pasta"' EXIT
export CONFERIX_DADOS=$pasta/dados
falhas=0
falhou() {
    echo "FALHOU: $*"
    falhas=$((falhas + 1))
}

for arquivo in "$exemplos"/{consulta,spsadt,internacao,honorarios,odonto}-*-valido.xml; do
    pdf=$pasta/guias.pdf
    "$conferix" imprimir "$arquivo" --saida "$pdf" 2>/dev/null || falhou "imprimir $arquivo"
    qpdf --check "$pdf" >"$pasta/qpdf" 2>&1 || falhou "qpdf: $arquivo: $(cat "$pasta/qpdf")"
    pdftotext -layout "$pdf" "$pasta/texto"
    # Numbers of guides, cards, codes and all other texts without blanks are found as they stand in the file.
    grep -oE '<ans:(numeroGuiaPrestador|numeroCarteira|codigoProcedimento|codigo|senha|CNES)>[^<]+' "$arquivo" | sed 's/.*>//' | sort -u |
        while read -r valor; do
            grep -qF -- "$valor" "$pasta/texto" || echo "$arquivo: $valor"
        done >"$pasta/ausentes"
    [ ! -s "$pasta/ausentes" ] || falhou "não estão no texto: $(cat "$pasta/ausentes")"
    grep -q 'Beneficiário' "$pasta/texto" || falhou "acentos: $arquivo"
    [ "$(pdfinfo "$pdf" | sed -n 's/^Pages: *//p')" = "$(grep -c 'Página [0-9]* de' "$pasta/texto")" ] || falhou "páginas: $arquivo"
done
for formulario in consulta spsadt outras_despesas resumo_internacao honorarios tratamento_odontologico; do
    "$conferix" imprimir --em-branco "$formulario" --saida "$pasta/vazio.pdf" 2>/dev/null
    qpdf --check "$pasta/vazio.pdf" >"$pasta/qpdf" 2>&1 || falhou "$formulario: $(cat "$pasta/qpdf")"
done
# A folder of temporary files that takes no more than that, or nothing, changes nothing of the PDF, which is larger.
vezes=()
for numero in {1..60}; do
    cp "$exemplos/internacao-3.02.00-valido.xml" "$pasta/$numero.xml"
    vezes+=("$pasta/$numero.xml")
done
"$conferix" imprimir "${vezes[@]}" --sem-aviso >"$pasta/todo.pdf" 2>/dev/null || falhou "imprimir 60 arquivos"
[ "$(stat -c %s "$pasta/todo.pdf")" -gt $((3 * 65536)) ] || falhou "o PDF cabe no limite: $(stat -c %s "$pasta/todo.pdf")"
for kib in 100 0; do
    (ulimit -f "$kib" && exec "$conferix" imprimir "${vezes[@]}" --sem-aviso 2>/dev/null) | cat >"$pasta/limite.pdf"
    cmp -s "$pasta/todo.pdf" "$pasta/limite.pdf" || falhou "com $kib KiB para arquivos temporários o PDF é outro"
done
# A clinic's own form, with a picture twice.
mkdir -p "$CONFERIX_DADOS/formularios"
imagem=$exemplos/../docs/imagens/janela.png
printf 'guia consulta\nleiaute 3.00.00- retrato\nlogotipo "%s"\nimagem "%s"\nlinha\n' "$imagem" "$imagem" \
    >"$CONFERIX_DADOS/formularios/consulta.txt"
"$conferix" imprimir "$exemplos/consulta-4.01.00-valido.xml" --saida "$pasta/logotipo.pdf" 2>/dev/null || falhou logotipo
qpdf --check "$pasta/logotipo.pdf" >"$pasta/qpdf" 2>&1 || falhou "logotipo: $(cat "$pasta/qpdf")"
exit $((falhas > 0))
