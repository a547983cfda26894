#pragma once

#include "data/tuss_connection.h"
#include "validation/validation.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace conferix {

/// The findings of a rule that were counted and not kept.
struct TUnkeptFindings {
    IValidationIdentity Rule;
    TMessageCounts Counts;
    std::shared_ptr<TUnkeptGroups> Groups; ///< the same by cause
};

/// Builds the rules of all kinds of file and runs those of the loaded one. Lives for one run; its messages
/// and their corrections outlive it.
class TTissValidator {
  public:
    /// `schemaFile`: full path of the main XSD file. `arquivo` may be null where only the tree of rules is
    /// asked for, and `tuss` where no code is judged.
    TTissValidator(std::shared_ptr<const IArquivoTiss> arquivo, const std::filesystem::path& schemaFile,
                   const std::shared_ptr<ITussConnection>& tuss);

    /// Has the rules only count what they find right.
    void CountSuccesses();
    /// What was counted since, a rule each; rules that found nothing right are left out.
    std::vector<TCountedSuccesses> CountedSuccesses() const;

    /// All findings, in pre-order of the tree of rules. Lets pass what a rule raises (ESchemaNotFound,
    /// ESchemaInvalido, terminology errors).
    TValidationMessages Validate();
    /// All findings that corrections of structure mend, however many: those of the schema rule and, of a
    /// monitoring file, those of the rules about numbers of documents. Raises what the rules do.
    static TValidationMessages ValidateStructure(const IArquivoTiss& arquivo,
                                                 const std::filesystem::path& schemaFile);
    /// Limits the findings that Validate keeps of each rule.
    void LimitFindings(std::size_t keptOfRule);
    /// What Validate found beyond them: the rules and the numbers of their findings, in the order of the
    /// tree.
    std::vector<TUnkeptFindings> Unkept() const;

    /// The root of each kind of file; with a loaded file, only that of its kind has rules below it.
    const std::vector<std::shared_ptr<TValidation>>& Validations() const { return validations_; }
    /// Identities of the roots; with `recursive`, each followed by all its descendants in pre-order.
    std::vector<IValidationIdentity> Validations(bool recursive) const;

  private:
    std::shared_ptr<const IArquivoTiss> arquivo_;
    std::vector<std::shared_ptr<TValidation>> validations_;
};

} // namespace conferix
