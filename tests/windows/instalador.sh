#!/usr/bin/env bash
# O instalador no Wine, em um Windows novo: instalar sem perguntas, usar de outra pasta, atualizar, recusar a atualização com o
# programa em execução, instalar em outra pasta e desinstalar; o que abre arquivos .xte e .xml. Os arquivos instalados são os do ZIP.
# Com a janela, também atualizar com perguntas enquanto ela está aberta; as telas ficam em uma pasta, se for dada.
# Uso: tests/windows/instalador.sh [pasta com conferix-setup.exe e o ZIP] [pasta das telas]
set -euo pipefail
raiz=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
source "$raiz/tests/windows/tela.sh"
pacotes=$(realpath "${1:-$raiz/build/windows/pacotes}")
telas=${2:+$(realpath "$2")}
area=$(mktemp -d)
export WINEPREFIX=$area/wine WINEDLLOVERRIDES='mscoree,mshtml=' NO_COLOR=1 LC_ALL=pt_BR.UTF-8
servidor=$(command -v wineserver || echo /usr/lib/wine/wineserver)
trap '"$servidor" -k || true; kill "${processos[@]}" 2>/dev/null || true; rm -rf "$area"' EXIT
falhas=0
cd "$area"

executar() { "$raiz/scripts/windows/executar" "$@"; }
confere() { # <o que se espera> <comando...>
    if ! "${@:2}"; then
        falhas=$((falhas + 1))
        echo "FALHA: $1"
    fi
}
recusa() { ! "$@"; }
instala() { executar "$pacotes/conferix-setup.exe" /S "$@" </dev/null >/dev/null 2>&1; }
iguais() { # <pasta instalada>: o que o ZIP tem
    diff -r -x LEIAME.txt -x desinstalar.exe "$area/zip/conferix" "$1"
}
# Desinstalar termina em um processo à parte.
desinstala() { executar "$1/desinstalar.exe" /S </dev/null >/dev/null 2>&1 && "$servidor" -w; }
chave='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Conferix'
registrado() { executar reg query "$chave" /v "$1" 2>/dev/null | grep -qF "$2"; }

mkdir zip "pasta de trabalho"
(cd zip && unzip -q "$pacotes"/conferix-*-windows.zip)
confere 'o instalador termina bem' instala
pasta=$(echo "$WINEPREFIX"/drive_c/users/*/AppData/Local/Programs/Conferix)
programa=$pasta/bin/conferix.exe
confere 'instala o que o ZIP tem' iguais "$pasta"
confere 'diz ao Windows a versão' registrado DisplayVersion "$(basename "$pacotes"/conferix-*-windows.zip | cut -d- -f2)"
confere 'há um atalho do comando' test -n "$(find "$WINEPREFIX/drive_c/users" -name 'Conferix (linha de comando).lnk')"
# Sem a janela (janela-windows --so-comando) não há o que associar.
classes='HKCU\Software\Classes'
abre() { executar reg query "$classes\\$1" "${@:2}" >/dev/null 2>&1; }
if [ -e "$pasta/bin/conferix-desktop.exe" ]; then
    confere 'há um atalho da janela' test -n "$(find "$WINEPREFIX/drive_c/users" -name 'Conferix.lnk')"
    confere 'os .xte são da janela' grep -qF Conferix.TISS <(executar reg query "$classes\.xte" /ve 2>/dev/null)
    confere 'com um comando' grep -qF 'bin\conferix-desktop.exe" "%1"' \
        <(executar reg query "$classes\Conferix.TISS\shell\open\command" /ve 2>/dev/null)
    confere 'ela é um dos que abrem .xml' abre '.xml\OpenWithProgids' /v Conferix.TISS
    confere 'e não o padrão' recusa grep -qF Conferix <(executar reg query "$classes\.xml" /ve 2>/dev/null)
fi

cp "$raiz/exemplos/consulta-4.01.00-com-erros.xml" 'pasta de trabalho/guia ção.xml'
valida() { (cd 'pasta de trabalho' && executar "$1" validar 'guia ção.xml' 2>&1); }
status=0
valida "$programa" >instalado.txt || status=$?
valida "$area/zip/conferix/bin/conferix.exe" >do_zip.txt || true
confere 'o programa instalado valida de outra pasta' test "$status" -eq 1
confere 'e acha os erros' grep -q 'Arquivo inválido: 6 erros' instalado.txt
confere 'o do ZIP diz o mesmo' cmp instalado.txt do_zip.txt
dados=$(dirname "$(dirname "$(dirname "$(dirname "$pasta")")")")/Roaming/Brenvo/Conferix
mkdir -p "$dados"
echo 'do usuário' >"$dados/nota.txt"

# Em execução: espera a entrada, que não vem.
mkfifo cano
executar "$programa" validar - <cano >/dev/null 2>&1 &
exec 3>cano
sleep 3
confere 'recusa a atualização com o programa em execução' recusa instala
confere 'e deixa tudo como está' iguais "$pasta"
exec 3>&-
wait
echo velho >"$pasta/share/versao-anterior.txt"
confere 'atualiza' instala
confere 'e tira o que a versão nova não tem' iguais "$pasta"

# Com a janela aberta: sem perguntas, recusa; com perguntas, espera que ela seja encerrada, e no fim abre a nova.
if [ ! -e "$pasta/bin/conferix-desktop.exe" ] || programas=$(falta Xvfb openbox xdotool import); then
    echo "Não experimentado: atualizar com a janela aberta (falta ${programas:-a janela})."
else
    "$servidor" -w # o que ainda não tem tela
    tela_virtual
    executar "$pasta/bin/conferix-desktop.exe" >/dev/null 2>&1 &
    janela=$!
    confere 'a janela instalada abre' aparece '^Conferix$'
    confere 'recusa a atualização com a janela aberta' recusa instala
    executar "$pacotes/conferix-setup.exe" >/dev/null 2>&1 &
    instalador=$!
    confere 'o instalador pergunta' aparece '^Instalação do Conferix'
    tecla Return # o que instalar
    tecla Return # em que pasta
    confere 'pede que o programa seja encerrado' aparece '^Instalação do Conferix$'
    tela instalador-em-execucao
    confere 'e deixa tudo como está' iguais "$pasta"
    xdotool search --onlyvisible --name '^Conferix$' windowactivate --sync
    tecla ctrl+q
    confere 'a janela termina' some $janela
    xdotool search --onlyvisible --name '^Instalação do Conferix$' windowactivate --sync
    tecla Return # repetir
    confere 'instala o que o ZIP tem' em_breve iguais "$pasta"
    tela instalador-fim
    tecla Return # concluir
    confere 'o instalador termina' some $instalador
    confere 'e abre a janela' aparece '^Conferix$'
    tecla ctrl+q
    "$servidor" -w
fi

# Em outra pasta, que já tem arquivos de outros: o programa fica em uma só dele.
mkdir -p "$WINEPREFIX/drive_c/Programas"
echo alheio >"$WINEPREFIX/drive_c/Programas/alheio.txt"
confere 'desinstala' desinstala "$pasta"
confere 'e não deixa o programa' recusa test -e "$pasta/bin"
confere 'nem o que disse ao Windows' recusa registrado DisplayName Conferix
for tipo in Conferix.TISS .xte Applications\\conferix-desktop.exe; do confere "nem $tipo" recusa abre "$tipo"; done
confere 'nem a escolha para .xml' recusa abre '.xml\OpenWithProgids' /v Conferix.TISS
confere 'nem atalhos' test -z "$(find "$WINEPREFIX/drive_c/users" -name 'Conferix*.lnk')"
confere 'instala em outra pasta' instala '/D=C:\Programas'
outra="$WINEPREFIX/drive_c/Programas/Conferix"
confere 'em uma pasta do programa' iguais "$outra"
# O Wine não tem o PowerShell, que muda o PATH; no lugar dele, um programa que só diz que o mudou.
echo 'int main(void) { return 0; }' >powershell.c
x86_64-w64-mingw32-gcc-posix powershell.c -o "$WINEPREFIX/drive_c/windows/powershell.exe"
confere 'sem o comando no PATH' recusa registrado CaminhoMudado 0x1
executar reg add "$chave" /v CaminhoMudado /t REG_DWORD /d 1 /f >/dev/null 2>&1
confere 'instala em mais uma' instala '/D=C:\Clínica\Faturação'
confere 'sem deixar o programa na outra' recusa test -e "$outra"
confere 'com o comando ainda no PATH' registrado CaminhoMudado 0x1
outra="$WINEPREFIX/drive_c/Clínica/Faturação/Conferix"
confere 'desinstala de lá' desinstala "$outra"
confere 'e não deixa o programa lá' recusa test -e "$outra"
confere 'os arquivos dos outros ficam' test -e "$WINEPREFIX/drive_c/Programas/alheio.txt"
confere 'os dados do usuário ficam' test -e "$dados/nota.txt"
echo "$falhas falhas."
[ "$falhas" -eq 0 ]
