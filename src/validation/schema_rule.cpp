#include "validation/schema_rule.h"

#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "model/unidade_federativa.h"
#include "platform/file_memory.h"
#include "platform/platform.h"
#include "schema_model/element_history.h"
#include "schema_model/seal.h"
#include "validation/finding_item.h"
#include "validation/guide_layout.h"
#include "validation/structure_solver.h"
#include "xml/cut_text.h"
#include "xml/schema/compiled_schema.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_set.h"
#include "xml/schema/schema_validator.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace conferix {

namespace {

/// The schema engine's questions about other versions, answered by the model of all of them, which is loaded
/// for the first question: most files ask none.
class TOtherVersions : public ISchemaOtherVersions {
  public:
    explicit TOtherVersions(const std::filesystem::path& schemaFile)
        : fileName_(PathText(schemaFile.filename())) {}

    TRelation Relate(const TXmlNode& found, std::string_view wanted) const override {
        TPath parent = PathOf(found);
        parent.pop_back();
        switch (TElementHistory::BuiltIn().Relation(fileName_, parent, found.LocalName(), wanted)) {
        case TElementHistory::TRelation::Renamed:
            return TRelation::Renamed;
        case TElementHistory::TRelation::Distinct:
            return TRelation::Distinct;
        default:
            return TRelation::None;
        }
    }

    /// What is said of an element that this version does not know: its history where it has one.
    std::string UnknownElement(const TSchemaFault& fault) const {
        const auto& [text, removed] = HistoryOf(*fault.Node);
        if (text.empty())
            return TSchemaMessages::Sentence(fault);
        if (!removed)
            return fmt::format("O elemento <{}> não é conhecido em <{}>: {}.", fault.Name, fault.Parent,
                               text);
        const TXmlNode* inner = fault.Node->FirstChildTag();
        if (inner != nullptr && std::ranges::find(fault.Expected, inner->LocalName()) != fault.Expected.end())
            return fmt::format("Remova <{0}> e deixe <{1}> no lugar: <{0}> {2}.", fault.Name,
                               inner->LocalName(), text);
        // In another element it may live on.
        return fmt::format("Remova <{}>: em <{}> {}.", fault.Name, fault.Parent, text);
    }

    /// True of an element that earlier versions have in its place.
    bool IsDropped(const TXmlNode& element) const { return HistoryOf(element).Removed; }

    /// What is said of a code that this version does not know: what it stands for, or its history.
    std::string UnknownCode(const TSchemaFault& fault) const {
        if (fault.Attribute != nullptr || fault.Type == nullptr)
            return TSchemaMessages::Sentence(fault);
        const std::string_view code = TrimXmlSpace(fault.Found);
        if (const std::string_view other = OtherCodeOfUf(code);
            !other.empty() && fault.Type->CodeKeys.contains(other))
            return fmt::format("{} de <{}> é {}: \"{}\".", QuoteText(code), fault.Name,
                               other < "A" ? "a sigla do estado; aqui vai o código do IBGE"
                                           : "o código do IBGE; aqui vai a sigla do estado",
                               other);
        if (!fault.Bound.empty())
            return TSchemaMessages::Sentence(fault);
        const TPath path = PathOf(*fault.Node);
        std::string key(code);
        for (const std::string_view name : path)
            key.append("/").append(name);
        const auto [known, added] = phrases_.try_emplace(std::move(key));
        if (added)
            known->second = TElementHistory::BuiltIn().CodeSentence(fileName_, path, code);
        return known->second.Text.empty()
                   ? TSchemaMessages::Sentence(fault)
                   : fmt::format("O código {} de <{}> {}.", QuoteText(code), fault.Name, known->second.Text);
    }

    /// True of a fault of an element of which it is not known whether this version has it, or demands it
    /// where it is missing.
    bool IsInDoubt(const TSchemaFault& fault) const {
        TPath path = PathOf(*fault.Node);
        const bool missing = fault.Code == TSchemaFaultCode::MissingElement;
        if (missing) {
            if (!fault.Before.empty())
                path.pop_back();
            path.push_back(fault.Name);
        }
        return DoNeighboursDisagree(path, missing);
    }

    /// The same of a fault at an element that is there.
    bool IsInDoubt(const TXmlNode& node) const { return DoNeighboursDisagree(PathOf(node), false); }

    /// The version that the content seems to be of, when it is not the declared one; else empty.
    std::string VersionOfContent(const TXmlDocument& document) const {
        return TElementHistory::BuiltIn().VersionOfContent(fileName_, PathsOf(document),
                                                           VersionOfLocation(document));
    }

  private:
    static std::string KeyOf(const TPath& path) {
        std::string key;
        for (const std::string_view name : path)
            key.append(name).append("/");
        return key;
    }

    /// `missing`: of an element that is not there.
    bool DoNeighboursDisagree(const TPath& path, bool missing) const {
        const auto [known, added] = doubts_.try_emplace({KeyOf(path), missing});
        if (added)
            known->second = TElementHistory::BuiltIn().NeighboursDisagree(fileName_, path, !missing);
        return known->second;
    }

    const TElementHistory::TSentence& HistoryOf(const TXmlNode& element) const {
        const TPath path = PathOf(element);
        const auto [known, added] = phrases_.try_emplace(KeyOf(path));
        if (added)
            known->second = TElementHistory::BuiltIn().Sentence(fileName_, path);
        return known->second;
    }

    static TElementPaths PathsOf(const TXmlDocument& document) {
        // Documents have some hundreds; one with more is like no version.
        constexpr std::size_t kMaxPaths = 5000;
        TElementPaths paths;
        std::map<std::pair<std::size_t, std::uint32_t>, std::size_t> known;
        std::vector<std::pair<const TXmlNode*, std::size_t>> open; // the elements around, with their entries
        const TXmlNode* root = document.Element();
        for (const TXmlNode* node = root; node != nullptr; node = node->NextInWalk(root)) {
            if (!node->IsTag())
                continue;
            while (!open.empty() && open.back().first != node->Parent())
                open.pop_back();
            const std::size_t parent = open.empty() ? 0 : open.back().second;
            const auto [entry, added] = known.try_emplace(
                {open.empty() ? std::size_t(-1) : parent, node->Name().Id}, paths.Entries.size());
            if (added && paths.Entries.size() == kMaxPaths)
                return {};
            if (added)
                paths.Entries.push_back({parent, node->LocalName()});
            if (node->FirstChildTag() != nullptr)
                open.emplace_back(node, entry->second);
        }
        return paths;
    }

    /// "3.05.00" of an xsi:schemaLocation that names "tissV3_05_00.xsd"; empty without one.
    static std::string VersionOfLocation(const TXmlDocument& document) {
        constexpr std::size_t kLength = 7;
        for (const TXmlAttribute& attribute : document.Element()->Attributes()) {
            const std::string_view value = attribute.Value();
            const std::size_t end = value.rfind(".xsd");
            if (attribute.Name().Local != "schemaLocation" || end == std::string_view::npos || end < kLength)
                continue;
            std::string version(value.substr(end - kLength, kLength));
            std::replace(version.begin(), version.end(), '_', '.');
            return version;
        }
        return {};
    }

    std::string fileName_;
    mutable std::map<std::string, TElementHistory::TSentence> phrases_; ///< by path
    mutable std::map<std::pair<std::string, bool>, bool> doubts_; ///< by path, and whether it is missing
};

/// True for faults that a document of another version has.
bool IsStructural(TSchemaFaultCode code) {
    switch (code) {
    case TSchemaFaultCode::UnknownElement:
    case TSchemaFaultCode::Misspelled:
    case TSchemaFaultCode::RenamedElement:
    case TSchemaFaultCode::MissingElement:
    case TSchemaFaultCode::MissingSeveral:
    case TSchemaFaultCode::MissingChoice:
        return true;
    default:
        return false;
    }
}

TFindingKind KindOf(const TSchemaFault& fault) {
    switch (fault.Code) {
    case TSchemaFaultCode::WrongNamespace:
        return fault.Node->Parent()->IsTag() ? TFindingKind::Value : TFindingKind::Root;
    case TSchemaFaultCode::UnknownElement:
        return TFindingKind::UnknownElement;
    case TSchemaFaultCode::OutsideElement:
    case TSchemaFaultCode::MissingWrapper:
    case TSchemaFaultCode::TooMany:
    case TSchemaFaultCode::TextNotAllowed:
    case TSchemaFaultCode::ElementInSimpleType:
    case TSchemaFaultCode::ExclusiveElement:
        return TFindingKind::Misplaced;
    case TSchemaFaultCode::WrongCase:
        return TFindingKind::Structure;
    default:
        return IsStructural(fault.Code) ? TFindingKind::Structure : TFindingKind::Value;
    }
}

/// The fault without its place: what is missing, by name; else the kind of fault, the names and the value.
std::string CauseOf(const TSchemaFault& fault) {
    switch (fault.Code) {
    case TSchemaFaultCode::MissingElement:
        return fmt::format("falta {} {}", fault.Parent, fault.Name);
    case TSchemaFaultCode::MissingSeveral: {
        std::string cause;
        for (const std::string& name : fault.Expected)
            cause += fmt::format("{}falta {} {}", cause.empty() ? "" : "\n", fault.Parent, name);
        return cause;
    }
    case TSchemaFaultCode::UnknownElement:
    case TSchemaFaultCode::WrongCase:
    case TSchemaFaultCode::WrongNamespace:
    case TSchemaFaultCode::Misspelled:
    case TSchemaFaultCode::RenamedElement:
        return fmt::format("nome {} {}", fault.Parent, fault.Name);
    default:
        // A value remains what it is wherever its element is moved.
        return fmt::format("{} {} {} {}", static_cast<int>(fault.Code),
                           fault.Type == nullptr ? fault.Parent : std::string(), fault.Name,
                           CutText(fault.Found));
    }
}

/// The guide of a monitoring file that holds a node; null outside of guides.
const TXmlNode* MonitoringGuide(const TXmlNode& node) {
    for (const TXmlNode* at = &node; at != nullptr; at = at->Parent())
        if (at->IsTag() && at->LocalName() == "guiaMonitoramento")
            return at;
    return nullptr;
}

/// Makes the messages of faults.
class TFaultMessages {
  public:
    /// `lote`: null for a file that is no lot of guides.
    TFaultMessages(const TValidation& rule, const IArquivoTiss& file, const ILoteGuias* lote,
                   std::shared_ptr<const TSchemaSet> schema, const TOtherVersions& others,
                   const std::vector<TSchemaFault>& faults)
        : rule_(rule), file_(file.shared_from_this()), schema_(std::move(schema)), others_(others) {
        if (lote != nullptr && !faults.empty())
            guias_.emplace(*lote);
        for (const TSchemaFault& fault : faults)
            if (fault.Code == TSchemaFaultCode::MissingElement ||
                fault.Code == TSchemaFaultCode::MissingSeveral ||
                fault.Code == TSchemaFaultCode::MissingChoice)
                incomplete_.insert(fault.Before.empty() ? fault.Node : fault.Node->Parent());
    }

    /// The guide of a lot that holds a node; null for none.
    const IGuiaTiss* GuiaOf(const TXmlNode& node) const {
        return guias_.has_value() ? guias_->ByNode(node) : nullptr;
    }
    /// As TXmlMessage::Guide.
    std::string GuideOf(const TXmlNode& node) const {
        const IGuiaTiss* guia = GuiaOf(node);
        const TXmlNode* guide = guia != nullptr ? guia->Node() : MonitoringGuide(node);
        return guide != nullptr ? GuideMark(*guide) : std::string();
    }

    /// `withSolvers`: false where no single correction makes sense.
    std::shared_ptr<TLoteGuiasValidationMessage> Make(const TSchemaFault& fault, bool withSolvers) {
        if (fault.Node != lastNode_ || !fault.Found.empty()) {
            source_ = fault.SrcText();
            lastNode_ = fault.Found.empty() ? fault.Node : nullptr;
        }
        std::string reason = fault.Code == TSchemaFaultCode::UnknownElement ? others_.UnknownElement(fault)
                             : fault.Code == TSchemaFaultCode::NotInList    ? others_.UnknownCode(fault)
                                                                         : TSchemaMessages::Sentence(fault);
        const IGuiaTiss* guia = GuiaOf(*fault.Node); // findings of monitoring name none
        auto message = TLoteGuiasValidationMessage::CreateError(
            &rule_, std::string(guia != nullptr ? guia->NumeroMostrado() : std::string_view{}),
            std::move(reason), source_, fault.Line, fault.LinePos, fault.FilePos);
        message->SetGuide(GuideOf(*fault.Node));
        message->SetKind(KindOf(fault));
        message->SetItem(FindingItem(*fault.Node));
        message->SetGroupKey(fault.GroupKey());
        message->SetCause(CauseOf(fault));
        const bool mayBeMeant = fault.Code == TSchemaFaultCode::UnknownElement && MayBeMeant(*fault.Node);
        if (withSolvers)
            for (auto& solver : StructureSolversOf(fault, file_, schema_))
                if (!mayBeMeant || !solver->WithLoss())
                    message->AddSolver(std::move(solver));
        return message;
    }

  private:
    /// True of an unknown element that may be what is missing beside it, under a wrong name, or that belongs
    /// in another place, where this version has it: nobody means to do without it.
    bool MayBeMeant(const TXmlNode& element) const {
        const std::uint32_t tiss = schema_->NamespaceId(schema_->TargetNamespace());
        return incomplete_.count(element.Parent()) != 0 ||
               (schema_->SymbolOf(tiss, element.LocalName()) != kSchemaNoSymbol &&
                !others_.IsDropped(element));
    }

    const TValidation& rule_;
    std::shared_ptr<const IArquivoTiss> file_;
    std::shared_ptr<const TSchemaSet> schema_;
    const TOtherVersions& others_;
    std::optional<TGuiaLocator> guias_;
    std::set<const TXmlNode*> incomplete_; ///< elements that lack others
    const TXmlNode* lastNode_ = nullptr;   ///< many faults may be of one start tag, however long that is
    std::string source_;
};

/// Where the header names the version; the root when it does not.
const TXmlNode& VersionPlace(const TXmlNode& root) {
    for (const char* path : {"cabecalho/Padrao", "cabecalho/versaoPadrao"})
        if (const TXmlNode* node = root.Find(path))
            return *node;
    return root;
}

std::shared_ptr<const TSchemaSet> LoadSchema(const std::filesystem::path& file) {
    try {
        return TSchemaSet::Load(file);
    } catch (const ESchemaInvalido& error) { // files of the same name are in several folders
        throw ESchemaInvalido(error, file.parent_path());
    }
}

} // namespace

bool IsApproximation(const std::filesystem::path& file) {
    static TFileMemory<bool> memory;
    const std::string name = PathText(file);
    if (const auto known = memory.Find(name))
        return *known;
    const TSeenFile stamp = SeeFile(file);
    const bool answer = IsSealedApproximation(ReadWholeFile(file));
    memory.Keep(name, {stamp}, answer);
    return answer;
}

ESchemaNotFound::ESchemaNotFound(const std::filesystem::path& file)
    : std::runtime_error(fmt::format("Schema file {} not found", PathText(file))), file_(file) {}

void TXmlSchemaValidation::Visit(const IMensagemTiss& mensagem) {
    // Findings of a lot name their guide.
    if (mensagem.TipoTransacao() == TEnumTipoTransacaoTiss::tmEnvioLoteGuias) {
        const ILoteGuias lote = mensagem.LoteGuias();
        Check(mensagem, &lote);
    } else {
        Check(mensagem, nullptr);
    }
}

void TXmlSchemaValidation::Visit(const IMonitoramento& monitoramento) {
    Check(monitoramento, nullptr);
}

void TXmlSchemaValidation::Visit(const IMonitoramentoQualidade& qualidade) {
    Check(qualidade, nullptr);
}

void TXmlSchemaValidation::Check(const IArquivoTiss& file, const ILoteGuias* lote) {
    StartVisit();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(schemaFile_, ignored))
        throw ESchemaNotFound(schemaFile_);
    const auto schema = LoadSchema(schemaFile_);
    const TOtherVersions others(schemaFile_);
    const TXmlDocument& document = *file.Xml();
    auto [faults, further, untold] = TSchemaValidator(*schema, &others).Judge(document, RoomForFindings());
    if (IsApproximation(schemaFile_)) {
        std::set<std::string> doubtful;
        const auto isInDoubt = [&](const TSchemaFault& fault) {
            return others.IsInDoubt(fault) &&
                   (doubtful.insert(fmt::format("<{}>", fault.Attribute != nullptr
                                                            ? fault.Node->LocalName()
                                                            : std::string_view(fault.Name))),
                    true);
        };
        std::erase_if(faults, isInDoubt);
        std::erase_if(further, [&](const TSchemaFurther& more) { return isInDoubt(more.First); });
        std::erase_if(untold, [&](const TSchemaUntold& fault) { return others.IsInDoubt(*fault.Node); });
        Warning(nullptr,
                fmt::format(
                    "O schema da versão {} publicado pela ANS não estava disponível; foi usado um schema "
                    "aproximado, feito com os das versões vizinhas, e a conferência pode ter falhas. {}"
                    "Para usar o da ANS, importe-o: conferix esquemas importar ARQUIVO.",
                    file.Versao(),
                    doubtful.empty()
                        ? std::string()
                        : fmt::format("As versões vizinhas diferem sobre {}, que não foi "
                                      "julgado. ",
                                      CutText(fmt::format("{}", fmt::join(doubtful, ", ")), kShownFound))));
    }
    const std::string version = std::ranges::any_of(faults, IsStructural, &TSchemaFault::Code)
                                    ? others.VersionOfContent(document)
                                    : std::string();
    const bool otherVersion = !version.empty();
    if (otherVersion)
        Warning(
            &VersionPlace(*document.Element()),
            fmt::format("O cabeçalho declara a versão {0}, mas o conteúdo parece ser da {1}. Se é da {1}, "
                        "corrija o cabeçalho; para passar o arquivo à {0}, converta-o depois: conferix "
                        "converter.",
                        file.Versao(), version))
            .SetKind(TFindingKind::Layout);
    TFaultMessages messages(*this, file, lote, schema, others, faults);
    TGuideLayouts layouts(PathText(schemaFile_.filename()), std::string(file.Versao()));
    std::set<const TXmlNode*> structural; // guides with faults that a wrong layout has
    const auto noteGuide = [&](TSchemaFaultCode code, const TXmlNode& node) {
        if (const IGuiaTiss* guia = IsStructural(code) ? messages.GuiaOf(node) : nullptr)
            structural.insert(guia->Node());
    };
    for (const TSchemaFault& fault : faults)
        noteGuide(fault.Code, *fault.Node);
    for (const TSchemaFurther& more : further)
        for (const TXmlNode* node : more.Nodes)
            noteGuide(more.First.Code, *node);
    for (const TSchemaUntold& fault : untold)
        noteGuide(fault.Code, *fault.Node);
    std::map<const TXmlNode*, bool> foreign; // guides, and whether they are laid out for something else
    const auto isForeign = [&](const TXmlNode& node) {
        const IGuiaTiss* guia = messages.GuiaOf(node);
        if (guia == nullptr || otherVersion)
            return false;
        const auto [known, added] = foreign.try_emplace(guia->Node(), false);
        if (!added || structural.count(guia->Node()) == 0)
            return known->second;
        std::string layout = layouts.Sentence(*guia);
        known->second = !layout.empty();
        if (known->second) {
            const TXmlPlace place = guia->Node()->Place();
            const auto told = TLoteGuiasValidationMessage::CreateWarn(
                this, std::string(guia->NumeroMostrado()), std::move(layout), std::string(), place.Line,
                place.LinePos, place.FilePos);
            told->SetGuide(GuideMark(*guia->Node()));
            told->SetKind(TFindingKind::Layout);
            AddMessage(told);
        }
        return known->second;
    };
    for (const TSchemaFault& fault : faults) {
        const bool repairable = !isForeign(*fault.Node);
        AddMessage(messages.Make(fault, repairable));
    }
    for (TSchemaFurther& more : further) {
        std::ranges::sort(more.Nodes, {}, [](const TXmlNode* node) { return node->ByteStart(); });
        std::vector<TUnkeptPlace> places;
        for (const TXmlNode* node : more.Nodes) {
            isForeign(*node);
            places.push_back({messages.GuideOf(*node), node->Line()});
        }
        AddUnkept(messages.Make(more.First, !isForeign(*more.First.Node)), places,
                  more.SameValue && more.SamePlace, more.SameValue);
    }
    for (const TSchemaUntold& fault : untold)
        isForeign(*fault.Node);
    AddUntold(TMessageType::mtError, untold.size());
    if (FoundNothing())
        Success(
            nullptr,
            fmt::format("O XML está de acordo com o schema XSD da versão {} do componente de comunicação.",
                        file.Versao()));
}

} // namespace conferix
