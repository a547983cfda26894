#include "forms/domain_terms.h"

#include "platform/platform.h"
#include "platform/share_folder.h"

#include <algorithm>

namespace conferix {

TDomainTerms::TDomainTerms(std::string_view text) {
    constexpr std::string_view kTable = "tabela ";
    std::string table;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.empty() || line.front() == '#')
            continue;
        if (line.starts_with(kTable)) {
            line.remove_prefix(kTable.size());
            table = line.substr(0, line.find(' '));
        } else if (const std::size_t blank = line.find(' '); blank != std::string_view::npos) {
            terms_[{table, std::string(line.substr(0, blank))}] = line.substr(blank + 1);
        }
    }
}

TDomainTerms TDomainTerms::Installed() {
    return TDomainTerms(ReadWholeFile(ShareFolder() / "dominios.txt"));
}

std::string_view TDomainTerms::Find(std::string_view table, std::string_view code) const {
    const auto found = terms_.find(std::pair(std::string(table), std::string(code)));
    return found != terms_.end() ? std::string_view(found->second) : std::string_view();
}

} // namespace conferix
