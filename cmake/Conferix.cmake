# One compile configuration for every target of the project.
add_library(conferix_options INTERFACE)
target_include_directories(conferix_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(conferix_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
# GCC 12 warns of overlaps in the concatenation of string literals that are none.
target_compile_options(conferix_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(CONFERIX_SANITIZE)
    target_compile_options(conferix_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                      -fno-omit-frame-pointer)
    target_link_options(conferix_options INTERFACE -fsanitize=address,undefined)
endif()

# conferix_library(<folder target> SOURCES ... DEPENDS ... PRIVATE_DEPENDS ...): one static library a
# folder, so that the linker shows who knows whom.
function(conferix_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC conferix_options ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
endfunction()

# conferix_test(<name> SOURCES ... DEPENDS ...): one GoogleTest program; every case is a test of its own.
# tests/support/ is in the include path; tests find the repository through CONFERIX_FONTE.
function(conferix_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_compile_definitions(${name} PRIVATE CONFERIX_FONTE="${CMAKE_SOURCE_DIR}")
    target_link_libraries(${name} PRIVATE conferix_options ${ARG_DEPENDS} GTest::gmock GTest::gtest_main)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/test_bin)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ENVIRONMENT "TZ=America/Sao_Paulo")
endfunction()
