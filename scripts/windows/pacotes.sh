# Lido por janela-windows: reúne o programa em build/windows/pacotes/conferix, e faz dele o ZIP e o instalador.

# O que qualquer Windows 10 traz.
dlls_do_sistema='advapi32|authz|bcrypt|comctl32|comdlg32|crypt32|d2d1|d3d11|d3d9|dwmapi|dwrite|dxgi|gdi32|imm32|kernel32|mpr'
dlls_do_sistema+='|mswsock|msvcrt|netapi32|normaliz|ntdll|ole32|oleaut32|rpcrt4|secur32|setupapi|shcore|shell32|shlwapi|user32'
dlls_do_sistema+='|userenv|uxtheme|version|winhttp|winmm|ws2_32|wtsapi32'

reunir() {
    local pasta=$raiz/build/windows/pacotes
    rm -rf "$pasta"
    mkdir -p "$pasta"
    cd "$pasta"
    local pacote binarios=(gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev libz-mingw-w64-dev "${cabecalhos[@]#*:}")
    local prefixos=("$prefixo") como
    cmake --install "$raiz/build/windows" --component comando --prefix "$pasta/conferix" >/dev/null
    como='em um Prompt de Comando aberto nela, escreva'
    if [ "$janela" = ON ]; then
        cmake --install "$raiz/build/windows" --component janela --prefix "$pasta/conferix" >/dev/null
        binarios+=(qt6-translations-l10n libqscintilla2-qt6-l10n)
        prefixos+=("$prefixo_qt")
        como='dois cliques em bin\conferix-desktop.exe abrem a janela. Ou, em um
Prompt de Comando aberto nela, escreva'
    fi
    $alvo-strip -p conferix/bin/*.exe # -p: sem a hora de agora no programa
    cp "$raiz/LICENSE" conferix/LICENSE.txt
    mkdir conferix/licencas
    cp "${prefixos[@]/%//licencas/.}" conferix/licencas/ -r
    for pacote in "${binarios[@]}"; do cp -L "/usr/share/doc/$pacote/copyright" "conferix/licencas/$pacote.txt"; done
    # As licenças a que estes textos remetem, que um Debian tem em uma pasta.
    for pacote in $(grep -oh '/usr/share/common-licenses/[[:alnum:].-]*[[:alnum:]]' conferix/licencas/*.txt | sort -u); do
        [ ! -e "$pacote" ] || cp -L "$pacote" "conferix/licencas/texto-$(basename "$pacote").txt"
    done
    { echo 'Este programa contém as bibliotecas abaixo (NOME_VERSÃO), com as licenças desta pasta; as que elas citam como'
        echo '/usr/share/common-licenses/X são os arquivos texto-X.txt. Os fontes de cada uma, na versão usada, são os'
        echo 'pacotes-fonte do Debian 12 de mesmo nome (em um Debian: apt-get source NOME=VERSÃO); os do Conferix acompanham'
        echo 'o endereço de onde este arquivo veio, com os scripts que o compilam.'
        echo
        { cat "${prefixos[@]/%//versoes.txt}"
            dpkg-query -W -f='${source:Package}_${source:Version}\n' "${binarios[@]}"; } | sort -u; } >conferix/licencas/BIBLIOTECAS.txt
    cat >conferix/LEIAME.txt <<FIM
Conferix $versao para Windows 10 e 11 (64 bits): confere e corrige arquivos XML do padrão TISS.

Não é preciso instalar: deixe esta pasta onde quiser; $como

    bin\conferix ajuda
    bin\conferix validar exemplos\consulta-4.01.00-com-erros.xml

O que o programa grava para si (configuração, terminologia importada) fica em %APPDATA%\Brenvo\Conferix, ou na pasta que a
variável de ambiente CONFERIX_DADOS nomear. Para remover o programa, apague esta pasta.

O Conferix é livre, sob a licença de LICENSE.txt; as das bibliotecas que ele contém estão em licencas.
FIM
    mkdir conferix/exemplos
    cp "$raiz"/exemplos/*.xml conferix/exemplos/
    sed -i 's/$/\r/' conferix/*.txt conferix/licencas/*.txt
    find conferix -exec touch -d "@$SOURCE_DATE_EPOCH" {} +
}

conferir_dlls() { # <programas...>
    local programa dll
    for programa in "$@"; do
        for dll in $($alvo-objdump -p "$programa" | sed -n 's/.*DLL Name: //p' | tr '[:upper:]' '[:lower:]'); do
            [[ $dll =~ ^($dlls_do_sistema)\.dll$|^api-ms-win-|^winspool\.drv$ ]] ||
                erro "$programa precisa de $dll, que o Windows não traz."
        done
    done
}

fazer_zip() {
    find conferix | LC_ALL=C sort | TZ=UTC zip -q -X -9 "conferix-$versao-windows.zip" -@
}

fazer_instalador() {
    local opcoes=()
    [ "$janela" = OFF ] || opcoes=(-DJANELA)
    # O makensis só lê BMP.
    rsvg-convert --page-width 164 --page-height 314 -w 100 -h 100 --left 32 --top 48 -b '#dce7f0' \
        "$raiz/resources/desktop/conferix.svg" |
        /usr/bin/python3 -c 'import sys; from PIL import Image; Image.open(sys.stdin.buffer).convert("RGB").save(sys.argv[1])' \
            ../instalador.bmp
    makensis -V2 -NOCD -INPUTCHARSET UTF8 "${opcoes[@]}" -DVERSAO="$versao" -DPASTA="$PWD/conferix" \
        -DICONE="$raiz/build/windows/windows/conferix.ico" -DIMAGEM="$raiz/build/windows/instalador.bmp" -DSAIDA="$PWD/conferix-setup.exe" \
        "$raiz/scripts/windows/instalador.nsi" >../instalador.log || { tail -n 20 ../instalador.log >&2; erro 'o makensis falhou.'; }
}
