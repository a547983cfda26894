# Lido por janela-windows: o Qt e o QScintilla da janela para Windows, em um prefixo próprio, com os meios de bibliotecas.sh.
# Uso: source qt.sh; bibliotecas_janela; o prefixo fica em $prefixo_qt.

fontes_janela=(
    'qt6-base 6.4.2+dfsg-10'
    'qscintilla2 2.13.3+dfsg-3'
)

# As ferramentas (moc, rcc) são as do Debian, da mesma versão.
qt_da_maquina=(-DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake)

# Só o que a janela usa, com as bibliotecas que o Qt traz.
fazer_qt6-base() {
    com_cmake . "${qt_da_maquina[@]}" -DQT_BUILD_TESTS=OFF -DQT_BUILD_EXAMPLES=OFF -DINPUT_opengl=no \
        -DFEATURE_{androiddeployqt,concurrent,dbus,freetype,gif,glib,icu,jpeg,network,pkg_config,qmake}=OFF \
        -DFEATURE_{sql,tabletevent,testlib,vulkan,xml,zstd}=OFF
}

# O projeto do QScintilla é para o qmake, que só compila para outro sistema com arquivos próprios dele; bastam estas linhas.
fazer_qscintilla2() {
    cat >CMakeLists.txt <<'FIM'
cmake_minimum_required(VERSION 3.23)
project(QScintilla LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_AUTOMOC ON)
find_package(Qt6 REQUIRED COMPONENTS Widgets PrintSupport)
file(GLOB fontes src/*.cpp src/*.h src/Qsci/*.h scintilla/src/*.cpp scintilla/lexers/*.cpp scintilla/lexlib/*.cpp)
list(FILTER fontes EXCLUDE REGEX MacPasteboardMime)
add_library(qscintilla2_qt6 STATIC ${fontes})
target_compile_definitions(qscintilla2_qt6 PRIVATE SCINTILLA_QT SCI_LEXER INCLUDE_DEPRECATED_FEATURES)
target_compile_options(qscintilla2_qt6 PRIVATE -w)
target_include_directories(qscintilla2_qt6 PRIVATE src scintilla/include scintilla/lexlib scintilla/src)
target_link_libraries(qscintilla2_qt6 PRIVATE Qt6::Widgets Qt6::PrintSupport)
install(TARGETS qscintilla2_qt6)
install(DIRECTORY src/Qsci DESTINATION include)
FIM
    com_cmake .
}

bibliotecas_janela() {
    local resumo prefixo
    resumo=$({ printf '%s\n' "${fontes_janela[@]}"
        dpkg-query -W -f='${Package} ${Version}\n' qt6-base-dev libz-mingw-w64-dev
        $alvo-g++-posix -dumpfullversion
        declare -f com_cmake fazer_qt6-base fazer_qscintilla2
        cat "$raiz/cmake/windows/ferramentas.cmake"; } | sha256sum)
    prefixo=$guardados/qt-${resumo:0:12}
    fazer_prefixo : "${fontes_janela[@]}"
    prefixo_qt=$prefixo
}
