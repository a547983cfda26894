// Takes a tree from one version of the standard to another.
#pragma once

#include "convert/conversion_run.h"
#include "convert/element_change.h"
#include "xml/xml_node.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace conferix {

class TSchemaSet;
struct TSchemaSimpleType;

/// A value for an element that the target version demands.
struct TFilledValue {
    std::string Value;
    std::string Text; ///< of the note that tells of it
};

/// Answers the value of a demanded child where it follows from the document; nothing where only a person
/// knows it. Called before anything of the parent is removed.
using TFillValue = std::function<std::optional<TFilledValue>(TXmlNode& parent, std::string_view name)>;

/// Takes an element out of its tree. A parent that is left without elements keeps no layout as its value.
void RemoveElement(TXmlNode& element);

/// Applies the difference of two versions to trees: removes, renames and fills in elements, writes codes
/// anew, and notes all of it.
class TTreeConverter {
  public:
    /// `change` must outlive the converter.
    TTreeConverter(const TVersionChange& change, TConversionRun& run, TFillValue fill);

    /// Converts the tree below the document element.
    void Convert(TXmlNode& root);

  private:
    void Apply(TXmlNode& element, const TElementChange& change);
    void Demand(TXmlNode& parent, const TElementChange& change);
    void Remove(TXmlNode& element);
    void CheckValue(TXmlNode& element, const TValueChange& change);
    const TSchemaSimpleType& TypeOf(const std::string& name, const std::string& versao,
                                    std::shared_ptr<const TSchemaSet>& schemas) const;

    const TVersionChange& change_;
    TConversionRun& run_;
    TFillValue fill_;
    std::shared_ptr<const TSchemaSet> before_; ///< compiled when the first value asks for them
    std::shared_ptr<const TSchemaSet> after_;
};

} // namespace conferix
