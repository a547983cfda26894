# Lido por janela-windows: as bibliotecas de que o programa para Windows é feito, compiladas dos pacotes-fonte do Debian em um
# prefixo cujo nome resume versões, opções e compilador. Uso: source bibliotecas.sh; bibliotecas; o prefixo fica em $prefixo.

alvo=x86_64-w64-mingw32
guardados=${CONFERIX_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/conferix/windows}
paralelo=${CONFERIX_PARALELO:-$(nproc)}

# Pacote-fonte e versão; onde o arquivo do Debian já não a tem, serve a mais nova que ele entrega.
fontes=(
    'expat 2.5.0-1+deb12u2'
    'libcsv 3.0.3+dfsg-6'
    'fmtlib 9.1.0+ds1-2'
    're2 20220601+dfsg-1'
    'sqlite3 3.40.1-2+deb12u2'
    'sqlitecpp 3.2.1-1'
    'icu 72.1-3+deb12u1'
    'libzip 1.7.3-1'
    'nettle 3.8.1-2'
    'curl 7.88.1-10+deb12u15'
    'libpng1.6 1.6.39-2+deb12u6'
    'libjpeg-turbo 1:2.1.5-2'
)
# Bibliotecas que são só cabeçalhos, iguais em todos os sistemas: dos pacotes instalados.
cabecalhos=(boost:libboost1.74-dev nlohmann:nlohmann-json3-dev spdlog:libspdlog-dev SimpleIni.h:libsimpleini-dev)

# Um status só disto, para que quem confere tudo possa dizer que sem os fontes não conferiu.
sem_fontes() {
    printf 'conferix: erro: %s\n' "$1" >&2
    exit 75
}

# Uma lista por seção do arquivo: quando a de segurança não entrega um pacote, entrega-o a principal.
preparar_apt() {
    local linha numero=0
    [ -z "$(find "$guardados/apt" -maxdepth 0 -mmin -60 2>/dev/null)" ] || return 0
    rm -rf "$guardados/apt"
    while read -r linha; do
        local pasta=$guardados/apt/$((numero++))
        mkdir -p "$pasta"/{listas,cache/archives}/partial
        echo "$linha" >"$pasta/fontes.list"
    done < <(apt-get indextargets --format \
        'deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' | sort -ru)
    [ "$numero" -gt 0 ] || sem_fontes 'o apt não conhece nenhum arquivo do Debian; veja /etc/apt.'
    for pasta in "$guardados"/apt/*; do
        do_apt "$pasta" apt-get -qq update || sem_fontes 'apt-get update falhou; verifique a conexão com a internet.'
    done
}

do_apt() { # <pasta> <programa> <argumentos...>: sem tocar na configuração da máquina
    local pasta=$1 programa=$2
    shift 2
    "$programa" -o Dir::Etc::SourceList="$pasta/fontes.list" -o Dir::Etc::SourceParts=/dev/null \
        -o Dir::State::Lists="$pasta/listas" -o Dir::Cache="$pasta/cache" -o APT::Sandbox::User=root "$@" 2>>"$registro"
}

baixar() { # <pacote> <versão>: o .dsc na pasta atual, e o seu nome na saída
    local pasta pedido
    for pedido in "$1=$2" "$1"; do
        for pasta in "$guardados"/apt/*; do
            if do_apt "$pasta" apt-get -qq source --download-only "$pedido" >>"$registro"; then
                ls -t "$1"_*.dsc | head -n 1
                return
            fi
        done
    done
    return 1
}

com_cmake() { # <pasta do fonte> <opções...>
    local fonte=$1
    shift
    cmake -S "$fonte" -B "$fonte/compilado" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$raiz/cmake/windows/ferramentas.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_PREFIX="$prefixo" -DCMAKE_INSTALL_LIBDIR=lib \
        -DCONFERIX_PREFIXO="$prefixo" "$@"
    cmake --build "$fonte/compilado" -j "$paralelo"
    cmake --install "$fonte/compilado"
}

arquivar() { # <biblioteca> <objetos...>
    $alvo-ar rcsD "$prefixo/lib/lib$1.a" "${@:2}"
}

descrever() { # <biblioteca> <versão>: para o pkg-config
    printf '%s\n' "Name: $1" "Description: $1" "Version: $2" "Libs: -L$prefixo/lib -l$1" "Cflags: -I$prefixo/include" \
        >"$prefixo/lib/pkgconfig/$1.pc"
}

fazer_expat() {
    com_cmake expat -DEXPAT_BUILD_TOOLS=OFF -DEXPAT_BUILD_EXAMPLES=OFF -DEXPAT_BUILD_TESTS=OFF -DEXPAT_BUILD_DOCS=OFF \
        -DEXPAT_SHARED_LIBS=OFF -DEXPAT_DTD=OFF -DCMAKE_C_FLAGS=-DXML_DTD=1
}

# Só o que o programa usa da parte comum: classes de caracteres, codificações e normalização. Dos dados, as codificações de um
# byte e a normalização NFKC.
fazer_icu() {
    local opcoes=(-O2 -DU_STATIC_IMPLEMENTATION -DU_COMMON_IMPLEMENTATION -DUCONFIG_NO_SERVICE=1 -D_REENTRANT
        -Isource/common -std=c++14 -w)
    local partes=(
        appendable bmpset bytesinkutil bytestream charstr cmemory cstring edits loadednormalizer2impl normalizer2
        normalizer2impl patternprops putil stringpiece uarrsort ucase uchar ucln_cmn ucmndata ucnv ucnv2022 ucnv_bld
        ucnv_cb ucnv_cnv ucnv_ct ucnv_err ucnv_ext ucnv_io ucnv_lmb ucnv_u16 ucnv_u32 ucnv_u7 ucnv_u8 ucnvbocu ucnvhz
        ucnvisci ucnvlat1 ucnvmbcs ucnvscsu ucptrie udata udatamem udataswp uenum uhash uinvchar umapfile umutablecptrie
        umutex unifilt unifunct uniset unisetspan unistr unistr_props uobject ustr_cnv ustrfmt ustring ustrtrns utf_impl
        util utrace utrie2 utrie_swap uvector
    )
    mkdir -p objetos dados "$prefixo/include/unicode"
    printf '%s\n' "${partes[@]}" | xargs -P "$paralelo" -I{} \
        "$alvo-g++-posix" "${opcoes[@]}" -c source/common/{}.cpp -o objetos/{}.o
    # O que as partes só chamam para o fuso horário e para a língua do sistema, que ninguém lhes pede.
    printf '%s\n' 'void *uprv_detectWindowsTimeZone(void) { return 0; }' 'int uloc_canonicalize_72(void) { return 0; }' >vazias.c
    $alvo-gcc-posix -O2 -c vazias.c -o objetos/vazias.o
    icupkg -l source/data/in/icudt72l.dat >todos.txt
    icupkg -d dados -x '*' source/data/in/icudt72l.dat
    { printf '%s\n' cnvalias.icu nfkc.nrm
        while read -r nome; do
            [ "$(stat -c %s "dados/$nome")" -gt 12000 ] || echo "$nome"
        done < <(grep '\.cnv$' todos.txt); } | sort >ficam.txt
    # Fora as que são só o acréscimo a uma das que não ficam.
    { icupkg -s dados -a ficam.txt new icudt72l.dat 2>&1 || true; } |
        sed -n 's/^Item \(.*\) depends on missing item.*/\1/p' | sort -u >sem_base.txt
    grep -vxFf sem_base.txt ficam.txt >escolhidos.txt
    icupkg -s dados -a escolhidos.txt new icudt72l.dat
    printf '%s\n' '.section .rdata,"dr"' '.balign 16' '.globl icudt72_dat' 'icudt72_dat:' '.incbin "icudt72l.dat"' >dados.s
    $alvo-gcc-posix -c dados.s -o objetos/dados.o
    arquivar icuuc objetos/*.o
    cp source/common/unicode/*.h "$prefixo/include/unicode"
}

fazer_sqlite3() {
    make -f main.mk TOP=. BCC=gcc NAWK=awk sqlite3.c
    # Das opções do Debian as que o programa nota, e a que o SQLiteCpp quer.
    $alvo-gcc-posix -O2 -w -DSQLITE_THREADSAFE=1 -DSQLITE_ENABLE_COLUMN_METADATA -DSQLITE_SECURE_DELETE -DSQLITE_USE_URI=1 \
        -DSQLITE_ENABLE_FTS5 -DSQLITE_ALLOW_ROWID_IN_VIEW -DSQLITE_LIKE_DOESNT_MATCH_BLOBS \
        -DSQLITE_MAX_VARIABLE_NUMBER=250000 -DSQLITE_OMIT_LOAD_EXTENSION -c sqlite3.c -o sqlite3.o
    arquivar sqlite3 sqlite3.o
    cp sqlite3.h "$prefixo/include"
}

fazer_sqlitecpp() {
    com_cmake . -DSQLITECPP_INTERNAL_SQLITE=OFF -DSQLITECPP_RUN_CPPLINT=OFF -DSQLITECPP_RUN_CPPCHECK=OFF \
        -DSQLITECPP_USE_STACK_PROTECTION=OFF -DSQLITE_OMIT_LOAD_EXTENSION=ON
}

fazer_fmtlib() {
    com_cmake . -DFMT_TEST=OFF -DFMT_DOC=OFF
}

fazer_re2() {
    make REBUILD_TABLES=1 re2/unicode_casefold.cc re2/unicode_groups.cc re2/perl_groups.cc
    com_cmake . -DRE2_BUILD_TESTING=OFF
    descrever re2 20220601
}

fazer_libzip() {
    com_cmake . -DENABLE_COMMONCRYPTO=OFF -DENABLE_GNUTLS=OFF -DENABLE_MBEDTLS=OFF -DENABLE_OPENSSL=OFF \
        -DENABLE_WINDOWS_CRYPTO=OFF -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF -DENABLE_ZSTD=OFF -DBUILD_TOOLS=OFF \
        -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF
}

fazer_libcsv() {
    $alvo-gcc-posix -O2 -w -c libcsv.c -o libcsv.o
    arquivar csv libcsv.o
    cp csv.h "$prefixo/include"
}

# Só o que o programa calcula: MD5, SHA-256 e Base64.
fazer_nettle() {
    : >config.h
    $alvo-gcc-posix -O2 -w -DHAVE_CONFIG_H -I. -c md5.c md5-compress.c sha256.c sha256-compress.c write-be32.c \
        write-le32.c base64-encode.c
    arquivar nettle ./*.o
    mkdir -p "$prefixo/include/nettle"
    cp md5.h sha2.h base64.h nettle-types.h "$prefixo/include/nettle"
    descrever nettle 3.8.1
}

# HTTP e HTTPS pelo próprio Windows (Schannel), com os certificados que ele conhece; o curl traz a configuração para ele.
fazer_curl() {
    mkdir -p objetos
    printf '%s\n' lib/*.c lib/v*/*.c | xargs -P "$paralelo" -I{} sh -c "$alvo-gcc-posix -O2 -w -DBUILDING_LIBCURL \
        -DCURL_STATICLIB -DHTTP_ONLY -DUSE_SCHANNEL -DUSE_WINDOWS_SSPI -DUSE_WIN32_IDN -DWANT_IDN_PROTOTYPES -DUSE_IPV6 \
        -DHAVE_LIBZ -Iinclude -Ilib -c {} -o objetos/\$(echo {} | tr / _).o"
    arquivar curl objetos/*.o
    cp -r include/curl "$prefixo/include/"
}

fazer_libpng1.6() {
    rm -f pngtest.c # um programa
    cp scripts/pnglibconf.h.prebuilt pnglibconf.h
    $alvo-gcc-posix -O2 -w -DPNG_INTEL_SSE_OPT=0 -I"$prefixo/include" -c png*.c
    arquivar png png*.o
    cp png.h pngconf.h pnglibconf.h "$prefixo/include"
}

fazer_libjpeg-turbo() {
    # Toma uma pasta relativa sem tipo pela atual.
    com_cmake . -DENABLE_SHARED=OFF -DWITH_SIMD=OFF -DWITH_JAVA=OFF -DCMAKE_INSTALL_LIBDIR="$prefixo/lib"
}

# O que o projeto procura com find_package e pkg-config e só existe aqui como cabeçalhos. O da SimpleIni traz também o que no
# Debian está em uma biblioteca.
descrever_cabecalhos() {
    mkdir -p "$prefixo"/lib/{pkgconfig,cmake/spdlog}
    cp -r /usr/share/cmake/nlohmann_json "$prefixo/lib/cmake/"
    cat >"$prefixo/lib/cmake/spdlog/spdlogConfig.cmake" <<'FIM'
add_library(spdlog::spdlog_header_only INTERFACE IMPORTED)
target_compile_definitions(spdlog::spdlog_header_only INTERFACE SPDLOG_FMT_EXTERNAL)
target_link_libraries(spdlog::spdlog_header_only INTERFACE fmt::fmt)
FIM
    printf '%s\n' '#define SI_IMPLEMENTATION' '#define SI_NO_CONVERSION' '#include <SimpleIni.h>' \
        'template class CSimpleIniTempl<char, SI_GenericNoCase<char>, SI_ConvertA<char>>;' >"$prefixo/simpleini.cpp"
    $alvo-g++-posix -O2 -w -I"$prefixo/include" -c "$prefixo/simpleini.cpp" -o "$prefixo/simpleini.o"
    arquivar simpleini "$prefixo/simpleini.o"
    rm "$prefixo"/simpleini.{cpp,o}
    descrever simpleini 4.19
}

compilar_biblioteca() { # <pacote-fonte> <versão>
    local dsc
    SECONDS=0
    cd "$trabalho"
    # O que uma execução interrompida deixou serve: a pasta é só destas versões e opções.
    if [ ! -d "$1" ]; then
        dsc=$(baixar "$1" "$2") || sem_fontes "o pacote-fonte $1 não pôde ser baixado; veja $registro."
        rm -rf incompleto
        dpkg-source --no-check -x "$dsc" incompleto >>"$registro" 2>&1 || erro "o pacote-fonte $1 está danificado."
        mv incompleto "$1"
    fi
    dsc=$(ls -t "$1"_*.dsc | head -n 1)
    cd "$1"
    cp debian/copyright "$prefixo/licencas/$1.txt"
    # Em segundo plano, porque antes de || o bash não para no primeiro erro.
    (set -e; "fazer_$1") >>"$registro" 2>&1 &
    wait $! || {
        tail -n 40 "$registro" >&2
        erro "a biblioteca $1 não compilou; o fim do registro está acima."
    }
    basename "$dsc" .dsc >>"$prefixo/versoes.txt"
    echo "  $(basename "$dsc" .dsc): $SECONDS s" >&2
}

# Um prefixo com os pacotes-fonte dados, se ainda não está pronto; antes deles, a função que o prepara.
fazer_prefixo() { # <função> <pacotes-fonte e versões...>
    local entrada
    [ ! -e "$prefixo/pronto" ] || return 0
    trabalho=$prefixo-trabalho
    registro=$prefixo.log
    mkdir -p "$trabalho" "$prefixo"/{include,lib,licencas}
    touch "$prefixo/versoes.txt"
    : >"$registro"
    echo "Compilando as bibliotecas (registro em $registro)..." >&2
    preparar_apt
    "$1"
    for entrada in "${@:2}"; do
        # O que uma execução interrompida já fez não se faz de novo.
        grep -q "^${entrada%% *}_" "$prefixo/versoes.txt" || compilar_biblioteca $entrada
    done
    cd "$raiz"
    rm -rf "$trabalho"
    touch "$prefixo/pronto"
}

preparar_comando() {
    local entrada
    for entrada in "${cabecalhos[@]}"; do
        ln -sfn "/usr/include/${entrada%%:*}" "$prefixo/include/${entrada%%:*}"
    done
    descrever_cabecalhos
    cp /usr/$alvo/lib/libz.a "$prefixo/lib/"
    cp /usr/$alvo/include/{zlib,zconf}.h "$prefixo/include/"
}

bibliotecas() {
    local entrada resumo
    resumo=$({ printf '%s\n' "${fontes[@]}"
        for entrada in "${cabecalhos[@]}"; do dpkg-query -W -f='${Package} ${Version}\n' "${entrada#*:}"; done
        $alvo-g++-posix -dumpfullversion
        declare -f com_cmake arquivar descrever descrever_cabecalhos $(printf 'fazer_%s\n' "${fontes[@]%% *}" | LC_ALL=C sort)
        cat "$raiz/cmake/windows/ferramentas.cmake"; } | sha256sum)
    prefixo=$guardados/prefixo-${resumo:0:12}
    fazer_prefixo preparar_comando "${fontes[@]}"
}
