// Any bytes as a publication of terminology: as a file of any layout, and as the sheet of a workbook.
// Run: fuzz_importar CORPUS exemplos/terminologia

#include "data/import/import_errors.h"
#include "data/import/publication_reader.h"

#include <zip.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include <unistd.h>

namespace {

using namespace conferix;

class TSink : public IPublicationSink {
  public:
    void OnRow(const TPublishedRow& row, bool) override {
        if (row.Codigo.empty() || row.Tabela.empty())
            std::abort(); // what is understood has a key
        for (const std::string& date : {row.Period.Start, row.Period.End, row.Period.ImplementationEnd})
            if (!date.empty() && date.size() != std::string("AAAA-MM-DD").size())
                std::abort();
    }
    void OnRejected(TRejectedRow line) override {
        if (line.Reason.empty())
            std::abort();
    }
    void OnPassedOver(const std::string&) override {}
    void OnMissingDates(const std::string&) override {}
    void OnProgress(const std::string&, double fraction) override {
        if (!(fraction >= 0 && fraction <= 1))
            std::abort();
    }
};

std::filesystem::path WorkFolder() {
    static const std::filesystem::path folder = [] {
        std::string name = (std::filesystem::temp_directory_path() / "conferix-fuzz-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            std::abort();
        return std::filesystem::path(name);
    }();
    return folder;
}

void Read(const std::filesystem::path& file) {
    TSink sink;
    try {
        TPublicationReader(WorkFolder(), sink).Read(file);
    } catch (const EInvalidPublication&) {
        // refused with a reason
    }
}

void ReadAsSheet(const std::uint8_t* data, std::size_t size) {
    const std::filesystem::path file = WorkFolder() / "Tabela 22.xlsx";
    zip_t* archive = zip_open(file.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    const auto add = [&](const char* name, const void* bytes, std::size_t count) {
        const zip_int64_t index = zip_file_add(archive, name, zip_source_buffer(archive, bytes, count, 0), 0);
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0);
    };
    const std::string book = "<workbook xmlns:r='r'><sheets><sheet name='1' r:id='a'/></sheets></workbook>";
    const std::string relations = "<Relationships><Relationship Id='a' Target='s.xml'/></Relationships>";
    const std::string texts = "<sst><si><t>Código do Termo</t></si><si><t>Termo</t></si></sst>";
    add("xl/workbook.xml", book.data(), book.size());
    add("xl/_rels/workbook.xml.rels", relations.data(), relations.size());
    add("xl/sharedStrings.xml", texts.data(), texts.size());
    add("xl/s.xml", data, size);
    if (zip_close(archive) != 0)
        std::abort();
    Read(file);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::filesystem::path file = WorkFolder() / "Tabela 22.csv";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    Read(file);
    ReadAsSheet(data, size);
    return 0;
}
