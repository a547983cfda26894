#!/usr/bin/env bash
# A janela no Wine, em uma tela virtual, com teclas: abrir pela linha de comando e pelo menu, validar, corrigir tudo, gravar, sair. O
# que ela grava tem de ser o que o comando grava. As telas ficam em uma pasta, se for dada, para que se olhe para elas.
# Uso: tests/windows/janela.sh [conferix-desktop.exe] [conferix do Linux] [pasta das telas]
set -euo pipefail
raiz=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
source "$raiz/tests/windows/tela.sh"
if programa=$(falta Xvfb openbox xdotool import sqlite3); then
    echo "Não executado: falta $programa (pacotes xvfb, openbox, xdotool, imagemagick e sqlite3)."
    exit 77
fi
janela=$(realpath "${1:-$raiz/build/windows/bin/conferix-desktop.exe}")
comando=$(realpath "${2:-$raiz/build/release/bin/conferix}")
telas=${3:+$(realpath "$3")}
area=$(mktemp -d)
export WINEPREFIX=$area/wine WINEDLLOVERRIDES='mscoree,mshtml=' LC_ALL=pt_BR.UTF-8 TZ=America/Sao_Paulo
export CONFERIX_DADOS=$area/dados
servidor=$(command -v wineserver || echo /usr/lib/wine/wineserver)
trap '"$servidor" -k || true; kill "${processos[@]}" 2>/dev/null || true; wait; rm -rf "$area"' EXIT
falhas=0
confere() { # <o que se espera> <comando...>
    if ! "${@:2}"; then
        falhas=$((falhas + 1))
        echo "FALHA: $1"
        tela "falha-$falhas"
    fi
}
# Uma cópia, porque o programa tem a base aberta.
validacoes() { (cd "$area" && cp dados/conferix.db* . && sqlite3 conferix.db 'SELECT VALIDO, ERROS FROM TB_VALIDACAO ORDER BY ID'); }

tela_virtual
mkdir -p "$area/guias ção" "$area/dados"
exemplo=$raiz/exemplos/spsadt-3.05.00-valores-errados.xml
cp "$exemplo" "$area/guias ção/lote número 1.xml"
cp "$raiz/exemplos/consulta-4.01.00-com-erros.xml" "$area/outro.xml"
CONFERIX_DADOS=$area/comando "$comando" corrigir "$exemplo" --todas --saida "$area/esperado.xml" >/dev/null 2>&1

"$raiz/scripts/windows/executar" wineboot -i >/dev/null 2>&1
cd "$area/guias ção"
"$raiz/scripts/windows/executar" "$janela" 'lote número 1.xml' >"$area/saida" 2>&1 &
programa=$!
confere 'abre o arquivo da linha de comando e acha os erros' aparece '^lote número 1.xml .Inválido. - Conferix$'
tela 1-aberta
confere 'anota a validação' grep -qx '0|[1-9][0-9]*' <(validacoes)
tecla ctrl+shift+c
confere 'mostra as correções' aparece '^Corrigir tudo$'
tela 2-correcoes
tecla Return
confere 'corrige e valida' aparece '^lote número 1.xml. .Modificado, Válido. - Conferix$'
confere 'sem gravar antes da hora' cmp -s "$exemplo" 'lote número 1.xml'
tecla ctrl+s
confere 'grava' aparece '^lote número 1.xml .Válido. - Conferix$'
tela 3-gravada
confere 'o que o comando grava' cmp "$area/esperado.xml" 'lote número 1.xml'
confere 'sem deixar outros arquivos' test "$(ls | wc -l)" -eq 1
tecla ctrl+o
confere 'pergunta o que abrir' aparece '^Abrir'
tela 4-abrir
xdotool type "Z:${area//\//\\}\\outro.xml"
tecla Return
confere 'abre pelo menu' aparece '^outro.xml .Inválido. - Conferix$'
# O Wine não devolve o teclado sempre que um diálogo do sistema se fecha.
xdotool search --onlyvisible --name '^outro.xml' windowactivate --sync
tecla F5
confere 'valida de novo' aparece '^outro.xml .Inválido. - Conferix$'
tela 5-outro
tecla ctrl+q
confere 'termina' some $programa
wait $programa || confere 'termina bem' false
confere 'sem nada a dizer' cmp /dev/null "$area/saida"
cat "$area/saida"
confere 'as validações ficam anotadas' test "$(validacoes | wc -l)" -ge 3
echo "$falhas falhas."
[ "$falhas" -eq 0 ]
