// Reading of terminology, with what holds of every row.
#pragma once

#include "data/import/import_errors.h"
#include "data/import/publication_reader.h"
#include "target.h"

#include <zip.h>

namespace conferix {

class TDemandingSink : public IPublicationSink {
  public:
    void OnRow(const TPublishedRow& row, bool) override {
        Demand(!row.Codigo.empty() && !row.Tabela.empty(), "a row has a key");
        for (const std::string& date : {row.Period.Start, row.Period.End, row.Period.ImplementationEnd})
            Demand(date.empty() || date.size() == std::string_view("AAAA-MM-DD").size(), "dates are whole");
    }
    void OnRejected(TRejectedRow line) override { Demand(!line.Reason.empty(), "a refusal has a reason"); }
    void OnPassedOver(const std::string&) override {}
    void OnMissingDates(const std::string&) override {}
    void OnProgress(const std::string&, double fraction) override {
        Demand(fraction >= 0 && fraction <= 1, "progress goes from 0 to 1");
    }
};

inline void ReadPublication(const std::filesystem::path& file) {
    TDemandingSink sink;
    try {
        TPublicationReader(WorkFolder(), sink).Read(file);
    } catch (const EInvalidPublication&) {
        // refused with a reason
    }
}

/// Writes an archive of the work folder.
class TArchiveWriter {
  public:
    explicit TArchiveWriter(const char* name)
        : file_(WorkFolder() / name), archive_(zip_open(file_.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr)) {
        Demand(archive_ != nullptr, "an archive can be written");
    }
    /// The content has to live until Close; a name that stands already is passed over.
    void Add(const std::string& name, std::string_view content) {
        zip_source_t* source = zip_source_buffer(archive_, content.data(), content.size(), 0);
        const zip_int64_t index = zip_file_add(archive_, name.c_str(), source, ZIP_FL_ENC_GUESS);
        if (index < 0)
            zip_source_free(source);
        else
            zip_set_file_compression(archive_, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0);
    }
    std::filesystem::path Close() {
        Demand(zip_close(archive_) == 0, "an archive can be written");
        return file_;
    }

  private:
    std::filesystem::path file_;
    zip_t* archive_;
};

} // namespace conferix
