# Refuses an include that the dependencies declared for its folder do not cover.
# cmake -DUNITS=<file> -DROOT=<repository> -P CheckLayers.cmake
# A line of UNITS: target|folder|direct dependencies, separated by commas|its files, separated by commas.
cmake_minimum_required(VERSION 3.23)

# What a header between angle brackets belongs to; one of the targets has to be declared.
set(external_headers
    "^Q[A-Z][A-Za-z]+$" Qt6::Widgets
    "^Qsci/" qscintilla
    "^SQLiteCpp/" SQLiteCpp
    "^SimpleIni\\.h$" PkgConfig::SIMPLEINI
    "^boost/" Boost::headers
    "^benchmark/" benchmark::benchmark
    "^csv\\.h$" csv
    "^curl/" curl_headers
    "^expat\\.h$" EXPAT::EXPAT
    "^fmt/" fmt::fmt
    "^nettle/" PkgConfig::NETTLE
    "^nlohmann/" nlohmann_json::nlohmann_json
    "^png\\.h$" PNG::PNG
    "^re2/" PkgConfig::RE2
    "^spdlog/" spdlog::spdlog_header_only
    "^sqlite3\\.h$" SQLite::SQLite3
    "^turbojpeg\\.h$" PkgConfig::TURBOJPEG
    "^unicode/" ICU::uc
    "^zip\\.h$" zip_headers
    "^zlib\\.h$" ZLIB::ZLIB)

set(faults "")

# Adds a fault where `included` (as written, without its marks) is not covered by `dependencies`.
function(check_include target folder dependencies file included system)
    set(needed "")
    if(system)
        set(pattern "")
        foreach(entry IN LISTS external_headers)
            if(pattern STREQUAL "")
                set(pattern "${entry}")
            else()
                if(included MATCHES "${pattern}")
                    set(needed "${entry}")
                endif()
                set(pattern "")
            endif()
        endforeach()
        if(needed STREQUAL "")
            # The standard library has no suffix, and instructions of the processor are no system; what is left is one.
            if(included MATCHES "[./]" AND NOT included MATCHES "^(emmintrin|arm_neon)\\.h$" AND NOT folder MATCHES "^(src/platform|bench|fuzz)$")
                set(needed "conferix_platform alone (a header of the operating system)")
            else()
                return()
            endif()
        endif()
    else()
        get_filename_component(path "${included}" DIRECTORY)
        if(NOT EXISTS "${ROOT}/src/${included}")
            set(needed "an existing file")
        elseif("src/${path}" STREQUAL folder)
            return()
        else()
            set(needed "${owner_src/${path}}")
        endif()
    endif()
    if(NOT needed IN_LIST dependencies)
        string(APPEND faults "\n  ${file} includes ${included}: ${target} has to declare ${needed}")
        set(faults "${faults}" PARENT_SCOPE)
    endif()
endfunction()

file(STRINGS "${UNITS}" units)
foreach(unit IN LISTS units)
    string(REPLACE "|" ";" unit "${unit}")
    list(GET unit 0 target)
    list(GET unit 1 folder)
    if(NOT DEFINED "owner_${folder}")
        set("owner_${folder}" ${target})
    endif()
endforeach()

foreach(unit IN LISTS units)
    string(REPLACE "|" ";" unit "${unit}")
    list(GET unit 0 target)
    list(GET unit 1 folder)
    list(GET unit 2 dependencies)
    list(GET unit 3 sources)
    string(REPLACE "," ";" dependencies "${dependencies}")
    string(REPLACE "," ";" sources "${sources}")
    foreach(source IN LISTS sources)
        set(file "${folder}/${source}")
        file(STRINGS "${ROOT}/${file}" includes REGEX "^ *# *include")
        foreach(include IN LISTS includes)
            if(include MATCHES "include *\"([^\"]+)\"")
                check_include("${target}" "${folder}" "${dependencies}" "${file}" "${CMAKE_MATCH_1}" FALSE)
            elseif(include MATCHES "include *<([^>]+)>")
                check_include("${target}" "${folder}" "${dependencies}" "${file}" "${CMAKE_MATCH_1}" TRUE)
            endif()
        endforeach()
    endforeach()
endforeach()

if(NOT faults STREQUAL "")
    message(FATAL_ERROR "Includes that the declared dependencies do not cover:${faults}")
endif()
