#!/usr/bin/env bash
# Mata a janela enquanto ela salva um arquivo, muitas vezes: o arquivo tem de ficar inteiro, com o conteúdo antigo ou com o
# novo. Como interromper_gravacao.sh, executa-se à mão; precisa de xvfb e xdotool, e leva alguns minutos.
# Uso: interromper_janela.sh [programa] [mortes]
set -euo pipefail
raiz=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
programa=$(realpath "${1:-$raiz/build/release/bin/conferix-desktop}")
mortes=${2:-20}
pasta=$(mktemp -d)
tela= processo=
trap 'kill -KILL $processo $tela 2>/dev/null || true; rm -rf "$pasta"' EXIT
export CONFERIX_DADOS=$pasta/dados LANG=C.UTF-8
mkdir "$pasta/area"
cd "$pasta/area"

temporarios() { compgen -G '.conferix-*.tmp' || true; }
falha() {
    echo "interromper_janela: $1" >&2
    exit 1
}

Xvfb -displayfd 9 -screen 0 1280x800x24 -nolisten tcp 9>../tela 2>/dev/null &
tela=$!
until [ -s ../tela ]; do sleep 0.1; done
export DISPLAY=:$(cat ../tela)

# Um lote grande, para que a gravação dure.
awk '/<ans:guiaConsulta>/ { dentro = 1 }
     dentro { guia = guia $0 "\n" }
     !dentro { print }
     /<\/ans:guiaConsulta>/ { if (dentro) for (i = 0; i < 4000; ++i) printf "%s", guia; dentro = 0; guia = "" }' \
    "$raiz/exemplos/consulta-4.01.00-valido.xml" >../antigo.xml
{
    printf ' '
    cat ../antigo.xml
} >../novo.xml

# Espera até que o título da janela tenha um texto; prefixo e sufixo à vontade.
janela=
esperar_titulo() {
    local vezes
    for ((vezes = 0; vezes < 600; ++vezes)); do
        janela=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -n 1 || true)
        [ -z "$janela" ] || return 0
        kill -0 "$processo" 2>/dev/null || falha 'a janela acabou antes da hora'
        sleep 0.1
    done
    falha "a janela não mostrou: $1"
}

dentro=0 novos=0 tentativas=0
while [ "$dentro" -lt "$mortes" ]; do
    tentativas=$((tentativas + 1))
    [ "$tentativas" -le $((mortes * 5)) ] || falha "só $dentro mortes durante a gravação em $((tentativas - 1)) tentativas"
    cp ../antigo.xml lote.xml
    "$programa" "$PWD/lote.xml" >/dev/null 2>&1 &
    processo=$!
    esperar_titulo '^lote.xml \((Inv|V)álido\)'
    # Sem gerenciador de janelas, o teclado só chega a quem o tem: um clique no texto, e um pouco de paciência.
    for ((vezes = 0; vezes < 20; ++vezes)); do
        xdotool windowfocus "$janela" mousemove --window "$janela" 400 250 click 1 key ctrl+Home key space
        sleep 0.5
        ! xdotool search --onlyvisible --name '^lote.xml\*' >/dev/null 2>&1 || break
    done
    esperar_titulo '^lote.xml\*'
    xdotool key ctrl+s
    # O arquivo temporário mostra que a gravação começou; depois dele, um instante qualquer.
    while kill -0 "$processo" 2>/dev/null && [ -z "$(temporarios)" ] && cmp -s lote.xml ../antigo.xml; do :; done
    sleep "0.0$(printf '%02d' $((RANDOM % 40)))"
    kill -KILL "$processo" 2>/dev/null || true
    wait "$processo" 2>/dev/null || true
    # Só conta a morte que deixou a gravação pela metade.
    [ -z "$(temporarios)" ] || dentro=$((dentro + 1))
    if cmp -s lote.xml ../novo.xml; then
        novos=$((novos + 1))
    else
        cmp -s lote.xml ../antigo.xml || falha "o arquivo ficou pela metade na tentativa $tentativas"
    fi
    rm -f .conferix-*.tmp
done
echo "$dentro mortes durante a gravação em $tentativas tentativas; $novos vezes o conteúdo novo já estava no lugar; \
nenhum arquivo pela metade."
