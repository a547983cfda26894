#pragma once

#include "model/guias.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

struct TElementPaths;

using TPath = std::vector<std::string_view>;
/// The local names of an element and of those around it, from the root on.
TPath PathOf(const TXmlNode& node);

/// Finds out guides that are laid out as another version of the standard, or as another kind of guide, wants
/// them. For one document.
class TGuideLayouts {
  public:
    /// `schemaName`: name of the document's schema file. `version`: of the document.
    TGuideLayouts(std::string schemaName, std::string version)
        : schemaName_(std::move(schemaName)), version_(std::move(version)) {}

    /// What is said of a guide before its errors; empty where its layout is its own, or nobody's.
    std::string Sentence(const TGuiaTissBase& guide);

  private:
    std::string Find(const TGuiaTissBase& guide, const TElementPaths& paths) const;

    std::string schemaName_;
    std::string version_;
    std::map<std::string, std::string> known_; ///< sentences by the paths in a guide
};

} // namespace conferix
