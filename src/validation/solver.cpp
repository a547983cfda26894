#include "validation/solver.h"

#include "xml/xml_writer.h"

namespace conferix {

std::string TAbstractSolver::SolvedXml() {
    Solve();
    return WriteXml(*file_->Xml());
}

TUpdateNodeValueSolver::TUpdateNodeValueSolver(TXmlNode& node, std::string newValue,
                                               std::optional<TComputation> computation)
    : TAbstractSolver(nullptr), document_(node.Document().shared_from_this()), node_(node),
      newValue_(std::move(newValue)), computation_(std::move(computation)) {}

std::string TUpdateNodeValueSolver::Description() const {
    return "Alterar o valor para " + newValue_;
}

void TUpdateNodeValueSolver::Solve() {
    if (node_.IsTag() && node_.HasValue())
        node_.SetValue(newValue_);
}

std::string TUpdateNodeValueSolver::SolvedXml() {
    Solve();
    return WriteXml(*document_);
}

} // namespace conferix
