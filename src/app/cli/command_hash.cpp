#include "app/cli/commands.h"
#include "report/console.h"
#include "report/message_json.h"
#include "validation/hash_rule.h"
#include "validator/all_rules.h"
#include "xml/lower_case.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <ostream>

namespace conferix {

namespace {

/// True of a file without a hash in its place that has one elsewhere, or one of them under a name in other
/// case: its text would be digested with the others.
bool IsHashMisplaced(const IArquivoTiss& file) {
    const TXmlNode* const root = file.Xml()->Element();
    for (const TXmlNode* node = root; node != nullptr; node = node->NextInWalk(root))
        if (node->IsTag() && ((LowerCase(node->LocalName()) == "epilogo" && node->LocalName() != "epilogo") ||
                              LowerCase(node->LocalName()) == "hash"))
            return true;
    return false;
}

int ShowHashes(const TCliContext& context, const IArquivoTiss& file) {
    if (file.HashNode() == nullptr && IsHashMisplaced(file)) {
        context.Error(
            "O hash não está em <hash> dentro de <epilogo>, e o certo não pode ser calculado antes de "
            "estar. Corrija a estrutura: conferix corrigir --estrutura.");
        return kExitInvalid;
    }
    const std::string written(file.Hash());
    const auto rule = AllRules().MakeValidation(RuleOfKind(file.TipoArquivo(), "hash"), nullptr);
    file.Accept(*rule);
    const auto& [iso, utf8] = dynamic_cast<const THashValidation&>(*rule).Hashes();
    // Of a hash that is missing the rule says nothing, since the schema does.
    const std::shared_ptr<const TXmlMessage> missing = TXmlMessage::CreateError(
        fmt::format("O arquivo não tem hash. Preencha <hash>, em <epilogo>, com \"{}\".", iso));
    const TXmlMessage& verdict =
        rule->ValidationMessages().empty() ? *missing : *rule->ValidationMessages().front();

    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        const bool shown = verdict.MsgType() != TMessageType::mtSuccess;
        out << JsonText({{"informado", written},
                         {"iso88591", iso},
                         {"utf8", utf8},
                         {"mensagem", MessageJson(verdict, 1, shown)}})
            << '\n';
    } else {
        const TPalette palette(context.Streams.OutIsTerminal);
        out << "Informado:  " << Visible(written) << "\nISO-8859-1: " << iso << "\nUTF-8:      " << utf8
            << '\n'
            << palette.Severity(verdict.MsgType(), SeverityLabel(verdict.MsgType())) << ": "
            << IndentLines(verdict.Msg(), 2) << '\n';
    }
    return verdict.MsgType() == TMessageType::mtError ? kExitInvalid : kExitValid;
}

} // namespace

int RunHash(const TCliContext& context, const std::string& arquivo) {
    return RunOnFile(
        context, arquivo,
        [&](const TTissFile& file) {
            const auto misreading = file.Misreading();
            int status = kExitValid;
            for (const auto& message : FindEncodingFaults(file.Text(), file.Encoding(), misreading)) {
                const std::string told = fmt::format("{}: {}", arquivo, message->Msg());
                if (message->IsFailure()) {
                    context.Error(told);
                    status = kExitInvalid;
                } else {
                    context.Warning(told);
                }
            }
            const auto loaded = file.Load();
            if (misreading)
                loaded->Xml()->SetMisreading(*misreading);
            return std::max(status, ShowHashes(context, *loaded));
        },
        TXmlUndecodable::Guessed);
}

} // namespace conferix
