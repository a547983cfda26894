// What is said of the encoding of a file, before anything else of it.
#pragma once

#include "validation/solver.h"
#include "xml/xml_encoding.h"
#include "xml/xml_message.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace conferix {

/// What is wrong or doubtful in how the bytes of a file hold its text: an error for bytes that are no text in
/// the declared encoding, warnings for a file that others read differently. Each carries the corrections that
/// mend it. A file whose letters were all misread (TFindingKind::Misread) tells too whether its stored hash
/// fits the text that was meant. `misreading`: of the text, as FindMisreading tells.
TXmlMessages FindEncodingFaults(const std::shared_ptr<const std::string>& text, const TXmlEncoding& encoding,
                                const std::optional<TXmlMisreading>& misreading);

/// Writes the file in another encoding, or declares another one: the text that was meant and how it is to be
/// held.
class TEncodingSolver : public TAbstractSolver {
  public:
    /// `text`: makes the text.
    TEncodingSolver(std::string description, std::function<std::string()> text, TXmlEncoding encoding)
        : TAbstractSolver(nullptr), description_(std::move(description)), text_(std::move(text)),
          encoding_(std::move(encoding)) {}
    std::string Name() const override { return "TEncodingSolver"; }
    std::string Description() const override { return description_; }
    /// Nothing: an encoding is no matter of the tree.
    void Solve() override {}
    std::string SolvedXml() override { return text_(); }
    const TXmlEncoding* Encoding() const override { return &encoding_; }

  private:
    std::string description_;
    std::function<std::string()> text_;
    TXmlEncoding encoding_;
};

} // namespace conferix
