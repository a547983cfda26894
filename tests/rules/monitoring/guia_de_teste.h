// A monitoring guide without faults for the tests to change, and a terminology that knows its codes.
#pragma once

#include "data/tuss_writer.h"
#include "rules/findings.h"
#include "support/case_file.h"
#include "support/support.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix::tests {

inline constexpr std::string_view kLoteMonitoramento = "tiss.monitoramento.loteguias";

/// Texts of a notation and what stands in their place; each has to be there once.
using TEdits = std::vector<std::pair<std::string, std::string>>;

/// Header and guide, in the notation of Xml(), of guia.txt after some edits.
inline std::pair<std::string, std::string> EditedGuia(const TEdits& edits) {
    static const std::string original = [] {
        std::string text =
            ReadTestFile(std::filesystem::path(CONFERIX_FONTE) / "tests/rules/monitoring/guia.txt");
        std::ranges::replace(text, '\n', ' ');
        return text;
    }();
    std::string text = original;
    for (const auto& [what, with] : edits) {
        const std::size_t at = text.find(what);
        EXPECT_NE(at, std::string::npos) << what;
        EXPECT_EQ(text.find(what, at + 1), std::string::npos) << what;
        if (at != std::string::npos)
            text.replace(at, what.size(), with);
    }
    const std::size_t guia = text.find("guiaMonitoramento(");
    return {Xml(text.substr(0, guia)), Xml(text.substr(guia))};
}

/// A file with the edited guide.
inline std::shared_ptr<IMonitoramento> ArquivoEditado(const TEdits& edits) {
    const auto [cabecalho, guia] = EditedGuia(edits);
    return LoadedMonitoring(cabecalho, guia);
}

inline const std::shared_ptr<TTussConnection>& Terminologia() {
    static const auto connection = TTussConnection::InMemory([](TTussWriter& writer) {
        using namespace std::chrono;
        const TDate old = 2010y / 1 / 1;
        const TDate day = 2022y / 12 / 10; // of the guide
        for (const char* table : {"00", "18", "19", "20", "22", "63", "90"})
            writer.Insert("87", {table, old, {}});
        writer.Insert("87", {"98", 2022y / 12 / 11, {}});
        writer.Insert("63", {"009", day, {}});
        writer.Insert("63", {"031", old, {}});
        writer.Insert(TTussInativado{"63", "031", 2022y / 12 / 9});
        writer.Insert(TTussInativado{"63", "032", day});
        writer.Insert(TTuss64{"22", "10101012", false, "", old, {}, {}});
        writer.Insert(TTuss64{"22", "40324770", true, "031", old, {}, {}});
        writer.Insert(TTuss64{"22", "20101015", false, "", 2022y / 12 / 11, {}, {}});
        writer.Insert(TTuss64{"20", "31005497", false, "", day, {}, {}});
        writer.Insert(TTuss64{"19", "10101012", true, "040", old, 2022y / 12 / 9, {}});
        writer.Insert(TTuss64{"18", "60000783", false, "", old, {}, {}});
        for (const char* city : {"3550308", "355030", "3106200", "310620"})
            writer.Insert(TCidade{city});
    });
    return connection;
}

/// What the rules of a lot find, success left out.
inline std::vector<std::string> Findings(const IMonitoramento& arquivo,
                                         const std::shared_ptr<TTussConnection>& tuss = Terminologia(),
                                         std::string_view versao = {}) {
    std::vector<std::string> lines;
    for (const auto& message : Mensagens(kLoteMonitoramento, arquivo, tuss, versao))
        if (message->MsgType() != TMessageType::mtSuccess)
            lines.push_back(Descrito(*message));
    return lines;
}

} // namespace conferix::tests
