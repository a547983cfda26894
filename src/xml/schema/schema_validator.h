#pragma once

#include "xml/schema/schema_fault.h"
#include "xml/schema/schema_recovery.h"
#include "xml/schema/schema_set.h"
#include "xml/xml_document.h"

#include <vector>

namespace conferix {

/// Judges documents by a schema set. Holds no state of a document, so that one validator may serve several
/// threads, each with documents of its own. The set must outlive it.
class TSchemaValidator {
  public:
    /// `others`: what other versions know of names, null for nothing; must outlive the validator.
    explicit TSchemaValidator(const TSchemaSet& set, const ISchemaOtherVersions* others = nullptr)
        : set_(set), others_(others) {}

    /// Every fault of the document, in document order; none when it is valid. Content goes on to be judged
    /// after a fault, that of misnamed elements by what was meant; only the content of unknown elements is
    /// left out. The faults point into the document.
    std::vector<TSchemaFault> Validate(const TXmlDocument& document) const;
    /// The same, of which the first `limit` faults are kept.
    TSchemaVerdict Judge(const TXmlDocument& document, std::size_t limit) const;

  private:
    const TSchemaSet& set_;
    const ISchemaOtherVersions* others_;
};

} // namespace conferix
