# Writes a C++ file that holds texts.
# cmake -DFUNCTION=<name> -DHEADER=<header that declares it> -DOUTPUT=<file> -P EmbedTexts.cmake -- <text file>...
# The function answers them in the order of the files, which are UTF-8.
cmake_minimum_required(VERSION 3.23)

set(texts "")
set(given FALSE)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(index RANGE ${last})
    set(argument "${CMAKE_ARGV${index}}")
    if(given)
        file(READ "${argument}" text)
        get_filename_component(name "${argument}" NAME)
        string(APPEND texts "    // ${name}\n    R\"TEXTO(${text})TEXTO\",\n")
    elseif(argument STREQUAL "--")
        set(given TRUE)
    endif()
endforeach()

file(WRITE "${OUTPUT}" "#include \"${HEADER}\"

namespace conferix {

std::span<const std::string_view> ${FUNCTION}() {
    static constexpr std::string_view kTexts[] = {
${texts}    };
    return kTexts;
}

} // namespace conferix
")
