#include "app/file_validation.h"

#include "app/missing_data.h"
#include "app/tiss_file.h"
#include "app/validador_controller.h"

#include <new>
#include <utility>

namespace conferix {

namespace {

/// The result of a file that could not be opened. `verified`: the failure is the file's.
TFileResult Unopened(const std::string& name, std::shared_ptr<const TXmlMessage> failure, bool verified) {
    TFileResult result;
    result.Validation.FileName = name;
    result.Validation.Verified = verified;
    result.Validation.AllMessages = {failure};
    result.Validation.Counts.Add(failure->MsgType());
    result.Validation.ValidationMessages = {std::move(failure)};
    return result;
}

} // namespace

TVerdict VerdictOf(const TValidateArgs& result) {
    if (!result.Verified)
        return TVerdict::NotVerified;
    return result.FileStateFlags.Contains(TFileStateFlag::sfValido) ? TVerdict::Valid : TVerdict::Invalid;
}

std::string TFileResult::Obstacle() const {
    if (!Failure.empty() || Validation.Verified || Validation.AllMessages.empty())
        return Failure;
    return Validation.AllMessages.back()->Reason(); // the failure that ended the run
}

std::string TFileResult::Advice() const {
    return Validation.MissingSchema.empty() ? std::string() : MissingSchemaText(Validation.MissingSchema);
}

TFileResult UnreadableFile(const std::string& name, const std::string& reason) {
    TFileResult result = Unopened(name, std::make_shared<TXmlMessage>(TMessageType::mtFatal, reason), false);
    result.Failure = reason;
    return result;
}

TFileValidator::TFileValidator(TSchemaFolder schemas, TDBConnectionFactory terminology,
                               std::vector<std::string> enabledValidations)
    : schemas_(std::move(schemas)), terminology_(std::move(terminology)),
      enabled_(std::move(enabledValidations)) {}

TFileResult TFileValidator::ValidateFile(const std::string& fileName) const {
    return Run(fileName, nullptr);
}

TFileResult TFileValidator::ValidateBytes(const std::string& name,
                                          const std::function<std::string()>& read) const {
    return Run(name, &read);
}

TFileResult TFileValidator::Run(const std::string& name, const std::function<std::string()>* read) const {
    try {
        TFileResult result;
        TValidadorController controller(terminology_);
        controller.SetSchemaFolder(schemas_);
        controller.SetKeepSuccesses(keepSuccesses_);
        controller.Events().OnFileOpen.Subscribe(
            [&](TFileOpenArgs& args) { result.Text = args.SharedContent; });
        controller.Events().OnValidate.Subscribe([&](TValidateArgs& validation) {
            result.Validation = validation;
            result.Versao = controller.VersaoTiss();
        });
        if (read == nullptr)
            controller.LoadFromFile(name);
        else
            controller.Load(name, TTissFile((*read)(), TXmlUndecodable::Guessed));
        controller.Validate(result.Text, enabled_);
        result.ValidateSchema = [this, text = result.Text] {
            TValidadorController judge(terminology_);
            judge.SetSchemaFolder(schemas_);
            return judge.ValidateStructure(text);
        };
        return result;
    } catch (const EFileNotFound&) {
        return UnreadableFile(name, "o arquivo não existe");
    } catch (const EFileNotRead& error) {
        return UnreadableFile(name, error.Reason());
    } catch (const std::bad_alloc&) {
        return UnreadableFile(name, kOutOfMemory);
    } catch (const EXmlEncoding& error) {
        return Unopened(name, error.Message(), true);
    } catch (const std::exception& error) {
        return UnreadableFile(name, error.what());
    }
}

} // namespace conferix
