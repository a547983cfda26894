#pragma once

#include "model/arquivo_tiss.h"
#include "xml/xml_message.h"

#include <memory>
#include <string>

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

/// Gives one element another text. An element without a text value is left as it is.
class TUpdateNodeValueSolver : public TAbstractSolver {
  public:
    TUpdateNodeValueSolver(TXmlNode& node, std::string newValue);
    std::string Name() const override { return "TUpdateNodeValueSolver"; }
    std::string Description() const override;
    void Solve() override;
    std::string SolvedXml() override;

  private:
    std::shared_ptr<TXmlDocument> document_;
    TXmlNode& node_;
    std::string newValue_;
};

} // namespace conferix
