#pragma once

#include "app/schema_folder.h"
#include "app/tiss_file.h"
#include "app/validator_events.h"
#include "data/db_connection_factory.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {

/// Where users report failures of the program.
inline constexpr const char* kSupportAddress = "suporte@conferix.example";

/// Said where a file is too large for the memory there is.
inline constexpr const char* kOutOfMemory = "Não há memória suficiente para este arquivo. Feche outros "
                                            "programas ou divida o arquivo em partes menores.";

/// How many findings the lists of a validation hold: of each rule, and shown or hidden ones of the file. What
/// goes beyond is counted, and one message tells how much it is; of a cause that is in no list, the first
/// finding is.
struct TFindingLimits {
    std::size_t OfRule = kFindingsKeptOfRule;
    std::size_t OfFile = 50'000;

    static TFindingLimits None() { return {kAllFindings, kAllFindings}; }
};

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

/// A validation that has begun, and the work that it takes: it needs nothing of the controller, so that it
/// may happen in another thread while the controller waits.
class TValidationRun {
  public:
    /// Reads, identifies and judges the text; a failure becomes a message of the result. To be called once.
    void Run();

  private:
    friend class TValidadorController;
    explicit TValidationRun(TDBConnectionFactory terminology) : terminology_(std::move(terminology)) {}
    void Judge();

    std::shared_ptr<const std::string> xml_;
    TXmlEncoding encoding_;
    TSchemaFolder schemas_;
    TDBConnectionFactory terminology_;
    TFindingLimits limits_;
    bool keepSuccesses_ = true;
    unsigned opening_ = 0;
    unsigned validation_ = 0;
    bool failedBefore_ = false; ///< an observer failed when the validation began: nothing is to be run
    std::string versao_;
    TValidateArgs result_;
};

/// A file that is about to be written, and the writing: like a validation it needs nothing of the controller.
class TSaveRun {
  public:
    /// Writes the file. Raises EFileNotWritten, EFileChanged, EXmlEncoding. To be called once.
    void Run();

  private:
    friend class TValidadorController;
    TSaveRun() = default;

    std::shared_ptr<const std::string> xml_;
    std::string fileName_;
    TXmlEncoding encoding_;
    TFileOrigin origin_;
    unsigned opening_ = 0;
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

    const TFindingLimits& FindingLimits() const { return limits_; }
    void SetFindingLimits(const TFindingLimits& limits) { limits_ = limits; }

    /// Whether the results list what was found right (true at the start), or only count it.
    void SetKeepSuccesses(bool keep) { keepSuccesses_ = keep; }

    /// Opens a file; one whose bytes are no text in the declared encoding is opened where the encoding that
    /// was meant is beyond doubt, and its validation tells so. Raises EFileNotFound, EAlreadyFileLoaded,
    /// EFileNotRead, EXmlEncoding; a file that cannot be read leaves the controller closed.
    void LoadFromFile(const std::string& fileName);
    /// Opens what is in memory already, such as standard input, under a name. Raises EAlreadyFileLoaded.
    void Load(const std::string& name, const TTissFile& file);
    /// Closes the file unless an observer refuses. Raises EFileNotLoaded.
    void CloseFile();
    /// Marks the text as changed. Raises EFileNotLoaded.
    void Modify();
    /// Takes that back: the text is again the one that was read or saved last. Raises EFileNotLoaded.
    void Unmodify();
    /// Writes the text in the encoding of the file. Raises EFileNotLoaded, EFileNotWritten, EXmlEncoding;
    /// EFileChanged where the file is no longer what was read or saved last.
    void Save(const std::string& xml);
    /// The same under another name, which the controller takes over.
    void SaveAs(const std::string& xml, const std::string& fileName);
    /// The same in three steps: Run of what this one answers does the writing, in any thread; EndSave takes
    /// the file over and tells so. Raises EFileNotLoaded.
    std::unique_ptr<TSaveRun> BeginSave(std::shared_ptr<const std::string> xml,
                                        const std::string& fileName) const;
    /// Nothing happens where the file was closed meanwhile.
    void EndSave(std::unique_ptr<TSaveRun> run);

    /// True where the file is no longer what was read or saved last: Save refuses to replace it then.
    bool ChangedOnDisk() const;
    /// Takes the file as it is now for the one that Save may replace: the user knows of the change.
    void AcceptChangeOnDisk();

    /// How the file is held, and will be saved.
    const TXmlEncoding& Encoding() const { return encoding_; }
    /// Holds the file in another way from now on: after a correction of its encoding.
    void SetEncoding(TXmlEncoding encoding) { encoding_ = std::move(encoding); }

    /// Validates a text and tells the result through OnValidate; a failure on the way becomes a message of
    /// the result. So does a failure of an observer, in place of what was found; the file then ends as
    /// invalid, and the state change that ends the validation is told all the same. Nothing of this is
    /// raised. `enabledValidations`: names of the rules that are switched on. Raises EFileNotLoaded.
    void Validate(std::shared_ptr<const std::string> xml, const std::vector<std::string>& enabledValidations);
    void Validate(std::string xml, const std::vector<std::string>& enabledValidations);
    /// The same in three steps: this one marks the file as being validated and tells so; Run of what it
    /// answers does the work, in any thread; EndValidation tells the result. Raises EFileNotLoaded.
    std::unique_ptr<TValidationRun> BeginValidation(std::shared_ptr<const std::string> xml);
    /// Nothing happens after a newer validation, a stop, or when the file was closed meanwhile.
    void EndValidation(std::unique_ptr<TValidationRun> run,
                       const std::vector<std::string>& enabledValidations);
    /// Gives up the validation that is running: the file ends as not validated, and no result is told.
    void StopValidation();
    /// Judges a text by the rules whose findings corrections of structure mend (its schema, numbers of
    /// documents), or by the parser where that refuses it. Nobody is told, and no
    /// state changes; a failure on the way becomes a message of the result, which then has no loaded file.
    TValidateArgs ValidateStructure(const std::shared_ptr<const std::string>& xml) const;
    /// Judges a text by all rules, likewise without telling anybody: its errors, those of switched-off rules
    /// left out.
    TValidateArgs FailuresOf(const std::shared_ptr<const std::string>& xml,
                             const std::vector<std::string>& enabledValidations) const;

  private:
    void RequireFile(const char* reason) const;
    void NotifyState();
    std::unique_ptr<TValidationRun> NewRun(std::shared_ptr<const std::string> xml);
    bool IsCurrent(const TValidationRun& run) const {
        return openings_ == run.opening_ && validations_ == run.validation_;
    }
    /// Tells that a run begins; what fails there is its result.
    void TellBegin(TValidationRun& run);
    /// Posts what a run found, where it is the current one, and tells the end of the validation.
    void Finish(TValidationRun& run, const std::vector<std::string>& enabledValidations);
    void Post(TValidateArgs result, const std::vector<std::string>& enabledValidations);
    /// Splits what was found into what is shown and what is hidden.
    void List(TValidateArgs& result, const std::vector<std::string>& enabledValidations) const;

    std::string fileName_;
    std::string versaoTiss_;
    TFileStateFlags flags_;
    unsigned openings_ = 0;    ///< times that a file was opened or closed
    unsigned validations_ = 0; ///< validations begun
    bool closing_ = false;     ///< the observers of OnFileClose are being asked
    TValidatorEvents events_;
    TSchemaFolder schemas_;
    TDBConnectionFactory terminology_;
    TFindingLimits limits_;
    TXmlEncoding encoding_;
    TFileOrigin origin_; ///< the file as it was when it was read or saved
    bool keepSuccesses_ = true;
};

using IValidadorController = TValidadorController;

} // namespace conferix
