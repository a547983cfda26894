#!/usr/bin/env bash
# Mata o programa enquanto ele grava um arquivo no lugar, muitas vezes: o arquivo tem de ficar inteiro, com o conteúdo
# antigo ou com o novo, e a gravação seguinte não pode deixar arquivos temporários. Executa-se à mão; leva alguns minutos.
# Uso: interromper_gravacao.sh [programa] [mortes]; um programa para Windows (.exe) é executado no Wine
set -euo pipefail
raiz=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
programa=("$(realpath "${1:-$raiz/build/release/bin/conferix}")")
[[ ${programa[0]} != *.exe ]] || programa=("$raiz/scripts/windows/executar" "${programa[@]}")
mortes=${2:-300}
pasta=$(mktemp -d)
trap 'rm -rf "$pasta"' EXIT
export CONFERIX_DADOS=$pasta/dados
mkdir "$pasta/area"
cd "$pasta/area"

temporarios() { compgen -G '.conferix-*.tmp' || true; }
falha() {
    echo "interromper_gravacao: $1" >&2
    exit 1
}

# Um lote com o hash errado, grande para que a gravação dure.
awk '/<ans:guiaConsulta>/ { dentro = 1 }
     dentro { guia = guia $0 "\n" }
     !dentro { print }
     /<\/ans:guiaConsulta>/ { if (dentro) for (i = 0; i < 4000; ++i) printf "%s", guia; dentro = 0; guia = "" }' \
    "$raiz/exemplos/consulta-4.01.00-valido.xml" >../antigo.xml
gravar() { "${programa[@]}" corrigir lote.xml --todas --no-lugar >/dev/null 2>&1; }
cp ../antigo.xml lote.xml
gravar || true # o que a correção de tudo não sabe corrigir continua errado
cp lote.xml ../novo.xml
! cmp -s ../antigo.xml ../novo.xml || falha 'a correção não mudou o arquivo'

dentro=0 novos=0 tentativas=0
while [ "$dentro" -lt "$mortes" ]; do
    tentativas=$((tentativas + 1))
    [ "$tentativas" -le $((mortes * 20)) ] || falha "só $dentro mortes durante a gravação em $((tentativas - 1)) tentativas"
    cp ../antigo.xml lote.xml
    "${programa[@]}" corrigir lote.xml --todas --no-lugar >/dev/null 2>&1 &
    processo=$!
    # O arquivo temporário mostra que a gravação começou; depois dele, um instante qualquer.
    while kill -0 "$processo" 2>/dev/null && [ -z "$(temporarios)" ]; do :; done
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
    cp ../antigo.xml lote.xml
    gravar || true
    cmp -s lote.xml ../novo.xml || falha "a gravação seguinte à tentativa $tentativas não gravou o que devia"
    [ -z "$(temporarios)" ] || falha "arquivo temporário depois da gravação seguinte: $(temporarios)"
    [ "$(ls -A)" = lote.xml ] || falha "restou na pasta: $(ls -A)"
done
echo "$dentro mortes durante a gravação em $tentativas tentativas; $novos vezes o conteúdo novo já estava no lugar; \
nenhum arquivo pela metade, nenhum temporário depois da gravação seguinte."
