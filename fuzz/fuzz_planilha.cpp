// Any bytes as a workbook: as the archive itself, and as its parts: sheet, shared texts, list of sheets,
// relations.
#include "publication_target.h"

#include <array>

using namespace conferix;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::array<std::pair<const char*, std::string_view>, 4> kParts = {
        {{"xl/s.xml", {}},
         {"xl/sharedStrings.xml", "<sst><si><t>Código do Termo</t></si><si><t>Termo</t></si></sst>"},
         {"xl/workbook.xml", "<workbook xmlns:r='r'><sheets><sheet name='1' r:id='a'/></sheets></workbook>"},
         {"xl/_rels/workbook.xml.rels",
          "<Relationships><Relationship Id='a' Target='s.xml'/></Relationships>"}}};
    const std::string_view input = BytesOf(data, size);
    if (input.starts_with("PK")) {
        ReadPublication(WriteWorkFile("Tabela 22.xlsx", input));
        return 0;
    }
    const std::vector<std::string> given = Parts(input);
    TArchiveWriter archive("Tabela 22.xlsx");
    for (std::size_t i = 0; i < kParts.size(); ++i)
        archive.Add(kParts[i].first, i < given.size() ? std::string_view(given[i]) : kParts[i].second);
    ReadPublication(archive.Close());
    return 0;
}
