// What corrections would do to a text, before they do it.
#pragma once

#include "app/execute_solver.h"
#include "app/text_changes.h"
#include "app/tiss_file.h"

#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace conferix {

/// What tells a correction from the others of a text: rule, line, column and class name.
using TCorrectionKey = std::tuple<std::string, std::int32_t, std::int32_t, std::string>;
TCorrectionKey KeyOf(const TXmlMessage& message, const std::string& solver);

/// Which corrections a user wants.
struct TCorrectionRequest {
    std::string Rule;                 ///< name of the one rule of which to correct; empty: all
    bool Structure = false;           ///< those of structure too, where nothing else can be meant
    std::set<TCorrectionKey> Refused; ///< left as they are
};

/// The text as it would be, and what leads there.
struct TCorrectionPreview {
    std::shared_ptr<const std::string> Before;
    std::shared_ptr<const std::string> After;
    TXmlEncoding Encoding; ///< how the corrected file is to be held
    std::vector<TCorrectionRecord> Applied;
    std::vector<TCorrectionRecord> LeftOut;
    std::vector<TLinePair> Lines; ///< the difference, side by side; parts of the two texts
};

/// Corrects a copy of a file; of several corrections of one finding the first. For any thread. Raises nothing
/// of the file's; what cannot be corrected stays as it is.
TCorrectionPreview PreviewCorrections(const TTissFile& file, const TSchemaFolder& schemas,
                                      const TDBConnectionFactory& terminology,
                                      const std::vector<std::string>& enabledValidations,
                                      const TCorrectionRequest& request);

} // namespace conferix
