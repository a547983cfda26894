// Corrections of what a schema finds wrong.
#pragma once

#include "validation/solver.h"
#include "xml/xml_document.h"
#include "xml/xml_node.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace conferix {

struct TSchemaFault;
class TSchemaSet;

/// A correction of a schema's finding. It is offered where nothing else can have been meant, but whether the
/// whole document becomes right by it only a validation tells. Solving twice does nothing the second time.
class TStructureSolver : public TAbstractSolver {
  public:
    /// What has to be done before what: an element is ordered by its right name, on its right level.
    enum class TStage : std::uint8_t { Names, Levels, Order, Values, Losses };
    static constexpr TStage kStages[] = {TStage::Names, TStage::Levels, TStage::Order, TStage::Values,
                                         TStage::Losses};

    TStructureSolver(std::shared_ptr<const IArquivoTiss> file, TXmlNode& node, TStage stage)
        : TAbstractSolver(std::move(file)), document_(node.Document().shared_from_this()), node_(node),
          stage_(stage) {}
    TStage Stage() const { return stage_; }
    /// True where something of the document is lost; the description says what.
    bool WithLoss() const { return stage_ == TStage::Losses; }
    /// The elements of which it changes the content or the name; what else becomes wrong by it, is in them.
    virtual std::vector<const TXmlNode*> Scope() const;
    void Solve() final;
    std::string SolvedXml() final;

  protected:
    TXmlNode& Node() const { return node_; }
    virtual void Mend() = 0;

  private:
    std::shared_ptr<TXmlDocument> document_;
    TXmlNode& node_;
    TStage stage_;
    bool solved_ = false;
};

/// Writes the value of an element as it should be written; means the same.
std::shared_ptr<TStructureSolver> MakeValueRepair(TXmlNode& node, std::string value);

/// The corrections of a fault, those without loss first; none where nothing is sure. `schema`: the set by
/// which it was found.
std::vector<std::shared_ptr<TStructureSolver>>
StructureSolversOf(const TSchemaFault& fault, const std::shared_ptr<const IArquivoTiss>& file,
                   const std::shared_ptr<const TSchemaSet>& schema);

} // namespace conferix
