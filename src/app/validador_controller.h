#pragma once

#include "app/schema_folder.h"
#include "app/tiss_file.h"
#include "app/validator_events.h"
#include "data/db_connection_factory.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {

/// Where users report failures of the program.
inline constexpr const char* kSupportAddress = "suporte@conferix.example";

class EFileNotFound : public std::runtime_error {
  public:
    EFileNotFound();
};

class EAlreadyFileLoaded : public std::runtime_error {
  public:
    EAlreadyFileLoaded();
};

class EFileNotLoaded : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One open TISS file: its name, state and version; opens, saves, closes and validates it, and tells its
/// observers of each. For one thread.
///
/// Observers may use the controller from inside its events; what they ask for is done at once, events
/// included, before the call returns:
/// - a validation inside another's events is the newer one. Of the older one nothing more is done or told but
///   the change of state that ends it; a run that had not begun does not begin;
/// - the same holds of a validation in whose events the file is closed or another opened;
/// - a file that is being closed is not closed twice: the inner call does nothing.
/// The controller has to outlive its events: who removes it in one keeps a reference.
class TValidadorController {
  public:
    /// `terminology`: asked for a connection by each validation.
    explicit TValidadorController(TDBConnectionFactory terminology);

    TValidatorEvents& Events() { return events_; }
    TFileStateFlags FileStateFlags() const { return flags_; }
    const std::string& FileName() const { return fileName_; }
    /// Version that the last validation detected; empty before.
    const std::string& VersaoTiss() const { return versaoTiss_; }
    bool Modified() const { return flags_.Contains(TFileStateFlag::sfModificado); }

    /// Folder in which the schema files are looked for, and in which alone.
    void SetSchemaTissPath(std::filesystem::path path) { schemas_ = TSchemaFolder(std::move(path)); }
    /// The same, backed by the schemas that come with the program.
    void SetSchemaFolder(TSchemaFolder folder) { schemas_ = std::move(folder); }

    /// Whether the results list what was found right (true at the start), or only count it.
    void SetKeepSuccesses(bool keep) { keepSuccesses_ = keep; }

    /// Opens a file. Raises EFileNotFound, EAlreadyFileLoaded, EFileNotRead, EXmlEncoding; a file that
    /// cannot be read leaves the controller closed.
    void LoadFromFile(const std::string& fileName);
    /// Opens what is in memory already, such as standard input, under a name. Raises EAlreadyFileLoaded.
    void Load(const std::string& name, const TTissFile& file);
    /// Closes the file unless an observer refuses. Raises EFileNotLoaded.
    void CloseFile();
    /// Marks the text as changed. Raises EFileNotLoaded.
    void Modify();
    /// Writes the text in the encoding of the file. Raises EFileNotLoaded, EFileNotWritten, EXmlEncoding.
    void Save(const std::string& xml);
    /// The same under another name, which the controller takes over.
    void SaveAs(const std::string& xml, const std::string& fileName);

    /// Validates a text and tells the result through OnValidate; a failure on the way becomes a message of
    /// the result. So does a failure of an observer, in place of what was found; the file then ends as
    /// invalid, and the state change that ends the validation is told all the same. Nothing of this is
    /// raised. `enabledValidations`: names of the rules that are switched on. Raises EFileNotLoaded.
    void Validate(std::shared_ptr<const std::string> xml, const std::vector<std::string>& enabledValidations);
    void Validate(std::string xml, const std::vector<std::string>& enabledValidations);

  private:
    void RequireFile(const char* reason) const;
    void NotifyState();
    void BeginValidation();
    TValidateArgs Run(const std::shared_ptr<const std::string>& xml);
    void Post(TValidateArgs result, const std::vector<std::string>& enabledValidations);

    std::string fileName_;
    std::string versaoTiss_;
    TFileStateFlags flags_;
    unsigned openings_ = 0;    ///< times that a file was opened or closed
    unsigned validations_ = 0; ///< validations begun
    bool closing_ = false;     ///< the observers of OnFileClose are being asked
    TValidatorEvents events_;
    TSchemaFolder schemas_;
    TDBConnectionFactory terminology_;
    TXmlEncoding encoding_;
    bool keepSuccesses_ = true;
};

using IValidadorController = TValidadorController;

} // namespace conferix
