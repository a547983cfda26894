// Any bytes as a publication of terminology: as text with cells, or JSON.
#include "publication_target.h"

using namespace conferix;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ReadPublication(WriteWorkFile("Tabela 22.csv", BytesOf(data, size)));
    return 0;
}
