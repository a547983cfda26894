#pragma once

#include "model/arquivo_tiss.h"
#include "xml/xml_encoding.h"
#include "xml/xml_message.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// An automatic correction that a message offers.
class ISolver {
  public:
    virtual ~ISolver() = default;
    /// Identifier in braced GUID form, unique in this process.
    virtual std::string Id() const = 0;
    /// The solver's class name.
    virtual std::string Name() const = 0;
    /// The sentence shown to the user.
    virtual std::string Description() const = 0;
    /// The one element whose value it changes; null for a correction of the document as a whole.
    virtual const TXmlNode* Target() const { return nullptr; }
    /// The text that it gives Target(), where that is known without solving and nothing else changes.
    virtual std::optional<std::string> Replacement() const { return std::nullopt; }
    /// How the file is to be held after a correction of its encoding; null for any other correction.
    virtual const TXmlEncoding* Encoding() const { return nullptr; }
    /// Changes the document tree.
    virtual void Solve() = 0;
    /// Solves, then answers the whole tree as text.
    virtual std::string SolvedXml() = 0;
};

/// Base of the corrections; keeps the loaded file, and with it the tree, alive.
class TAbstractSolver : public ISolver {
  public:
    /// `file` may be null for a solver that works on one node.
    explicit TAbstractSolver(std::shared_ptr<const IArquivoTiss> file) : file_(std::move(file)) {}
    std::string Id() const override { return id_.Text(); }
    std::string SolvedXml() override;

  protected:
    const std::shared_ptr<const IArquivoTiss>& File() const { return file_; }

  private:
    TSequentialId id_;
    std::shared_ptr<const IArquivoTiss> file_;
};

/// What a value was computed from.
struct TComputation {
    const TXmlNode* Scope =
        nullptr; ///< the element of which the structure decides what counts: an item or guide
    std::vector<const TXmlNode*> Operands; ///< elements with a factor or summand, readable or not
    bool Amount = true;                    ///< false: a text that the operands decide
};

/// Gives one element another text. An element without a text value is left as it is.
class TUpdateNodeValueSolver : public TAbstractSolver {
  public:
    /// `computation`: what the value was made of; nothing for a text that stands by itself.
    TUpdateNodeValueSolver(TXmlNode& node, std::string newValue,
                           std::optional<TComputation> computation = std::nullopt);
    const std::string& NewValue() const { return newValue_; }
    const std::optional<TComputation>& Computation() const { return computation_; }
    const TXmlNode* Target() const override { return &node_; }
    std::optional<std::string> Replacement() const override { return newValue_; }
    std::string Name() const override { return "TUpdateNodeValueSolver"; }
    std::string Description() const override;
    void Solve() override;
    std::string SolvedXml() override;

  private:
    std::shared_ptr<TXmlDocument> document_;
    TXmlNode& node_;
    std::string newValue_;
    std::optional<TComputation> computation_;
};

} // namespace conferix
