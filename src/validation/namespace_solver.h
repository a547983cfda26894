#pragma once

#include "validation/solver.h"

namespace conferix {

/// Gives every tag of the message the prefix that the file's version uses, "ds" to the tags of signatures,
/// and declares both. What a signature holds of other namespaces keeps its names. Solving twice does nothing
/// the second time.
class TNamespaceSolver : public TAbstractSolver {
  public:
    using TAbstractSolver::TAbstractSolver;
    std::string Name() const override { return "TNamespaceSolver"; }
    std::string Description() const override { return "Corrigir namespaces. "; }
    void Solve() override;
    /// True of the names of attributes that it declares the prefix of, since that can stand for one namespace
    /// only: xsi:schemaLocation, whatever its prefix, and whatever has the prefix xsi.
    static bool IsOfSchemaInstance(const TXmlName& attribute);

  private:
    bool solved_ = false;
};

} // namespace conferix
