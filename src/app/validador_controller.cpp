#include "app/validador_controller.h"

#include "app/fixed_messages.h"
#include "data/tuss.h"
#include "model/arquivo_tiss_factory.h"
#include "model/tiss_exceptions.h"
#include "model/tiss_kinds.h"
#include "platform/format_settings.h"
#include "platform/platform.h"
#include "validation/schema_rule.h"
#include "validator/tiss_validator.h"
#include "xml/schema/schema_set.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>

namespace conferix {

namespace {

std::shared_ptr<const TXmlMessage> UserError(const std::exception& error) {
    return TXmlMessage::CreateError(error.what());
}

std::shared_ptr<const TXmlMessage> UnknownError(const std::string& detail) {
    return std::make_shared<TXmlMessage>(
        TMessageType::mtFatal,
        fmt::format("Ocorreu um erro não identificado. Por favor, informe o ocorrido pelo e-mail {}.\r\n"
                    "Detalhe do erro: {}",
                    kSupportAddress, detail));
}

/// Turns the failure being handled into a message: one that the user can act on is an error, any other is
/// fatal.
std::shared_ptr<const TXmlMessage> FailureMessage() {
    try {
        throw;
    } catch (const ETissException& error) {
        return UserError(error);
    } catch (const ELoteGuiasNotFound& error) {
        return UserError(error);
    } catch (const ESchemaNotFound& error) {
        return UserError(error);
    } catch (const ESchemaInvalido& error) {
        return UserError(error);
    } catch (const ETerminologyNotOpened& error) {
        return UserError(error);
    } catch (const std::exception& error) {
        return UnknownError(error.what());
    } catch (...) {
        return UnknownError("exceção de tipo desconhecido");
    }
}

/// The result of a validation during which something failed, from inside the handler of the failure.
TValidateArgs FailureResult() {
    TValidateArgs result;
    result.ValidXml = true;
    result.AllMessages.push_back(FailureMessage());
    try {
        throw;
    } catch (const ESchemaNotFound& missing) {
        result.MissingSchema = missing.File();
    } catch (...) { // NOLINT(bugprone-empty-catch): its message was made above
    }
    return result;
}

/// Does one step of a validation; answers the result to post where it fails.
template<class Step>
std::optional<TValidateArgs> Attempt(Step&& step) {
    try {
        step();
        return std::nullopt;
    } catch (...) {
        return FailureResult();
    }
}

/// Decides message by message what is shown; rules are looked up once.
class TMessageFilter {
  public:
    explicit TMessageFilter(const std::vector<std::string>& enabled)
        : enabled_(enabled.begin(), enabled.end()) {}

    bool Hidden(const TXmlMessage& message) { return Hidden(message.Rule()); }
    bool Hidden(const TValidationIdentity* rule) {
        if (rule == nullptr)
            return false;
        const auto [entry, isNew] = hidden_.try_emplace(rule, false);
        if (isNew)
            entry->second = !rule->Required && enabled_.count(rule->Name) == 0;
        return entry->second;
    }

  private:
    std::unordered_set<std::string> enabled_;
    std::unordered_map<const TValidationIdentity*, bool> hidden_;
};

} // namespace

std::vector<std::string_view> TFileStateFlags::Names() const {
    static constexpr std::array<std::string_view, 6> kNames = {"sfAberto",   "sfModificado", "sfValidando",
                                                               "sfValidado", "sfValido",     "sfInvalido"};
    std::vector<std::string_view> names;
    for (std::size_t i = 0; i < kNames.size(); ++i)
        if (Contains(static_cast<TFileStateFlag>(i)))
            names.push_back(kNames[i]);
    return names;
}

TValidTissFile::TValidTissFile()
    : TXmlMessage(TMessageType::mtSuccess, "Arquivo válido!\r\nNenhum erro foi encontrado no arquivo.") {}

THasIgnoredMessages::THasIgnoredMessages(const TXmlMessages& hidden, std::size_t counted)
    : TValidationMessage(
          TMessageOrigin{}, TMessageType::mtInformation,
          TFormatSettings::Regional().Count(static_cast<std::int64_t>(hidden.size() + counted)) +
              (hidden.size() + counted == 1 ? " mensagem foi ignorada." : " mensagens foram ignoradas.") +
              "\r\nAs mensagens de validações desativadas não estão sendo exibidas.") {}

// The name is not put in: users know this text as it is.
EFileNotFound::EFileNotFound() : std::runtime_error("O arquivo \"%s\" não existe.") {}

EAlreadyFileLoaded::EAlreadyFileLoaded()
    : std::runtime_error("Já existe um arquivo aberto. Feche-o antes para poder abrir outro.") {}

TValidadorController::TValidadorController(TDBConnectionFactory terminology)
    : terminology_(std::move(terminology)) {}

void TValidadorController::RequireFile(const char* reason) const {
    if (!flags_.Contains(TFileStateFlag::sfAberto))
        throw EFileNotLoaded(reason);
}

void TValidadorController::NotifyState() {
    events_.OnStateChange.Notify({{fileName_, flags_}});
}

void TValidadorController::LoadFromFile(const std::string& fileName) {
    if (fileName == fileName_)
        return;
    std::error_code ignored;
    if (!std::filesystem::exists(PathFromText(fileName), ignored))
        throw EFileNotFound();
    if (flags_.Contains(TFileStateFlag::sfAberto))
        throw EAlreadyFileLoaded();
    Load(fileName, TTissFile::Read(PathFromText(fileName)));
}

void TValidadorController::Load(const std::string& name, const TTissFile& file) {
    if (flags_.Contains(TFileStateFlag::sfAberto))
        throw EAlreadyFileLoaded();
    ++openings_;
    fileName_ = name;
    versaoTiss_.clear();
    flags_.Clear();
    flags_.Include(TFileStateFlag::sfAberto);
    encoding_ = file.Encoding();
    TFileOpenArgs args;
    args.FileName = fileName_;
    args.FileStateFlags = flags_;
    args.SharedContent = file.Text();
    events_.OnFileOpen.Notify(std::move(args));
    NotifyState();
}

void TValidadorController::Modify() {
    RequireFile("Não é possível alterar o Modified, pois não tem arquivo carregado.");
    if (Modified())
        return;
    flags_.Include(TFileStateFlag::sfModificado);
    NotifyState();
}

void TValidadorController::Save(const std::string& xml) {
    SaveAs(xml, fileName_);
}

void TValidadorController::SaveAs(const std::string& xml, const std::string& fileName) {
    RequireFile("Não é possível salvar o Xml, pois não tem arquivo carregado.");
    const auto text = std::make_shared<const std::string>(xml);
    TTissFile(text, encoding_).Write(PathFromText(fileName));
    fileName_ = fileName;
    flags_.Exclude(TFileStateFlag::sfModificado);
    TFileSaveArgs args;
    args.FileName = fileName_;
    args.FileStateFlags = flags_;
    args.SharedContent = text;
    events_.OnFileSave.Notify(std::move(args));
    NotifyState();
}

void TValidadorController::CloseFile() {
    RequireFile("Não é possível alterar o Xml, pois não tem arquivo carregado.");
    if (closing_)
        return;
    closing_ = true;
    const std::shared_ptr<void> asked(nullptr, [this](void*) { closing_ = false; });
    if (!events_.OnFileClose.Notify({{fileName_, flags_}})->CanClose)
        return;
    ++openings_;
    fileName_.clear();
    versaoTiss_.clear();
    flags_.Clear();
    NotifyState();
}

void TValidadorController::Validate(std::string xml, const std::vector<std::string>& enabledValidations) {
    Validate(std::make_shared<const std::string>(std::move(xml)), enabledValidations);
}

void TValidadorController::Validate(std::shared_ptr<const std::string> xml,
                                    const std::vector<std::string>& enabledValidations) {
    RequireFile("Para validar um XML, é necessário ter um arquivo carregado.");
    const unsigned opening = openings_;
    const unsigned validation = ++validations_;
    std::optional<TValidateArgs> failure = Attempt([&] {
        BeginValidation();
        if (openings_ == opening && validations_ == validation)
            Post(Run(xml), enabledValidations);
    });
    // Posting a failure may fail for the observer that failed before; that is not posted once more.
    const auto postFailure = [&] {
        if (failure && openings_ == opening && validations_ == validation)
            Attempt([&] { Post(std::move(*failure), enabledValidations); });
    };
    postFailure();
    flags_.Exclude(TFileStateFlag::sfValidando);
    const bool failedBefore = failure.has_value();
    failure = Attempt([this] { NotifyState(); });
    if (failure && !failedBefore) {
        postFailure();
        Attempt([this] { NotifyState(); });
    }
}

void TValidadorController::BeginValidation() {
    versaoTiss_.clear();
    flags_.Include(TFileStateFlag::sfValidando);
    flags_.Exclude(TFileStateFlag::sfValidado);
    flags_.Exclude(TFileStateFlag::sfValido);
    flags_.Exclude(TFileStateFlag::sfInvalido);
    NotifyState();
}

TValidateArgs TValidadorController::Run(const std::shared_ptr<const std::string>& xml) {
    TValidateArgs result;
    const TTissFile file(xml, encoding_);
    TXmlParseResult parsed = file.Parse();
    result.ValidXml = parsed.Messages.empty();
    if (!result.ValidXml) {
        result.AllMessages = std::move(parsed.Messages);
        return result;
    }
    const std::shared_ptr<IArquivoTiss> arquivo = TArquivoTissFactory().GetNewArquivoTiss(parsed.Document);
    result.ArquivoTiss = arquivo;
    versaoTiss_ = arquivo->Versao();
    const std::filesystem::path schema = schemas_.Locate(SchemaFileName(arquivo->TipoArquivo(), versaoTiss_));
    result.AllMessages = file.EncodingDoubts();
    TTissValidator validator(arquivo, schema, terminology_.CreateConnection());
    if (!keepSuccesses_)
        validator.CountSuccesses();
    const TValidationMessages messages = validator.Validate();
    result.CountedSuccesses = validator.CountedSuccesses();
    result.AllMessages.insert(result.AllMessages.end(), messages.begin(), messages.end());
    return result;
}

void TValidadorController::Post(TValidateArgs result, const std::vector<std::string>& enabledValidations) {
    TMessageFilter filter(enabledValidations);
    bool failed = false;
    std::set<std::string_view> toldOfRun;
    for (const auto& message : result.AllMessages) {
        if (message->Kind() == TFindingKind::Run && !filter.Hidden(*message) &&
            !toldOfRun.insert(message->Reason()).second)
            continue;
        if (filter.Hidden(*message)) {
            ++result.HiddenCount;
            result.HiddenMessages.push_back(message);
        } else if (message->MsgType() != TMessageType::mtSuccess) {
            failed = failed || message->IsFailure();
            result.ValidationMessages.push_back(message);
        }
    }
    for (const TCountedSuccesses& counted : result.CountedSuccesses)
        if (filter.Hidden(counted.Rule.get()))
            result.HiddenCount += counted.Count;
    flags_.Exclude(TFileStateFlag::sfValidando);
    flags_.Exclude(TFileStateFlag::sfValido); // of a result that a failure replaces
    flags_.Include(TFileStateFlag::sfValidado);
    if (failed) {
        flags_.Include(TFileStateFlag::sfInvalido);
    } else {
        flags_.Include(TFileStateFlag::sfValido);
        if (result.HiddenCount != 0)
            result.ValidationMessages.push_back(std::make_shared<THasIgnoredMessages>(
                result.HiddenMessages, result.HiddenCount - result.HiddenMessages.size()));
        result.ValidationMessages.push_back(std::make_shared<TValidTissFile>());
    }
    result.FileName = fileName_;
    result.FileStateFlags = flags_;
    events_.OnValidate.Notify(std::move(result));
}

} // namespace conferix
