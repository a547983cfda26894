#include "app/correction_preview.h"

#include "app/structure_repair.h"
#include "validation/identity.h"

#include <algorithm>
#include <iterator>

namespace conferix {

namespace {

std::string RuleOf(const TXmlMessage& message) {
    return message.Rule() != nullptr ? message.Rule()->Name : std::string();
}

void Append(std::vector<TCorrectionRecord>& to, std::vector<TCorrectionRecord> from) {
    std::ranges::move(from, std::back_inserter(to));
}

} // namespace

TCorrectionKey KeyOf(const TXmlMessage& message, const std::string& solver) {
    return {RuleOf(message), message.Line(), message.LinePos(), solver};
}

TCorrectionPreview PreviewCorrections(const TTissFile& file, const TSchemaFolder& schemas,
                                      const TDBConnectionFactory& terminology,
                                      const std::vector<std::string>& enabledValidations,
                                      const TCorrectionRequest& request) {
    TValidadorController controller(terminology);
    controller.SetSchemaFolder(schemas);
    controller.SetKeepSuccesses(false);
    controller.Load("prévia", file);
    TCorrectionPreview preview{file.Text(), file.Text(), {}, {}, {}, {}};
    if (request.Structure) {
        TCorrectionResult repaired = RepairStructure(controller, preview.After, enabledValidations,
                                                     {.WithLoss = false, .AmountsNext = true});
        preview.After = repaired.Xml;
        preview.Applied = std::move(repaired.Applied);
        preview.LeftOut = std::move(repaired.LeftOut);
    }
    TCorrectionResult corrected = CorrectAll(
        controller, preview.After, enabledValidations, [](const auto&) { return 0; },
        [&](const TXmlMessage& message, const ISolver& solver) {
            return (request.Rule.empty() || RuleOf(message) == request.Rule) &&
                   !request.Refused.contains(KeyOf(message, solver.Name()));
        });
    preview.After = corrected.Xml;
    Append(preview.Applied, std::move(corrected.Applied));
    Append(preview.LeftOut, std::move(corrected.LeftOut));
    preview.Encoding = controller.Encoding();
    const TTextLines before = SplitLines(*preview.Before);
    const TTextLines after = SplitLines(*preview.After);
    preview.Lines = SideBySide(before, after, FindLineChanges(before, after));
    return preview;
}

} // namespace conferix
