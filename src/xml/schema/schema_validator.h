#pragma once

#include "xml/schema/schema_fault.h"
#include "xml/schema/schema_set.h"
#include "xml/xml_document.h"

#include <vector>

namespace conferix {

/// Judges documents by a schema set. Holds no state of a document, so that one validator may serve several
/// threads, each with documents of its own. The set must outlive it.
class TSchemaValidator {
  public:
    explicit TSchemaValidator(const TSchemaSet& set) : set_(set) {}

    /// Every fault of the document, in document order; none when it is valid. Content goes on to be judged
    /// after a fault; only the content of unknown elements is left out. The faults point into the document.
    std::vector<TSchemaFault> Validate(const TXmlDocument& document) const;

  private:
    const TSchemaSet& set_;
};

} // namespace conferix
