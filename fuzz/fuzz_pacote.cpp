// Any bytes as a package of schemas and of terminology: as the archive itself, and as names and contents by
// turns.
#include "app/schema_package.h"
#include "publication_target.h"

using namespace conferix;

namespace {

void ReadPackage(const std::filesystem::path& file) {
    try {
        for (const auto& [folder, files] : ReadSchemaPackage(file))
            for (const auto& [name, content] : files)
                Demand(name.find_first_of("/\\") == std::string::npos && name.ends_with(".xsd"),
                       "a schema of a package has a bare name");
    } catch (const EInvalidPackage&) {
        // refused with a reason
    }
    ReadPublication(file);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = BytesOf(data, size);
    if (input.starts_with("PK")) {
        ReadPackage(WriteWorkFile("Tabela 22.zip", input));
        return 0;
    }
    const std::vector<std::string> parts = Parts(input);
    if (parts.size() < 2) // an archive without entries is no file
        return 0;
    TArchiveWriter archive("Tabela 22.zip");
    for (std::size_t i = 0; i + 1 < parts.size(); i += 2)
        archive.Add(parts[i], parts[i + 1]);
    ReadPackage(archive.Close());
    return 0;
}
