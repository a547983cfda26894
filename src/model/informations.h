// The summary of a file that the user sees beside it.
#pragma once

#include "model/arquivo_tiss_visitor.h"
#include "platform/format_settings.h"

#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// One group of the summary: its title and its rows of label and value.
struct TInformationGroup {
    std::string Titulo;
    std::vector<std::pair<std::string, std::string>> Linhas;
};

using TInformations = std::vector<TInformationGroup>;

/// The summary of a file, numbers written with the given separators. Never raises.
TInformations InformationsOf(const IArquivoTiss& arquivo, const TFormatSettings& formats);

} // namespace conferix
