// One input in, one result out: what all share that validate files without showing them meanwhile.
#pragma once

#include "app/schema_folder.h"
#include "app/validator_events.h"
#include "data/db_connection_factory.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace conferix {

enum class TVerdict { Valid, Invalid, NotVerified };

/// What a validation says of its file.
TVerdict VerdictOf(const TValidateArgs& result);

/// What came of one input.
struct TFileResult {
    TValidateArgs Validation;                ///< with the name
    std::string Versao;                      ///< empty where none was found
    std::shared_ptr<const std::string> Text; ///< in UTF-8; null where there is none
    std::string Failure;                     ///< why it could not be validated; empty for one that was
    /// Judges Text by its schema alone, each time on a tree of its own, which corrections may change. As long
    /// as the validator lives; null where none made the result, or there is no text.
    std::function<TValidateArgs()> ValidateSchema = {};

    TVerdict Verdict() const { return VerdictOf(Validation); }
    /// What kept a file from being verified, whether or not it could be read; empty for a verified one.
    std::string Obstacle() const;
    /// What to do about it, where the obstacle does not say so itself.
    std::string Advice() const;
};

/// The result of an input that could not be validated, so that it is missing in no report.
TFileResult UnreadableFile(const std::string& name, const std::string& reason);

/// Validates inputs one after the other, each with a controller of its own. For one thread; any number may
/// be used at the same time.
class TFileValidator {
  public:
    /// `enabledValidations`: names of the rules that are switched on.
    TFileValidator(TSchemaFolder schemas, TDBConnectionFactory terminology,
                   std::vector<std::string> enabledValidations);

    /// Whether the results list what was found right, or only count it (at the start).
    void SetKeepSuccesses(bool keep) { keepSuccesses_ = keep; }

    // Both raise nothing: whatever happens, a result comes of it.
    TFileResult ValidateFile(const std::string& fileName) const;
    /// Validates the bytes that `read` gives; its failures are those of the input.
    TFileResult ValidateBytes(const std::string& name, const std::function<std::string()>& read) const;

  private:
    TSchemaFolder schemas_;
    TDBConnectionFactory terminology_;
    std::vector<std::string> enabled_;
    bool keepSuccesses_ = false;

    TFileResult Run(const std::string& name, const std::function<std::string()>* read) const;
};

} // namespace conferix
