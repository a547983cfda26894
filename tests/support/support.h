#pragma once

#include "model/arquivo_tiss.h"
#include "model/arquivo_tiss_factory.h"
#include "support/parsed.h"
#include "support/published_schemas.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace conferix {

/// Parses and loads a text that is expected to be a TISS file.
inline std::shared_ptr<IArquivoTiss> LoadTiss(const std::string& xml) {
    return TArquivoTissFactory().GetNewArquivoTiss(Parsed(xml));
}

inline void ReplaceAll(std::string& text, std::string_view what, std::string_view with) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

} // namespace conferix
