#!/usr/bin/env bash
# O que só o Windows tem: dispositivos, curingas, arquivos abertos por outros, nomes de outras formas. No Wine.
# Uso: tests/windows/arquivos.sh [conferix.exe]
set -euo pipefail
raiz=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
programa=$(realpath "${1:-$raiz/build/windows/bin/conferix.exe}")
area=$(mktemp -d)
trap 'rm -rf "$area"' EXIT
export CONFERIX_DADOS=$area/dados NO_COLOR=1 LC_ALL=pt_BR.UTF-8 # de onde o Wine toma a codificação dos nomes
cd "$area"
falhas=0

conferix() { "$raiz/scripts/windows/executar" "$programa" "$@"; }
espera() { # <status> <trecho da saída ou dos erros> <argumentos...>
    local status=0 saida
    saida=$(conferix "${@:3}" 2>&1) || status=$?
    if [ "$status" -ne "$1" ] || [[ $saida != *"$2"* ]]; then
        falhas=$((falhas + 1))
        printf 'FALHA: conferix %s\n  esperados: %s e "%s"\n  vieram: %s e "%s"\n' "${*:3}" "$1" "$2" "$status" "${saida:0:300}"
    fi
}

errado=$raiz/exemplos/consulta-4.01.00-com-erros.xml
valido=$raiz/exemplos/consulta-4.01.00-valido.xml
dispositivo='é o nome de um dispositivo do Windows'
for nome in NUL nul.xml CON 'aux .xml' COM1 com9.xml LPT1.xte '\\.\COM1' 'pasta\prn.xml'; do
    espera 3 "$dispositivo" validar "$nome"
done
espera 3 "$dispositivo" corrigir "$errado" --todas --saida nul.xml

mkdir pasta
cp "$valido" pasta/um.xml
cp "$valido" pasta/dois.XML
cp "$errado" 'pasta/tres.xml~'
espera 0 'dois.XML' validar 'pasta/*.xml'
espera 0 'pasta\um.xml' validar 'pasta\u?.xml'
espera 3 'o arquivo não existe' validar 'pasta/*.nada'
espera 3 'o arquivo não existe' validar '//localhost/ninguem/x.xml'
espera 0 'Arquivo válido' validar "Z:${area//\//\\}\\pasta\\um.xml"
espera 0 'Arquivo válido' validar "\\\\?\\Z:${area//\//\\}\\pasta\\um.xml"

# Um byte 0x1A no meio da entrada não a encerra, e linhas saem como entraram.
printf '%s\032' "$(cat "$valido")" >fim.xml
espera 1 'erro' validar fim.xml
espera 1 'erro' validar - <fim.xml
sed 's/$/\r/' "$errado" >linhas.xml
espera 1 '' corrigir linhas.xml --todas --saida corrigido.xml
[ "$(grep -c $'\r$' corrigido.xml)" -eq "$(grep -c '' corrigido.xml)" ] || { falhas=$((falhas + 1)); echo 'FALHA: os fins de linha mudaram'; }

cp "$errado" so_leitura.xml
chmod a-w so_leitura.xml
espera 3 'acesso negado' corrigir so_leitura.xml --todas --no-lugar
cmp -s "$errado" so_leitura.xml || { falhas=$((falhas + 1)); echo 'FALHA: o arquivo protegido mudou'; }

if compgen -G '**/.conferix-*' >/dev/null || compgen -G '.conferix-*' >/dev/null; then
    falhas=$((falhas + 1))
    echo 'FALHA: restou um arquivo temporário'
fi
echo "$falhas falhas."
[ "$falhas" -eq 0 ]
