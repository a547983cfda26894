# The Debian packages: conferix (the command and all it needs) and conferix-desktop (the window). `scripts/empacotar` makes
# them with cpack. Every install() names its component, comando or janela.
find_program(GZIP gzip REQUIRED)

string(TIMESTAMP ano "%Y" UTC)
string(TIMESTAMP data "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(versao ${PROJECT_VERSION})
set(saida ${CMAKE_BINARY_DIR}/pacote)
configure_file(cmake/pacote/copyright.in ${saida}/copyright @ONLY)
configure_file(cmake/pacote/changelog.in ${saida}/changelog @ONLY)
execute_process(COMMAND ${GZIP} -9nf ${saida}/changelog COMMAND_ERROR_IS_FATAL ANY)
set(pacotes comando:conferix)
if(CONFERIX_JANELA)
    list(APPEND pacotes janela:conferix-desktop)
endif()
foreach(pacote IN LISTS pacotes)
    string(REPLACE ":" ";" pacote ${pacote})
    list(GET pacote 0 componente)
    list(GET pacote 1 nome)
    install(FILES ${saida}/copyright ${saida}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${nome}
            COMPONENT ${componente})
endforeach()

# The documents, and what they lead to, beside each other as in the source.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/conferix COMPONENT comando)
install(FILES bench/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/conferix/bench COMPONENT comando)
install(DIRECTORY docs exemplos implantacao DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/conferix COMPONENT comando)

# The libraries that are loaded while the program runs are in no list of the linker.
set(carregadas "")
foreach(biblioteca IN ITEMS ${CURL_LIBRARY} ${ZIP_LIBRARY})
    get_filename_component(biblioteca ${biblioteca} REALPATH)
    execute_process(COMMAND dpkg-query -S ${biblioteca} OUTPUT_VARIABLE dono ERROR_QUIET)
    if(dono MATCHES "^([^:]+):")
        list(APPEND carregadas ${CMAKE_MATCH_1})
    endif()
endforeach()
list(JOIN carregadas ", " carregadas)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR Conferix)
set(CPACK_PACKAGE_CONTACT "Conferix <suporte@conferix.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/pacotes)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
                                                WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL comando)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "")
set(CPACK_DEBIAN_COMANDO_PACKAGE_NAME conferix)
set(CPACK_DEBIAN_COMANDO_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_COMANDO_PACKAGE_DEPENDS "${carregadas}")
set(CPACK_DEBIAN_COMANDO_PACKAGE_SUGGESTS conferix-desktop)
set(CPACK_COMPONENT_COMANDO_DESCRIPTION
"confere e corrige arquivos XML do padrão TISS
Aponta todas as falhas de arquivos TISS, com que prestadores, operadoras e a
ANS trocam dados, em português e com a linha e a guia, e corrige o que pode
ser calculado.
.
Checks XML files of TISS, the standard of Brazilian health-care billing, and
corrects what can be computed. This package holds the command.")
if(CONFERIX_JANELA)
    list(APPEND CPACK_COMPONENTS_ALL janela)
    set(CPACK_DEBIAN_JANELA_PACKAGE_NAME conferix-desktop)
    set(CPACK_DEBIAN_JANELA_PACKAGE_SECTION utils)
    set(CPACK_DEBIAN_JANELA_PACKAGE_DEPENDS "conferix (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_JANELA_PACKAGE_RECOMMENDS "qt6-translations-l10n")
    set(CPACK_COMPONENT_JANELA_DESCRIPTION
"confere e corrige arquivos XML do padrão TISS em uma janela
Abre arquivos TISS, aponta as falhas em português e oferece as correções.
.
Checks XML files of TISS, the standard of Brazilian health-care billing, and
corrects what can be computed. This package holds the window.")
endif()
include(CPack)
