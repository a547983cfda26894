# What Windows wants to know of a program: icon, version and manifest.
enable_language(C RC)

# Stacks are as large as elsewhere. Wine reads a program into memory whole unless its parts lie on whole pages.
add_link_options(-Wl,--stack,8388608 -Wl,--file-alignment,4096)

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

# <name>_delayed: a library of the system that the program loads with the first call of it, as it does elsewhere with those that
# few commands need. Each of these brings along the graphics of the system, which would double the time that a command takes to
# start.
find_program(DLLTOOL x86_64-w64-mingw32-dlltool REQUIRED)
foreach(name IN ITEMS crypt32 shlwapi winhttp)
    find_library(import ${name} REQUIRED NO_CACHE)
    execute_process(COMMAND ${DLLTOOL} --identify ${import} OUTPUT_VARIABLE dll OUTPUT_STRIP_TRAILING_WHITESPACE
                    COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_NM} ${import} OUTPUT_VARIABLE symbols ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "__imp_[^\n]+" symbols "${symbols}")
    list(SORT symbols)
    list(REMOVE_DUPLICATES symbols)
    list(TRANSFORM symbols REPLACE "^__imp_" "    ")
    list(JOIN symbols "\n" symbols)
    file(WRITE ${CMAKE_BINARY_DIR}/windows/${name}.def "LIBRARY \"${dll}\"\nEXPORTS\n${symbols}\n")
    set(delayed ${CMAKE_BINARY_DIR}/windows/lib${name}_delayed.a)
    execute_process(COMMAND ${DLLTOOL} --machine i386:x86-64 --input-def ${CMAKE_BINARY_DIR}/windows/${name}.def
                            --output-delaylib ${delayed}
                    COMMAND_ERROR_IS_FATAL ANY)
    add_library(${name}_delayed INTERFACE IMPORTED)
    target_link_libraries(${name}_delayed INTERFACE ${delayed})
    unset(import)
endforeach()
