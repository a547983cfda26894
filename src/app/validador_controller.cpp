#include "app/validador_controller.h"

#include "app/fixed_messages.h"
#include "data/tuss.h"
#include "model/arquivo_tiss_factory.h"
#include "model/tiss_exceptions.h"
#include "model/tiss_kinds.h"
#include "model/web_services.h"
#include "platform/format_settings.h"
#include "platform/platform.h"
#include "platform/portable_name.h"
#include "validation/readability.h"
#include "validation/schema_rule.h"
#include "validator/tiss_validator.h"
#include "xml/schema/schema_set.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <new>
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

/// The result of a validation during which something failed, from inside the handler of the failure. What the
/// user can act on is an error, any other failure fatal.
TValidateArgs FailureResult() {
    TValidateArgs result;
    result.ValidXml = true;
    result.Verified = false;
    std::shared_ptr<const TXmlMessage> message;
    try {
        throw;
    } catch (const ETissException& error) {
        message = UserError(error);
        result.Verified = true;
    } catch (const ELoteGuiasNotFound& error) {
        message = UserError(error);
        result.Verified = true;
    } catch (const ESchemaNotFound& error) {
        message = UserError(error);
        result.MissingSchema = error.File();
    } catch (const ESchemaInvalido& error) {
        message = UserError(error);
    } catch (const EFile& error) { // the terminology among them
        message = UserError(error);
    } catch (const std::bad_alloc&) {
        message = std::make_shared<TXmlMessage>(TMessageType::mtFatal, kOutOfMemory);
        result.OutOfMemory = true;
    } catch (const std::exception& error) {
        message = UnknownError(error.what());
    } catch (...) {
        message = UnknownError("exceção de tipo desconhecido");
    }
    result.AllMessages.push_back(std::move(message));
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

/// Counts one more message of its rule.
void CountUnlisted(std::vector<TUnkeptFindings>& unlisted,
                   const std::shared_ptr<const TXmlMessage>& message) {
    auto found = std::find_if(unlisted.begin(), unlisted.end(),
                              [&](const TUnkeptFindings& of) { return of.Rule.get() == message->Rule(); });
    if (found == unlisted.end())
        found = unlisted.insert(unlisted.end(), {message->SharedRule(), {}, nullptr});
    if (found->Groups == nullptr)
        found->Groups = std::make_shared<TUnkeptGroups>();
    found->Counts.Add(message->MsgType());
    found->Groups->Add(message);
}

/// Of each cause that no listed message has, the first one goes on the list all the same.
void ListEachCause(TXmlMessages& messages, std::vector<TUnkeptFindings>& unlisted) {
    if (unlisted.empty())
        return;
    std::unordered_set<TFindingKey, TFindingKeyHash> listed;
    for (const auto& message : messages)
        listed.insert(TFindingKey::Of(*message));
    for (TUnkeptFindings& of : unlisted)
        for (TUnkeptGroup& group : of.Groups->Groups()) {
            if (!listed.insert(TFindingKey::Of(*group.First)).second)
                continue;
            messages.push_back(group.First);
            of.Counts.Remove(group.First->MsgType());
            --group.Count;
            group.Lines -= group.First->Line() > 0 ? 1 : 0;
        }
    std::erase_if(unlisted, [](const TUnkeptFindings& of) { return of.Counts.Findings() == 0; });
}

std::string CountText(std::size_t count) {
    return TFormatSettings::Regional().Count(static_cast<std::int64_t>(count));
}

std::string UnlistedText(std::vector<TUnkeptFindings> unlisted, const TFindingLimits& limits) {
    constexpr std::size_t kRulesNamed = 5;
    std::stable_sort(unlisted.begin(), unlisted.end(), [](const auto& left, const auto& right) {
        return left.Counts.Findings() > right.Counts.Findings();
    });
    std::size_t total = 0;
    std::size_t named = 0;
    std::string rules;
    for (std::size_t i = 0; i < unlisted.size(); ++i) {
        const std::size_t count = unlisted[i].Counts.Findings();
        total += count;
        if (i >= kRulesNamed)
            continue;
        named += count;
        rules += fmt::format("{}{} de {}", i == 0 ? "" : ", ", CountText(count), unlisted[i].Rule->Name);
    }
    if (named != total)
        rules += fmt::format(" e {} de outras regras", CountText(total - named));
    return fmt::format(
        "Há mais {} {} na lista: {}.\r\nA lista traz no máximo {} mensagens de cada regra e {} "
        "de cada arquivo, e a primeira de cada causa; as contagens são de todas.",
        CountText(total), total == 1 ? "mensagem, que não está" : "mensagens, que não estão", rules,
        CountText(limits.OfRule), CountText(limits.OfFile));
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

THasIgnoredMessages::THasIgnoredMessages(const TXmlMessages& hidden, std::size_t unlisted)
    : TValidationMessage(
          TMessageOrigin{}, TMessageType::mtInformation,
          CountText(hidden.size() + unlisted) +
              (hidden.size() + unlisted == 1 ? " mensagem foi ignorada." : " mensagens foram ignoradas.") +
              "\r\nAs mensagens de validações desativadas não estão sendo exibidas.") {}

TUnlistedMessages::TUnlistedMessages(const std::vector<TUnkeptFindings>& unlisted,
                                     const TFindingLimits& limits)
    : TXmlMessage(TMessageType::mtInformation, UnlistedText(unlisted, limits)) {
    SetKind(TFindingKind::Run);
}

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
    const std::filesystem::path file = PathFromText(fileName);
    std::error_code unreadable; // what is there and cannot be reached is told when it is read
    if (std::filesystem::status(file, unreadable).type() == std::filesystem::file_type::not_found &&
        !NamesDevice(file))
        throw EFileNotFound();
    if (flags_.Contains(TFileStateFlag::sfAberto))
        throw EAlreadyFileLoaded();
    Load(fileName, TTissFile::ReadText(file, TXmlUndecodable::Guessed));
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
    origin_ = file.Origin();
    TFileOpenArgs args;
    args.FileName = fileName_;
    args.FileStateFlags = flags_;
    args.SharedContent = file.Text();
    events_.OnFileOpen.Notify(std::move(args));
    NotifyState();
}

void TValidadorController::Modify() {
    RequireFile("Não é possível alterar o Modified, pois não tem arquivo carregado.");
    encoding_.Once = false; // known of the text that was read
    if (Modified())
        return;
    flags_.Include(TFileStateFlag::sfModificado);
    NotifyState();
}

void TValidadorController::Unmodify() {
    RequireFile("Não é possível alterar o Modified, pois não tem arquivo carregado.");
    if (!Modified())
        return;
    flags_.Exclude(TFileStateFlag::sfModificado);
    NotifyState();
}

void TValidadorController::Save(const std::string& xml) {
    SaveAs(xml, fileName_);
}

void TValidadorController::SaveAs(const std::string& xml, const std::string& fileName) {
    std::unique_ptr<TSaveRun> run = BeginSave(std::make_shared<const std::string>(xml), fileName);
    run->Run();
    EndSave(std::move(run));
}

std::unique_ptr<TSaveRun> TValidadorController::BeginSave(std::shared_ptr<const std::string> xml,
                                                          const std::string& fileName) const {
    RequireFile("Não é possível salvar o Xml, pois não tem arquivo carregado.");
    std::unique_ptr<TSaveRun> run(new TSaveRun);
    run->xml_ = std::move(xml);
    run->fileName_ = fileName;
    run->encoding_ = encoding_;
    run->origin_ = origin_;
    run->opening_ = openings_;
    return run;
}

void TSaveRun::Run() {
    const std::filesystem::path path = PathFromText(fileName_);
    TTissFile(xml_, encoding_, origin_).Write(path);
    origin_ = TFileOrigin::Of(path);
    encoding_ = EncodingToWrite(*xml_, encoding_);
}

void TValidadorController::EndSave(std::unique_ptr<TSaveRun> run) {
    if (openings_ != run->opening_)
        return;
    origin_ = run->origin_;
    encoding_ = run->encoding_;
    fileName_ = run->fileName_;
    flags_.Exclude(TFileStateFlag::sfModificado);
    TFileSaveArgs args;
    args.FileName = fileName_;
    args.FileStateFlags = flags_;
    args.SharedContent = run->xml_;
    events_.OnFileSave.Notify(std::move(args));
    NotifyState();
}

bool TValidadorController::ChangedOnDisk() const {
    return origin_.Stamp && StampOf(origin_.File) != origin_.Stamp;
}

void TValidadorController::AcceptChangeOnDisk() {
    origin_ = TFileOrigin::Of(origin_.File);
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
    origin_ = {};
    flags_.Clear();
    NotifyState();
}

void TValidadorController::Validate(std::string xml, const std::vector<std::string>& enabledValidations) {
    Validate(std::make_shared<const std::string>(std::move(xml)), enabledValidations);
}

void TValidadorController::Validate(std::shared_ptr<const std::string> xml,
                                    const std::vector<std::string>& enabledValidations) {
    const std::unique_ptr<TValidationRun> run = BeginValidation(std::move(xml));
    if (IsCurrent(*run))
        run->Run();
    Finish(*run, enabledValidations);
}

std::unique_ptr<TValidationRun>
TValidadorController::BeginValidation(std::shared_ptr<const std::string> xml) {
    std::unique_ptr<TValidationRun> run = NewRun(std::move(xml));
    TellBegin(*run);
    return run;
}

void TValidadorController::EndValidation(std::unique_ptr<TValidationRun> run,
                                         const std::vector<std::string>& enabledValidations) {
    if (IsCurrent(*run))
        Finish(*run, enabledValidations);
}

void TValidadorController::StopValidation() {
    if (!flags_.Contains(TFileStateFlag::sfValidando))
        return;
    ++validations_;
    flags_.Exclude(TFileStateFlag::sfValidando);
    NotifyState();
}

std::unique_ptr<TValidationRun> TValidadorController::NewRun(std::shared_ptr<const std::string> xml) {
    RequireFile("Para validar um XML, é necessário ter um arquivo carregado.");
    std::unique_ptr<TValidationRun> run(new TValidationRun(terminology_));
    run->xml_ = std::move(xml);
    run->encoding_ = encoding_;
    run->schemas_ = schemas_;
    run->limits_ = limits_;
    run->keepSuccesses_ = keepSuccesses_;
    run->opening_ = openings_;
    run->validation_ = ++validations_;
    return run;
}

void TValidadorController::TellBegin(TValidationRun& run) {
    versaoTiss_.clear();
    flags_.Include(TFileStateFlag::sfValidando);
    flags_.Exclude(TFileStateFlag::sfValidado);
    flags_.Exclude(TFileStateFlag::sfValido);
    flags_.Exclude(TFileStateFlag::sfInvalido);
    if (auto failure = Attempt([this] { NotifyState(); })) {
        run.result_ = std::move(*failure);
        run.failedBefore_ = true;
    }
}

void TValidadorController::Finish(TValidationRun& run, const std::vector<std::string>& enabledValidations) {
    // A failure of an observer is posted in its turn; that of one who fails again is not.
    std::optional<TValidateArgs> failure;
    bool failed = run.failedBefore_;
    if (IsCurrent(run)) {
        versaoTiss_ = run.versao_;
        failure = Attempt([&] { Post(std::move(run.result_), enabledValidations); });
    }
    const auto postFailure = [&] {
        if (failure && IsCurrent(run))
            Attempt([&] { Post(std::move(*failure), enabledValidations); });
    };
    if (!failed)
        postFailure();
    failed = failed || failure.has_value();
    flags_.Exclude(TFileStateFlag::sfValidando);
    failure = Attempt([this] { NotifyState(); });
    if (failure && !failed) {
        postFailure();
        Attempt([this] { NotifyState(); });
    }
}

namespace {

/// Parses and identifies a text; no loaded file where the parser refuses it.
TValidateArgs ReadText(const TTissFile& file) {
    TValidateArgs result;
    TXmlParseResult parsed = file.Parse();
    const std::optional<TXmlMisreading> misreading = file.Misreading();
    const TXmlMessages encoding = FindEncodingFaults(file.Text(), file.Encoding(), misreading);
    result.ValidXml = parsed.Messages.empty() && file.Encoding().Fault == nullptr;
    if (parsed.Document == nullptr) {
        result.AllMessages = std::move(parsed.Messages);
        result.AllMessages.front() = WithDeclarationFirst(result.AllMessages.front(), file.Text());
        result.AllMessages.insert(result.AllMessages.end(), encoding.begin(), encoding.end());
        return result;
    }
    result.AllMessages = encoding;
    if (misreading)
        parsed.Document->SetMisreading(*misreading);
    try {
        result.ArquivoTiss = TArquivoTissFactory().GetNewArquivoTiss(parsed.Document);
    } catch (const ETissException& error) {
        result.AllMessages.push_back(WithIdentifyingNames(UserError(error), parsed.Document));
        result.Unidentified = parsed.Document;
        if (std::string hint = WebServiceHint(*parsed.Document); !hint.empty())
            result.AllMessages.push_back(TXmlMessage::CreateInfo(std::move(hint)));
    }
    return result;
}

std::filesystem::path SchemaOf(const TSchemaFolder& schemas, const IArquivoTiss& arquivo) {
    return schemas.Locate(SchemaFileName(arquivo.TipoArquivo(), arquivo.Versao()));
}

} // namespace

void TValidationRun::Run() {
    if (failedBefore_)
        return;
    if (auto failure = Attempt([this] { Judge(); }))
        result_ = std::move(*failure);
}

void TValidationRun::Judge() {
    TValidateArgs result = ReadText(TTissFile(std::move(xml_), encoding_));
    if (result.ArquivoTiss != nullptr) {
        versao_ = result.ArquivoTiss->Versao();
        const std::filesystem::path schema = SchemaOf(schemas_, *result.ArquivoTiss);
        TTissValidator validator(result.ArquivoTiss, schema, terminology_.CreateConnection());
        validator.LimitFindings(limits_.OfRule);
        if (!keepSuccesses_)
            validator.CountSuccesses();
        const TValidationMessages messages = validator.Validate();
        result.CountedSuccesses = validator.CountedSuccesses();
        result.AllMessages.insert(result.AllMessages.end(), messages.begin(), messages.end());
        result.Unlisted = validator.Unkept();
        result.ApproximateSchema = IsApproximation(schema);
    }
    result_ = std::move(result);
}

TValidateArgs TValidadorController::ValidateStructure(const std::shared_ptr<const std::string>& xml) const {
    TValidateArgs result;
    if (auto failure = Attempt([&] {
            result = ReadText(TTissFile(xml, encoding_));
            if (result.ArquivoTiss == nullptr)
                return;
            const TValidationMessages messages = TTissValidator::ValidateStructure(
                *result.ArquivoTiss, SchemaOf(schemas_, *result.ArquivoTiss));
            result.AllMessages.assign(messages.begin(), messages.end());
        }))
        return std::move(*failure);
    return result;
}

TValidateArgs TValidadorController::FailuresOf(const std::shared_ptr<const std::string>& xml,
                                               const std::vector<std::string>& enabledValidations) const {
    TValidationRun run(terminology_);
    run.xml_ = xml;
    run.encoding_ = encoding_;
    run.schemas_ = schemas_;
    run.limits_ = TFindingLimits::None();
    run.keepSuccesses_ = false;
    run.Run();
    TMessageFilter filter(enabledValidations);
    std::erase_if(run.result_.AllMessages, [&filter](const auto& message) {
        return !message->IsFailure() || filter.Hidden(*message);
    });
    return std::move(run.result_);
}

void TValidadorController::List(TValidateArgs& result,
                                const std::vector<std::string>& enabledValidations) const {
    TMessageFilter filter(enabledValidations);
    std::vector<TUnkeptFindings> unlisted;
    for (TUnkeptFindings& of : result.Unlisted) {
        if (filter.Hidden(of.Rule.get())) {
            result.HiddenCount += of.Counts.Findings();
        } else {
            result.Counts += of.Counts;
            unlisted.push_back(std::move(of));
        }
    }
    std::size_t hiddenFindings = 0;
    std::set<std::string_view> toldOfRun;
    TXmlMessages listed;
    listed.reserve(result.AllMessages.size());
    for (auto& message : result.AllMessages) {
        const bool success = message->MsgType() == TMessageType::mtSuccess;
        if (filter.Hidden(*message)) {
            ++result.HiddenCount;
            if (!success && ++hiddenFindings > limits_.OfFile)
                continue;
            result.HiddenMessages.push_back(message);
        } else if (!success &&
                   (message->Kind() != TFindingKind::Run || toldOfRun.insert(message->Reason()).second)) {
            result.Counts.Add(message->MsgType());
            if (message->Rule() != nullptr && result.ValidationMessages.size() >= limits_.OfFile) {
                CountUnlisted(unlisted, message);
                continue;
            }
            result.ValidationMessages.push_back(message);
        }
        listed.push_back(std::move(message));
    }
    for (const TCountedSuccesses& counted : result.CountedSuccesses)
        if (filter.Hidden(counted.Rule.get()))
            result.HiddenCount += counted.Count;
    const std::size_t inLimits = result.ValidationMessages.size();
    ListEachCause(result.ValidationMessages, unlisted);
    listed.insert(listed.end(), result.ValidationMessages.begin() + static_cast<std::ptrdiff_t>(inLimits),
                  result.ValidationMessages.end());
    result.AllMessages = std::move(listed);
    result.Unlisted = std::move(unlisted);
}

void TValidadorController::Post(TValidateArgs result, const std::vector<std::string>& enabledValidations) {
    List(result, enabledValidations);
    if (!result.Unlisted.empty())
        result.ValidationMessages.push_back(std::make_shared<TUnlistedMessages>(result.Unlisted, limits_));
    flags_.Exclude(TFileStateFlag::sfValidando);
    flags_.Exclude(TFileStateFlag::sfValido); // of a result that a failure replaces
    flags_.Include(TFileStateFlag::sfValidado);
    if (result.Counts.Failures() != 0) {
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
