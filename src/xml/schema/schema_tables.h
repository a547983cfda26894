#pragma once

#include "xml/schema/schema_set.h"

#include <filesystem>
#include <memory>
#include <string>

namespace conferix {

/// Compiled tables in a file beside the schema files that they were made of: reading them takes a twentieth
/// of compiling. They hold for the code that wrote them and for the very bytes of those schema files;
/// whatever else is found there counts for nothing.
class TSchemaTables {
  public:
    /// Where the tables of a main schema file are.
    static std::filesystem::path FileOf(const std::filesystem::path& mainFile);
    /// The content of that file, for a set that was compiled of files in `folder`. Raises EFileNotRead.
    static std::string Write(const TSchemaSet& set, const std::filesystem::path& folder);
    /// The set whose tables are beside its main file; null where there are none that hold.
    static std::shared_ptr<const TSchemaSet> Read(const std::filesystem::path& mainFile);

  private:
    class TWriter;
    class TReader;
    template<class TArchive, class TSet>
    static void Exchange(TArchive& archive, TSet& set);
};

} // namespace conferix
