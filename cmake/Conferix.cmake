# One compile configuration for every target of the project.
add_library(conferix_options INTERFACE)
target_include_directories(conferix_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(conferix_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
# -O3 makes code a quarter larger, of which a program that starts for each file loads more: it is kept for what is FAST.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
# GCC 12 warns of overlaps in the concatenation of string literals that are none; for Windows, of their lengths as well.
target_compile_options(conferix_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(WIN32)
    target_compile_options(conferix_options INTERFACE -Wno-stringop-overflow)
endif()
# The ten thousand addresses that are moved at each start take a bit or so each in place of 24 bytes.
include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,-z,pack-relative-relocs CONFERIX_PACKS_RELOCATIONS)
if(CONFERIX_PACKS_RELOCATIONS)
    target_link_options(conferix_options INTERFACE -Wl,-z,pack-relative-relocs)
endif()
if(CONFERIX_SANITIZE)
    target_compile_options(conferix_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                      -fno-omit-frame-pointer)
    target_link_options(conferix_options INTERFACE -fsanitize=address,undefined)
endif()
if(CONFERIX_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # In all libraries: the fuzzer goes by what it sees of the paths through them.
    target_compile_options(conferix_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# conferix_loaded_library(<name> <header>): a library that is loaded while the program runs. Its headers are <name>_headers;
# CONFERIX_LIB<NAME> is the name under which programs find it, as libcurl.so.4, which is not that of developers. Programs for
# Windows hold it, since no system brings it along: there <name>_headers brings the library as well.
function(conferix_loaded_library name header)
    string(TOUPPER ${name} upper)
    find_library(${upper}_LIBRARY ${name} REQUIRED)
    find_path(${upper}_INCLUDE_DIR ${header} REQUIRED)
    add_library(${name}_headers INTERFACE IMPORTED GLOBAL)
    target_include_directories(${name}_headers INTERFACE ${${upper}_INCLUDE_DIR})
    if(WIN32)
        target_link_libraries(${name}_headers INTERFACE ${${upper}_LIBRARY} ${ARGN})
        return()
    endif()
    get_filename_component(file ${${upper}_LIBRARY} REALPATH)
    get_filename_component(file ${file} NAME)
    string(REGEX REPLACE "(\\.so\\.[0-9]+)\\..*" "\\1" file ${file})
    set(CONFERIX_LIB${upper} ${file} PARENT_SCOPE)
endfunction()

# Notes what the files of a target in the current folder may include, for conferix_check_layers(). A dependency has to be
# there already, so the order of add_subdirectory is the order of the house and no circle can arise.
function(conferix_unit name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    foreach(dependency IN LISTS ARG_DEPENDS)
        if(dependency MATCHES "^conferix_" AND NOT TARGET ${dependency})
            message(FATAL_ERROR "${name} depends on ${dependency}, which stands above it")
        endif()
    endforeach()
    list(JOIN ARG_DEPENDS "," dependencies)
    list(JOIN ARG_SOURCES "," sources)
    set_property(GLOBAL APPEND PROPERTY CONFERIX_UNITS "${name}|${folder}|${dependencies}|${sources}")
endfunction()

# conferix_library(<folder target> [FAST] SOURCES ... DEPENDS ... PRIVATE_DEPENDS ...): one static library a folder. What its
# files include has to be declared here, directly. FAST: it goes over each element of a file.
function(conferix_library name)
    cmake_parse_arguments(ARG "FAST" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    if(ARG_FAST)
        target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O3>)
    endif()
    target_link_libraries(${name} PUBLIC conferix_options ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
    file(GLOB headers RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    conferix_unit(${name} SOURCES ${ARG_SOURCES} ${headers} DEPENDS ${ARG_DEPENDS} ${ARG_PRIVATE_DEPENDS})
endfunction()

# conferix_program(<name> SOURCES ... DEPENDS ...): a program over the libraries.
function(conferix_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE conferix_options ${ARG_DEPENDS})
    conferix_unit(${name} SOURCES ${ARG_SOURCES} DEPENDS ${ARG_DEPENDS})
endfunction()

# conferix_test(<name> SOURCES ... POSIX_SOURCES ... DEPENDS ...): one GoogleTest program; every case is a test of its own, also
# under Wine, where the programs are asked for their cases before the tests run. POSIX_SOURCES are left out for Windows: what
# they try is made of pipes, limits, programs or libraries that are not there. tests/ is in the include path; tests find the
# repository through CONFERIX_FONTE.
function(conferix_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;POSIX_SOURCES;DEPENDS" ${ARGN})
    if(WIN32)
        list(APPEND ARG_SOURCES ${CMAKE_SOURCE_DIR}/tests/support/main_windows.cpp)
        list(APPEND ARG_DEPENDS conferix_platform)
        set(discovery DISCOVERY_MODE PRE_TEST PROPERTIES ENVIRONMENT LC_ALL=pt_BR.UTF-8)
    else()
        list(APPEND ARG_SOURCES ${ARG_POSIX_SOURCES})
        list(APPEND ARG_DEPENDS GTest::gtest_main)
        set(discovery PROPERTIES ENVIRONMENT TZ=America/Sao_Paulo)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE conferix_options tests_support ${ARG_DEPENDS} GTest::gmock)
    # Long bodies that run once: optimising them would take half of the whole compilation.
    target_compile_options(${name} PRIVATE -O0)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_compile_definitions(${name} PRIVATE CONFERIX_FONTE="${CMAKE_SOURCE_DIR}")
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/test_bin)
    if(WIN32)
        target_compile_options(${name} PRIVATE -Wa,-mbig-obj)
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 ${discovery})
endfunction()

# conferix_resource(<folder>/<name>.qrc DEPENDS <its files>): <folder>/<name>.cpp, which holds the files of a list of Qt. Not
# compressed: the rcc of the machine knows ways that the Qt of the program may not.
function(conferix_resource list)
    cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
    cmake_path(GET list STEM name)
    cmake_path(REPLACE_EXTENSION list cpp OUTPUT_VARIABLE source)
    add_custom_command(
        OUTPUT ${source}
        COMMAND Qt6::rcc --no-compress --name ${name} --output ${source} ${list}
        DEPENDS ${list} ${ARG_DEPENDS}
        COMMENT "Reunindo ${name}"
        VERBATIM)
    set_source_files_properties(${source} PROPERTIES SKIP_AUTOGEN ON)
endfunction()

# conferix_install_manual(<page> <component>): a page of section 1, compressed as Debian wants it.
function(conferix_install_manual page component)
    get_filename_component(name ${page} NAME)
    set(compressed ${CMAKE_BINARY_DIR}/share/man/${name}.gz)
    add_custom_command(
        OUTPUT ${compressed}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/share/man
        COMMAND gzip -9nc ${page} > ${compressed}
        DEPENDS ${page}
        COMMENT "Compactando ${name}")
    add_custom_target(conferix_manual_${component} ALL DEPENDS ${compressed})
    install(FILES ${compressed} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
endfunction()

# Every build checks the includes of all units against their declared dependencies.
function(conferix_check_layers)
    get_property(units GLOBAL PROPERTY CONFERIX_UNITS)
    list(JOIN units "\n" units)
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/layers.txt CONTENT "${units}\n" @ONLY)
    add_custom_target(conferix_layers ALL
        COMMAND ${CMAKE_COMMAND} -DUNITS=${CMAKE_BINARY_DIR}/layers.txt -DROOT=${CMAKE_SOURCE_DIR}
                -P ${CMAKE_SOURCE_DIR}/cmake/CheckLayers.cmake
        COMMENT "Checking the layers"
        VERBATIM)
endfunction()
