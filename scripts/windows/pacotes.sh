# Lido por janela-windows: reúne o programa em build/windows/pacotes/conferix, e faz dele o ZIP e o instalador.

# O que qualquer Windows 10 traz.
dlls_do_sistema='advapi32|bcrypt|crypt32|kernel32|mswsock|msvcrt|normaliz|ntdll|ole32|secur32|shell32|shlwapi|user32|winhttp|ws2_32'

reunir() {
    local pasta=$raiz/build/windows/pacotes
    rm -rf "$pasta"
    mkdir -p "$pasta"
    cd "$pasta"
    cmake --install "$raiz/build/windows" --component comando --strip --prefix "$pasta/conferix" >/dev/null
    cp "$raiz/LICENSE" conferix/LICENSE.txt
    mkdir conferix/licencas
    cp "$prefixo"/licencas/*.txt conferix/licencas/
    { echo 'Este programa contém as bibliotecas abaixo, com as licenças desta pasta. Os fontes de cada uma, na versão'
        echo 'usada, são os pacotes-fonte do Debian 12 de mesmo nome (em um Debian: apt-get source NOME=VERSÃO); os do'
        echo 'Conferix acompanham o endereço de onde este arquivo veio, com os scripts que o compilam.'
        echo
        cat "$prefixo/versoes.txt"; } >conferix/licencas/LEIAME.txt
    mkdir conferix/exemplos
    cp "$raiz"/exemplos/*.xml conferix/exemplos/
    sed -i 's/$/\r/' conferix/LICENSE.txt conferix/licencas/*.txt
    # Duas execuções fazem os mesmos arquivos, com a data do último commit.
    data=$(git -C "$raiz" log -1 --format=%ct)
    find conferix -exec touch -d "@$data" {} +
}

conferir_dlls() { # <programa>
    local dll
    for dll in $($alvo-objdump -p "$1" | sed -n 's/.*DLL Name: //p' | tr '[:upper:]' '[:lower:]'); do
        [[ $dll =~ ^($dlls_do_sistema)\.dll$|^api-ms-win- ]] || erro "$1 precisa de $dll, que o Windows não traz."
    done
}

fazer_zip() {
    find conferix | LC_ALL=C sort | TZ=UTC zip -q -X -9 "conferix-$versao-windows.zip" -@
}

fazer_instalador() {
    SOURCE_DATE_EPOCH=$data makensis -V2 -NOCD -INPUTCHARSET UTF8 -DVERSAO="$versao" -DPASTA="$PWD/conferix" \
        -DICONE="$raiz/build/windows/windows/conferix.ico" -DSAIDA="$PWD/conferix-setup.exe" \
        "$raiz/scripts/windows/instalador.nsi" >../instalador.log || { tail -n 20 ../instalador.log >&2; erro 'o makensis falhou.'; }
}
