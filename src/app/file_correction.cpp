#include "app/file_correction.h"

#include "app/correction_policy.h"
#include "app/structure_repair.h"
#include "validation/readability.h"
#include "validation/structure_solver.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace conferix {

namespace {

/// Lists the corrections of the structure that were not asked for: those with loss of a structure that was
/// repaired without, else those that only corrections of structure make.
void LeaveStructure(const TXmlMessages& messages, bool withLoss, TCorrectionResult& result) {
    // A structure that is of another version is left alone, with and without loss.
    if (std::ranges::any_of(result.LeftOut, [](const TCorrectionRecord& record) {
            return record.Message->Kind() == TFindingKind::Layout;
        }))
        return;
    for (const auto& message : messages)
        for (const auto& solver : message->Solvers())
            if (const auto* repair = dynamic_cast<const TStructureSolver*>(solver.get());
                repair != nullptr && repair->WithLoss() == withLoss) {
                result.LeftOut.push_back(RecordOf(message, *repair));
                result.LeftOut.back().Reason = withLoss ? kWithLoss : kOfStructure;
                break;
            }
}

struct TObstacle {
    std::shared_ptr<const TXmlMessage> Message;
    std::shared_ptr<ISolver> Solver;
};

/// What has to be corrected before a file can be judged, as the last validation says; null for nothing.
TObstacle ObstacleOf(const TValidateArgs& found, const TFileCorrections& what) {
    if (found.ArquivoTiss != nullptr)
        return {};
    for (const auto& message : found.ValidationMessages)
        for (const auto& solver : message->Solvers())
            if (const auto* first = dynamic_cast<const TReadabilitySolver*>(solver.get());
                first != nullptr && (what.Estrutura || !first->IsOfStructure()))
                return {message, solver};
    return {};
}

TCorrectionResult CorrectReadable(TValidadorController& controller,
                                  const std::shared_ptr<const std::string>& xml,
                                  const std::vector<std::string>& enabledValidations,
                                  const TFileCorrections& what, const TSolverChoice& choose) {
    TCorrectionResult result{xml, {}, {}};
    if (what.Estrutura)
        result = RepairStructure(controller, xml, enabledValidations,
                                 {.WithLoss = what.ComPerdas, .AmountsNext = what.Todas});
    if (what.Todas) {
        TCorrectionResult all = CorrectAll(controller, result.Xml, enabledValidations, choose);
        const auto append = [](auto& to, auto& from) {
            to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
        };
        append(result.Applied, all.Applied);
        append(result.LeftOut, all.LeftOut);
        result.Xml = std::move(all.Xml);
    }
    if (!what.ComPerdas)
        LeaveStructure(controller.Events().OnValidate.Current().ValidationMessages, what.Estrutura, result);
    return result;
}

} // namespace

TCorrectionResult CorrectFile(TValidadorController& controller, const std::shared_ptr<const std::string>& xml,
                              const std::vector<std::string>& enabledValidations,
                              const TFileCorrections& what, const TSolverChoice& choose) {
    if (!what.Estrutura && !what.Todas)
        return {xml, {}, {}};
    // Behind what keeps a file from being read there may be what keeps it from being identified.
    constexpr int kObstacles = 2;
    std::vector<TCorrectionRecord> first;
    TCorrectionResult result = CorrectReadable(controller, xml, enabledValidations, what, choose);
    for (int i = 0; i < kObstacles; ++i) {
        const TObstacle obstacle = ObstacleOf(controller.Events().OnValidate.Current(), what);
        if (obstacle.Solver == nullptr)
            break;
        first.push_back(RecordOf(obstacle.Message, *obstacle.Solver));
        controller.Modify();
        result =
            CorrectReadable(controller, std::make_shared<const std::string>(obstacle.Solver->SolvedXml()),
                            enabledValidations, what, choose);
    }
    result.Applied.insert(result.Applied.begin(), std::make_move_iterator(first.begin()),
                          std::make_move_iterator(first.end()));
    return result;
}

} // namespace conferix
