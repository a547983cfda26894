#include "app/file_correction.h"

#include "app/correction_policy.h"
#include "app/structure_repair.h"
#include "validation/structure_solver.h"

#include <iterator>
#include <utility>

namespace conferix {

namespace {

/// Lists the corrections of the structure that only corrections of structure make.
void LeaveStructure(const TXmlMessages& messages, TCorrectionResult& result) {
    for (const auto& message : messages)
        for (const auto& solver : message->Solvers())
            if (const auto* repair = dynamic_cast<const TStructureSolver*>(solver.get());
                repair != nullptr && !repair->WithLoss()) {
                result.LeftOut.push_back(RecordOf(message, *repair));
                result.LeftOut.back().Reason = kOfStructure;
                break;
            }
}

} // namespace

TXmlRecoding HoldInEncoding(TValidadorController& controller, const TTissFile& file,
                            const std::string& encoding) {
    const auto misreading = FindMisreading(*file.Text(), file.Encoding());
    TXmlRecoding recoding =
        RecodeXml(misreading ? MeantText(*file.Text(), misreading->Kind) : *file.Text(), encoding);
    controller.SetEncoding(EncodingToWrite(recoding.Text, {}));
    return recoding;
}

TCorrectionResult CorrectFile(TValidadorController& controller, const std::shared_ptr<const std::string>& xml,
                              const std::vector<std::string>& enabledValidations,
                              const TFileCorrections& what, const TSolverChoice& choose) {
    TCorrectionResult result{xml, {}, {}};
    if (what.Estrutura)
        result = RepairStructure(controller, xml, enabledValidations, what.ComPerdas);
    if (!what.Todas)
        return result;
    TCorrectionResult all = CorrectAll(controller, result.Xml, enabledValidations, choose);
    const auto append = [](auto& to, auto& from) {
        to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
    };
    append(result.Applied, all.Applied);
    append(result.LeftOut, all.LeftOut);
    result.Xml = std::move(all.Xml);
    if (!what.Estrutura)
        LeaveStructure(controller.Events().OnValidate.Current().ValidationMessages, result);
    return result;
}

} // namespace conferix
