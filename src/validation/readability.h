// Corrections of what keeps a file from being read or identified, so that nothing else of it is judged.
#pragma once

#include "validation/solver.h"
#include "xml/xml_document.h"
#include "xml/xml_message.h"

#include <memory>
#include <string>

namespace conferix {

/// A correction that has to come before any other.
class TReadabilitySolver : public TAbstractSolver {
  public:
    TReadabilitySolver() : TAbstractSolver(nullptr) {}
    /// Whether it changes the document, and not only what stands around it.
    virtual bool IsOfStructure() const = 0;
};

/// The same error with the correction that takes away what stands before the declaration, where that is what
/// the parser refused; else the error as it is.
std::shared_ptr<const TXmlMessage> WithDeclarationFirst(std::shared_ptr<const TXmlMessage> refusal,
                                                        const std::shared_ptr<const std::string>& text);

/// The same error with the correction of the names by which a document is identified (those of its root, of
/// the header and of what names transaction and version there), where some are in wrong case, and of version
/// and kind of transaction where blanks or wrong case keep them from being known.
std::shared_ptr<const TXmlMessage> WithIdentifyingNames(std::shared_ptr<const TXmlMessage> refusal,
                                                        const std::shared_ptr<TXmlDocument>& document);

} // namespace conferix
