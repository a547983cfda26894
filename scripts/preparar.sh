# Lido pelos outros scripts: instala o que falta, configura e compila.
# Uso: source preparar.sh; preparar <preset> <alvo...>

raiz=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

pacotes_compilar=(g++ cmake ninja-build pkg-config libexpat1-dev libicu-dev libsqlite3-dev
    libsqlitecpp-dev nlohmann-json3-dev libfmt-dev libre2-dev libzip-dev libspdlog-dev
    libsimpleini-dev libcurl4-openssl-dev libcsv-dev nettle-dev libboost-dev zlib1g-dev
    libpng-dev libturbojpeg0-dev)
pacotes_janela=(qt6-base-dev libqscintilla2-qt6-dev libqscintilla2-qt6-l10n qt6-translations-l10n librsvg2-bin)
pacotes_testar=(libgtest-dev libgmock-dev libvalijson-dev libxml2-dev locales patch zsh fish mandoc qpdf poppler-utils)
pacotes_empacotar=(dpkg-dev fakeroot file gzip)
pacotes_windows=(g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev libz-mingw-w64-dev wine64 nsis dpkg-dev make tcl
    python3-minimal python3-pil unicode-data icu-devtools librsvg2-bin zip)
pacotes_janela_windows=(qt6-base-dev qt6-base-dev-tools libqscintilla2-qt6-l10n qt6-translations-l10n)
pacotes_conferir=(clang-format clang-tidy git)
pacotes_fuzz=(clang libclang-rt-14-dev)

erro() {
    printf 'conferix: erro: %s\n' "$1" >&2
    exit 1
}

instalar() {
    local faltam=() pacote
    for pacote in "$@"; do
        [ "$(dpkg-query -W -f='${Status}' "$pacote" 2>/dev/null)" = 'install ok installed' ] || faltam+=("$pacote")
    done
    [ ${#faltam[@]} -eq 0 ] && return 0
    local como=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || erro "faltam pacotes (${faltam[*]}); execute como root ou instale o sudo."
        como=(sudo)
    fi
    echo "Instalando: ${faltam[*]}" >&2
    "${como[@]}" apt-get update -qq >&2 || erro 'apt-get update falhou; verifique a conexão com a internet.'
    "${como[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${faltam[@]}" \
        </dev/null >&2 || erro 'a instalação dos pacotes falhou.'
}

compilar() {
    local preset=$1
    shift
    local opcoes=()
    command -v ccache >/dev/null && opcoes+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    cd "$raiz" || exit 1
    local registro=build/$preset-compilacao.log
    mkdir -p build
    echo "Compilando (registro em $registro)..." >&2
    if ! { cmake --preset "$preset" "${opcoes[@]}" "$@" && cmake --build --preset "$preset"; } >"$registro" 2>&1; then
        tail -n 60 "$registro" >&2
        erro 'a compilação falhou; o fim do registro está acima.'
    fi
}
