# What Windows wants to know of a program: icon, version and manifest.
enable_language(C RC)

# Stacks are as large as elsewhere.
add_link_options(-Wl,--stack,8388608)

# The Qt of the window, in a folder of its own; moc and rcc are those of the machine.
if(CONFERIX_JANELA)
    list(APPEND CMAKE_FIND_ROOT_PATH ${CONFERIX_PREFIXO_QT})
    list(APPEND CMAKE_PREFIX_PATH ${CONFERIX_PREFIXO_QT})
endif()

# conferix_windows_program(<target> <description>)
function(conferix_windows_program target description)
    set(CONFERIX_DESCRICAO "${description}")
    set(CONFERIX_ARQUIVO "${target}.exe")
    string(REPLACE "." "," CONFERIX_NUMERO "${PROJECT_VERSION}")
    set(CONFERIX_PASTA ${CMAKE_SOURCE_DIR}/cmake/windows)
    set(resources ${CMAKE_BINARY_DIR}/windows/${target}.rc)
    configure_file(${CMAKE_SOURCE_DIR}/cmake/windows/programa.rc.in ${resources} @ONLY)
    target_sources(${target} PRIVATE ${resources})
    set_source_files_properties(${resources} PROPERTIES
        OBJECT_DEPENDS "${CMAKE_BINARY_DIR}/windows/conferix.ico;${CMAKE_SOURCE_DIR}/cmake/windows/programa.manifest"
        INCLUDE_DIRECTORIES ${CMAKE_BINARY_DIR}/windows)
endfunction()

find_program(RSVG_CONVERT rsvg-convert REQUIRED)
set(icone ${CMAKE_BINARY_DIR}/windows/conferix.ico)
add_custom_command(
    OUTPUT ${icone}
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/windows/fazer_icone ${CMAKE_SOURCE_DIR}/resources/desktop/conferix.svg ${icone}
    DEPENDS ${CMAKE_SOURCE_DIR}/scripts/windows/fazer_icone ${CMAKE_SOURCE_DIR}/resources/desktop/conferix.svg
    COMMENT "Fazendo o ícone"
    VERBATIM)
add_custom_target(conferix_icone DEPENDS ${icone})
