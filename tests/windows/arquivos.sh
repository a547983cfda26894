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
export WINEPREFIX=${WINEPREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/conferix/wine}
falhas=0

conferix() { "$raiz/scripts/windows/executar" "$programa" "$@"; }
falha() {
    falhas=$((falhas + 1))
    echo "FALHA: $1"
}
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
espera 0 'pasta\um.xml' validar 'pasta\'
espera 0 'um.xml' validar pasta/
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
[ "$(grep -c $'\r$' corrigido.xml)" -eq "$(grep -c '' corrigido.xml)" ] || falha 'os fins de linha mudaram'

# --no-lugar em cada forma de um caminho. O Wine acha as pastas da rede em dosdevices/unc.
espera 1 '' corrigir "$errado" --todas --saida esperado.xml
rede=$WINEPREFIX/dosdevices/unc/conferix-prova
mkdir -p "$rede"
ln -sfn "$area" "$rede/pasta"
trap 'rm -rf "$area" "$rede"' EXIT
longa=$(printf 'p%.0s' {1..120})
mkdir -p "pasta com ção/$longa/$longa"
windows=Z:${area//\//\\}
for pasta in '' './' '.\' 'pasta\' 'pasta/../' 'pasta com ção\' "pasta com ção/$longa/$longa/" "$windows\\" "z:$area/" \
    "\\\\?\\$windows\\" "\\\\?\\$windows\\pasta com ção\\$longa\\$longa\\" '\\conferix-prova\pasta\' \
    '//conferix-prova/pasta/pasta com ção/' '\\?\UNC\conferix-prova\pasta\'; do
    # Onde o Linux acha o mesmo arquivo.
    onde=${pasta//\\//}
    onde=${onde#//\?/}
    onde=${onde#[Zz]:}
    onde=${onde#UNC/}
    onde=$(sed -E "s|^/*conferix-prova/pasta/|$area/|" <<<"$onde")
    cp "$errado" "${onde}ação de março.xml"
    espera 1 '' corrigir "${pasta}ação de março.xml" --todas --no-lugar
    cmp -s esperado.xml "${onde}ação de março.xml" || falha "não foi corrigido no lugar: ${pasta}ação de março.xml"
done

# Os dados do usuário em uma pasta da rede.
(
    export CONFERIX_DADOS='\\conferix-prova\pasta\dados da rede'
    espera 0 'Arquivo válido' validar pasta/um.xml
    espera 0 'dados da rede' esquemas listar
    espera 0 'Configuração criada' regras --padrao --config '\\conferix-prova\pasta\config da rede\config.json'
    espera 0 'Base de terminologia' terminologia importar "$raiz/exemplos/terminologia"
    exit "$falhas"
) || falhas=$?
[ -e 'dados da rede/tuss.db' ] || falha 'a terminologia não foi importada para a pasta da rede'

cp "$errado" so_leitura.xml
chmod a-w so_leitura.xml
espera 3 'acesso negado' corrigir so_leitura.xml --todas --no-lugar
cmp -s "$errado" so_leitura.xml || falha 'o arquivo protegido mudou'

# Aberto em outro programa, que não o compartilha (0), só para ler (1) ou para ler e gravar (3), como faz quem lê uma base do SQLite.
cat >segura.c <<'FIM'
#include <stdlib.h>
#include <windows.h>
int main(int n, char **a) {
    if (CreateFileA(a[1], GENERIC_READ, atoi(a[2]), 0, OPEN_EXISTING, 0, 0) == INVALID_HANDLE_VALUE) return n;
    CloseHandle(CreateFileA("seguro", GENERIC_WRITE, 0, 0, CREATE_ALWAYS, 0, 0));
    Sleep(atoi(a[3]) * 1000);
    return 0;
}
FIM
x86_64-w64-mingw32-gcc-posix segura.c -o segura.exe
segura() { # <arquivo> <o que compartilha> <segundos>
    rm -f seguro
    "$raiz/scripts/windows/executar" segura.exe "$@" &
    outro=$!
    while [ ! -e seguro ] && kill -0 "$outro"; do sleep 0.1; done
}
aberto='está aberto em outro programa'
for como in 0 1; do
    cp "$errado" aberto.xml
    segura aberto.xml $como 60
    if [ $como = 0 ]; then espera 3 "$aberto" validar aberto.xml; else espera 1 'erro' validar aberto.xml; fi
    espera 3 "$aberto" corrigir aberto.xml --todas --no-lugar
    espera 3 "$aberto" corrigir "$errado" --todas --saida aberto.xml
    kill -KILL "$outro"
    wait "$outro" 2>/dev/null || true
    cmp -s "$errado" aberto.xml || falha 'o arquivo aberto em outro programa mudou'
done

# Importar de novo substitui a base, também ao lado de um serviço que a consultou; nada fica ao lado dela.
importar() { espera 0 'Base de terminologia' terminologia importar "$raiz/exemplos/terminologia"; }
importar
importar
"$raiz/scripts/windows/executar" "$programa" servir --porta 0 >servico.log 2>&1 &
outro=$!
until grep -q 'atende em' servico.log || ! kill -0 "$outro"; do sleep 0.1; done
exec 3<>"/dev/tcp/127.0.0.1/$(sed -n 's/.*http:..127.0.0.1:\([0-9]*\).*/\1/p' servico.log)"
printf 'POST /validar HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Length: %s\r\n\r\n' "$(stat -c %s "$valido")" >&3
cat "$valido" >&3
grep -q '"xmlValido": true' <&3 || falha 'o serviço não validou'
exec 3>&-
importar
kill -KILL "$outro"
wait "$outro" 2>/dev/null || true
# Espera quem lê a base por alguns segundos, e não para sempre.
segura dados/tuss.db 3 3
importar
segura dados/tuss.db 3 60
espera 3 "$aberto" terminologia importar "$raiz/exemplos/terminologia"
kill -KILL "$outro"
wait "$outro" 2>/dev/null || true
[ "$(ls dados/tuss.db*)" = dados/tuss.db ] || falha "ao lado da base: $(ls dados/tuss.db*)"

# Uma pasta em que nada pode ser gravado: montada sobre si mesma, só de leitura, onde o sistema o permite. Quem abre os
# arquivos no Wine é o wineserver, que por isso tem de começar dentro da montagem.
mkdir fechada
cp "$errado" fechada/x.xml
if unshare --mount true 2>/dev/null; then
    servidor=$(command -v wineserver || echo /usr/lib/wine/wineserver)
    "$servidor" -w
    conferix() {
        unshare --mount sh -c 'mount --bind fechada fechada && mount -o remount,bind,ro fechada && exec "$@"' - \
            "$raiz/scripts/windows/executar" "$programa" "$@"
    }
    espera 3 'x.xml' corrigir fechada/x.xml --todas --no-lugar
    espera 3 'nova.xml' corrigir "$errado" --todas --saida fechada/nova.xml
    "$servidor" -w
    [ "$(ls -A fechada)" = x.xml ] || falha "restou na pasta fechada: $(ls -A fechada)"
    cmp -s "$errado" fechada/x.xml || falha 'o arquivo na pasta fechada mudou'
else
    echo 'Não experimentado: uma pasta só de leitura (este sistema não deixa montar uma).'
fi

restos=$(find . -name '.conferix-*')
[ -z "$restos" ] || falha "restou um arquivo temporário: $restos"
echo "$falhas falhas."
[ "$falhas" -eq 0 ]
