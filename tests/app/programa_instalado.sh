#!/usr/bin/env bash
# Installs what was built into a new folder and runs it from another one, without a data folder that could be written,
# as a user who owns nothing of it. Ends with 77 (skipped) where there is no such user to be had.
# Usage: programa_instalado.sh CMAKE BUILD-FOLDER EXAMPLES
set -euo pipefail
cmake=$1 build=$2 examples=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$cmake" --install "$build" --prefix "$folder/instalado" >/dev/null
mkdir "$folder/casa" "$folder/trabalho"
cp "$examples/consulta-4.01.00-valido.xml" "$examples/consulta-4.01.00-com-erros.xml" "$folder/trabalho"
chmod -R a+rX,go-w "$folder"
chmod a-w "$folder/casa" "$folder/trabalho"

as=()
if [ "$(id -u)" -eq 0 ]; then
    as=(setpriv --reuid=65534 --regid=65534 --clear-groups)
fi

# run STATUS TEXT WORDS...: the status and a part of what is told.
run() {
    local expected=$1 text=$2 status=0 told
    shift 2
    told=$(cd "$folder/trabalho" && env -i HOME="$folder/casa" PATH=/usr/bin:/bin \
        ${as[@]+"${as[@]}"} "$folder/instalado/bin/conferix" "$@" 2>&1) || status=$?
    if [ "$status" -ne "$expected" ] || [[ "$told" != *"$text"* ]]; then
        printf 'conferix %s: status %s, expected %s and "%s"\n%s\n' "$*" "$status" "$expected" "$text" "$told"
        exit 1
    fi
}

run 0 'Arquivo válido!' validar consulta-4.01.00-valido.xml
run 1 'Arquivo inválido: 6 erros' validar consulta-4.01.00-com-erros.xml
run 0 'conferix ' --versao
run 0 'Códigos dos municípios                                   11' terminologia estado
run 0 '4.01.00  tissV4_01_00.xsd                       embutido' esquemas listar
run 3 'acesso negado' corrigir consulta-4.01.00-com-erros.xml --todas --no-lugar
if [ -n "$(ls -A "$folder/casa")" ]; then
    echo 'a check left something in the home folder'
    exit 1
fi
if [ ${#as[@]} -eq 0 ]; then
    echo 'all is well for the user who built; another user takes an administrator'
    exit 77
fi
