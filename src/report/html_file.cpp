#include "report/html_file.h"

#include "app/message_groups.h"
#include "model/tiss_kinds.h"
#include "platform/format_settings.h"
#include "report/console.h"
#include "report/html_text.h"
#include "validation/solver.h"
#include "validation/validation_message.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>
#include <set>
#include <unordered_map>
#include <utility>

namespace conferix {

namespace {

constexpr std::size_t kShownFindings = 300; ///< of a file, groups counted once
constexpr std::size_t kShownPlaces = 10;    ///< of a group

std::string CountText(std::size_t count) {
    return TFormatSettings::Regional().Count(static_cast<std::int64_t>(count));
}

struct TSeverity {
    std::string_view Class;
    std::string_view Label;
};

TSeverity SeverityOf(TMessageType type) {
    static constexpr std::array<TSeverity, 5> kSeverities = {{{"informacao", "Informação"},
                                                              {"aviso", "Aviso"},
                                                              {"erro", "Erro"},
                                                              {"erro", "Erro fatal"},
                                                              {"sucesso", "Conferido"}}};
    return kSeverities[static_cast<std::size_t>(type)];
}

/// Writes what is found in one file.
class THtmlFile {
  public:
    THtmlFile(const TFileResult& file, const TReportOptions& options)
        : file_(file), excerpts_(file.Text != nullptr ? std::string_view(*file.Text) : std::string_view()),
          listed_(MessagesOf(ListedMessages(file.Validation, options))) {
        groups_ =
            options.Detalhar ? UngroupedMessages(listed_) : GroupMessages(listed_, file.Validation.Unlisted);
        SortByLine(listed_, groups_);
    }

    std::string Text() {
        Verdict();
        Facts();
        Counts();
        for (const TSection& section : Sections())
            Write(section);
        Successes();
        if (leftOut_ != 0)
            html_ +=
                fmt::format("<p class=\"fora\">Mais {} deste arquivo não {} neste relatório. Corrija as "
                            "que estão e valide de novo.</p>\n",
                            Counted(leftOut_, "mensagem", "mensagens"), leftOut_ == 1 ? "está" : "estão");
        return std::move(html_);
    }

  private:
    void Verdict() {
        const TVerdict verdict = file_.Verdict();
        const TMessageCounts& counts = file_.Validation.Counts;
        std::string text(HtmlVerdict(verdict));
        if (verdict == TVerdict::Invalid)
            text += ": " + Counted(counts.Failures(), "erro", "erros");
        if (verdict != TVerdict::NotVerified && counts.Warnings() != 0)
            text += (verdict == TVerdict::Invalid ? " e " : ", com ") +
                    Counted(counts.Warnings(), "aviso", "avisos");
        html_ += fmt::format("<p class=\"veredito {}\">{}</p>\n", HtmlVerdictClass(verdict), text);
        if (const std::string advice = file_.Advice(); !advice.empty())
            html_ += fmt::format("<p class=\"fora\">{}</p>\n", HtmlText(advice));
    }

    void Facts() {
        const IArquivoTiss* arquivo = file_.Validation.ArquivoTiss.get();
        if (arquivo == nullptr)
            return;
        html_ += "<dl>\n";
        Fact("Tipo de arquivo", KindOf(arquivo->TipoArquivo()).Title);
        for (const TInformationGroup& group : arquivo->Informations())
            for (const auto& [label, value] : group.Linhas)
                Fact(label, value);
        html_ += "</dl>\n";
    }

    void Fact(std::string_view label, std::string_view value) {
        if (!value.empty())
            html_ += fmt::format("<div><dt>{}</dt><dd>{}</dd></div>\n", HtmlText(label), HtmlText(value));
    }

    /// Checks that found nothing wrong, listed or only counted.
    std::size_t SuccessCount() const {
        const TValidateArgs& result = file_.Validation;
        return std::accumulate(
            result.CountedSuccesses.begin(), result.CountedSuccesses.end(),
            static_cast<std::size_t>(std::ranges::count_if(
                result.AllMessages,
                [](const auto& message) { return message->MsgType() == TMessageType::mtSuccess; })),
            [](std::size_t sum, const TCountedSuccesses& of) { return sum + of.Count; });
    }

    void Counts() {
        const TValidateArgs& result = file_.Validation;
        const std::pair<std::string_view, std::size_t> counts[] = {
            {"Erros", result.Counts.Failures()},
            {"Avisos", result.Counts.Warnings()},
            {"Informações", result.Counts.Of(TMessageType::mtInformation)},
            {"Conferências sem falha", SuccessCount()},
            {"Mensagens de regras desativadas", result.HiddenCount}};
        html_ += "<table class=\"contagens\"><caption>Contagens</caption><tbody>\n";
        for (const auto& [label, count] : counts)
            html_ += fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td></tr>\n", label, CountText(count));
        html_ += "</tbody></table>\n";
    }

    /// What concerns the run as a whole, though it is said at the first place that met it.
    static bool IsOfRun(const TXmlMessage& message) { return message.Kind() == TFindingKind::Run; }
    static bool IsOfFile(const TXmlMessage& first, const TMessageGroup& group) {
        return group.Guides <= 1 && first.NumeroGuia().empty();
    }
    static bool IsSuccess(const TXmlMessage& message) { return message.MsgType() == TMessageType::mtSuccess; }

    /// Findings under one heading.
    struct TSection {
        std::string Title;
        std::vector<const TMessageGroup*> Groups;
    };

    /// The file as a whole, what several guides share, the guides in the order of their first findings, and
    /// last what says more of the validation than of the file.
    std::vector<TSection> Sections() const {
        TSection ofFile{"O arquivo como um todo", {}};
        TSection ofSeveral{"Em várias guias", {}};
        TSection ofRun{"Sobre esta conferência", {}};
        std::vector<TSection> ofGuides;
        std::unordered_map<std::string_view, std::size_t> byNumber;
        for (const TMessageGroup& group : groups_) {
            const TXmlMessage& first = First(group);
            if (IsSuccess(first))
                continue;
            if (IsOfRun(first)) {
                ofRun.Groups.push_back(&group);
            } else if (IsOfFile(first, group)) {
                ofFile.Groups.push_back(&group);
            } else if (group.Guides > 1) {
                ofSeveral.Groups.push_back(&group);
            } else {
                const auto [guide, added] = byNumber.try_emplace(first.NumeroGuia(), ofGuides.size());
                if (added)
                    ofGuides.push_back({"Guia " + HtmlText(first.NumeroGuia()), {}});
                ofGuides[guide->second].Groups.push_back(&group);
            }
        }
        std::ranges::stable_sort(
            ofGuides, {}, [this](const TSection& section) { return First(*section.Groups.front()).Line(); });
        std::vector<TSection> sections = {std::move(ofFile), std::move(ofSeveral)};
        std::ranges::move(ofGuides, std::back_inserter(sections));
        sections.push_back(std::move(ofRun));
        return sections;
    }

    const TXmlMessage& First(const TMessageGroup& group) const { return *listed_[group.Messages.front()]; }

    void Write(const TSection& section) {
        const std::size_t shown = std::min(section.Groups.size(), kShownFindings - shown_);
        shown_ += shown;
        for (std::size_t i = shown; i < section.Groups.size(); ++i)
            leftOut_ += section.Groups[i]->Count;
        if (shown == 0)
            return;
        html_ += fmt::format("<section>\n<h3>{}</h3>\n", section.Title);
        for (std::size_t i = 0; i < shown; ++i)
            Finding(First(*section.Groups[i]), *section.Groups[i]);
        html_ += "</section>\n";
    }

    void Finding(const TXmlMessage& first, const TMessageGroup& group) {
        const TRuleText* text =
            first.Rule() != nullptr ? TRuleGuide::WithoutCommands().Find(first.Rule()->Name) : nullptr;
        const TSeverity severity = SeverityOf(first.MsgType());
        html_ += fmt::format("<article class=\"achado {}\">\n<h4><span class=\"selo\">{}</span>",
                             severity.Class, severity.Label);
        if (text != nullptr) {
            html_ += " " + Link(*text, *first.Rule());
        }
        html_ += fmt::format("</h4>\n<p class=\"frase\">{}</p>\n", HtmlLines(first.Reason()));
        if (!IsOfRun(first)) {
            Places(first, group);
            html_ += HtmlExcerpt(excerpts_.Around(first));
        }
        Corrections(first, group);
        if (text != nullptr && !IsOfRun(first))
            Mend(*text, *first.Rule());
        html_ += "</article>\n";
    }

    static std::string Link(const TRuleText& text, const TValidationIdentity& rule) {
        return fmt::format("<a href=\"#{}\" title=\"{}\">{}</a>", HtmlAnchor(text), HtmlText(rule.Name),
                           HtmlText(text.Title));
    }

    void Places(const TXmlMessage& first, const TMessageGroup& group) {
        const std::size_t count = group.Count;
        std::string places;
        if (count == 1) {
            if (first.Line() > 0)
                places = fmt::format("Linha {}, coluna {}", first.Line(), first.LinePos());
            if (!first.Item().empty())
                places += (places.empty() ? "" : " · ") + HtmlText(first.Item());
        } else {
            if (group.Guides > 1)
                places = fmt::format("<strong>{} guias</strong>", CountText(group.Guides));
            if (group.Guides != count)
                places += (places.empty() ? "" : ", ") + CountText(count) + " vezes";
            places += ": ";
            const bool linesAlone =
                group.Guides <= 1 && std::ranges::all_of(group.Messages, [&](std::size_t i) {
                    return listed_[i]->Item().empty() && listed_[i]->Line() > 0;
                });
            places += linesAlone ? "linhas " : "";
            const std::size_t shown = std::min(group.Messages.size(), kShownPlaces);
            for (std::size_t i = 0; i < shown; ++i) {
                const TXmlMessage& message = *listed_[group.Messages[i]];
                places += i == 0 ? "" : ", ";
                places += linesAlone ? std::to_string(message.Line()) : Place(message, group.Guides > 1);
            }
            if (count > shown)
                places += fmt::format(" e mais {}", CountText(count - shown));
            places += ".";
            if (!group.SameReason)
                places += " Os valores variam; a frase acima é da primeira.";
        }
        if (!places.empty())
            html_ += fmt::format("<p class=\"lugar\">{}</p>\n", places);
    }

    /// One place of several.
    static std::string Place(const TXmlMessage& message, bool withGuide) {
        std::string place;
        if (withGuide && !message.NumeroGuia().empty())
            place = "guia " + HtmlText(message.NumeroGuia());
        if (message.Line() > 0)
            place += fmt::format(fmt::runtime(place.empty() ? "linha {}" : " (linha {})"), message.Line());
        if (!message.Item().empty())
            place += ", " + HtmlText(message.Item());
        return place.empty() ? "sem lugar no arquivo" : place;
    }

    void Corrections(const TXmlMessage& first, const TMessageGroup& group) {
        if (first.Solvers().empty())
            return;
        html_ += "<div class=\"correcao\"><p><strong>O Conferix corrige:</strong></p>\n<ul>\n";
        for (const auto& solver : first.Solvers())
            html_ += "<li>" + HtmlLines(solver->Description()) + "</li>\n";
        html_ += "</ul>\n";
        if (!group.SameReason)
            html_ += "<p>Esta é a correção da primeira; as outras têm cada uma a sua.</p>\n";
        html_ += "</div>\n";
    }

    /// How it is mended by hand: in full where the file first has it.
    void Mend(const TRuleText& text, const TValidationIdentity& rule) {
        const TGuideSection* mend = text.Section(kGuideMend);
        if (mend == nullptr)
            return;
        if (told_.insert(&text).second)
            html_ += fmt::format("<div class=\"mao\"><p><strong>Como corrigir:</strong></p>\n{}</div>\n",
                                 HtmlBlocks(mend->Blocks));
        else
            html_ += fmt::format("<p class=\"mao\"><strong>Como corrigir:</strong> veja {}.</p>\n",
                                 Link(text, rule));
    }

    /// What was found right, where it is asked for: a line a cause.
    void Successes() {
        bool open = false;
        for (const TMessageGroup& group : groups_) {
            if (!IsSuccess(First(group)) || First(group).Rule() == nullptr)
                continue;
            if (!std::exchange(open, true))
                html_ += "<section>\n<h3>Conferido sem falha</h3>\n<ul>\n";
            html_ += "<li>" + HtmlLines(GroupText(listed_, group)) + "</li>\n";
        }
        if (open)
            html_ += "</ul>\n</section>\n";
    }

    const TFileResult& file_;
    TXmlExcerpts excerpts_;
    TXmlMessages listed_;
    std::vector<TMessageGroup> groups_;
    std::set<const TRuleText*> told_;
    std::string html_;
    std::size_t shown_ = 0;
    std::size_t leftOut_ = 0; ///< messages
};

} // namespace

std::string_view HtmlVerdict(TVerdict verdict) {
    static constexpr std::array<std::string_view, 3> kTexts = {"✓ Válido", "✗ Inválido", "? Não verificado"};
    return kTexts[static_cast<std::size_t>(verdict)];
}

std::string_view HtmlVerdictClass(TVerdict verdict) {
    static constexpr std::array<std::string_view, 3> kClasses = {"valido", "invalido", "naoverificado"};
    return kClasses[static_cast<std::size_t>(verdict)];
}

std::string HtmlAnchor(const TRuleText& text) {
    return fmt::format("regra-{}", &text - TRuleGuide::WithoutCommands().Texts().data() + 1);
}

std::string HtmlFile(const TFileResult& file, const TReportOptions& options) {
    return THtmlFile(file, options).Text();
}

} // namespace conferix
