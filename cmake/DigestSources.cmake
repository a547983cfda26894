# Writes a source file that defines a constant: the digest of all sources of a folder and those below it.
# cmake -DFOLDER=<folder> -DNAME=<constant> -DOUTPUT=<file> -P DigestSources.cmake
cmake_minimum_required(VERSION 3.23)
file(GLOB_RECURSE sources ${FOLDER}/*.h ${FOLDER}/*.cpp)
set(digests "")
foreach(source IN LISTS sources)
    file(SHA256 ${source} digest)
    string(APPEND digests ${digest})
endforeach()
string(SHA256 digest "${digests}")
file(WRITE ${OUTPUT} "namespace conferix {\nextern const char* const ${NAME};\nconst char* const ${NAME} = \"${digest}\";\n}\n")
