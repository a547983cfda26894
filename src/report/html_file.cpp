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
#include <functional>
#include <numeric>
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
    THtmlFile(const TFileResult& file, const TReportOptions& options, std::set<const TRuleText*>& explained)
        : file_(file), explained_(explained),
          excerpts_(file.Text != nullptr ? std::string_view(*file.Text) : std::string_view()),
          listed_(MessagesOf(ListedMessages(file.Validation, options))) {
        if (options.Detalhar) {
            groups_.resize(listed_.size());
            for (std::size_t i = 0; i < listed_.size(); ++i)
                groups_[i] = {{i}, listed_[i]->NumeroGuia().empty() ? 0U : 1U, true};
        } else {
            groups_ = GroupMessages(listed_);
        }
    }

    std::string Text() {
        Verdict();
        Facts();
        Counts();
        Section("O arquivo como um todo",
                [](const TXmlMessage&, const TMessageGroup& group) { return group.Guides == 0; });
        Section("Em várias guias",
                [](const TXmlMessage&, const TMessageGroup& group) { return group.Guides > 1; });
        for (const std::string& guide : GuidesAlone())
            Section("Guia " + HtmlText(guide), [&](const TXmlMessage& first, const TMessageGroup& group) {
                return group.Guides == 1 && first.NumeroGuia() == guide;
            });
        Successes();
        if (leftOut_ != 0)
            html_ +=
                fmt::format("<p class=\"fora\">Mais {} deste arquivo não {} neste relatório. Corrija as "
                            "que estão e valide de novo, ou veja todas com <code>conferix "
                            "validar</code>.</p>\n",
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

    /// What concerns the file, though it is said at the first place that met it.
    static bool IsOfRun(const TXmlMessage& message) { return message.Kind() == TFindingKind::Run; }
    static bool IsSuccess(const TXmlMessage& message) { return message.MsgType() == TMessageType::mtSuccess; }

    /// Guides that have findings of their own, in the order of those.
    std::vector<std::string> GuidesAlone() const {
        std::vector<std::pair<std::int32_t, std::string>> guides;
        std::set<std::string_view> known;
        for (const TMessageGroup& group : groups_)
            if (const TXmlMessage& first = First(group); group.Guides == 1 && !IsSuccess(first) &&
                                                         !IsOfRun(first) &&
                                                         known.insert(first.NumeroGuia()).second)
                guides.emplace_back(first.Line(), first.NumeroGuia());
        std::ranges::stable_sort(guides, {}, &std::pair<std::int32_t, std::string>::first);
        std::vector<std::string> names;
        for (auto& [line, name] : guides)
            names.push_back(std::move(name));
        return names;
    }

    const TXmlMessage& First(const TMessageGroup& group) const { return *listed_[group.Messages.front()]; }

    void Section(const std::string& title,
                 const std::function<bool(const TXmlMessage&, const TMessageGroup&)>& belongs) {
        bool open = false;
        for (const TMessageGroup& group : groups_) {
            const TXmlMessage& first = First(group);
            if (IsSuccess(first) || !belongs(first, group))
                continue;
            if (shown_ == kShownFindings) {
                leftOut_ += group.Messages.size();
                continue;
            }
            if (!std::exchange(open, true))
                html_ += fmt::format("<section>\n<h3>{}</h3>\n", title);
            ++shown_;
            Finding(first, group);
        }
        if (open)
            html_ += "</section>\n";
    }

    void Finding(const TXmlMessage& first, const TMessageGroup& group) {
        const TRuleText* text =
            first.Rule() != nullptr ? TRuleGuide::Instance().Find(first.Rule()->Name) : nullptr;
        const TSeverity severity = SeverityOf(first.MsgType());
        html_ += fmt::format("<article class=\"achado {}\">\n<h4><span class=\"selo\">{}</span>",
                             severity.Class, severity.Label);
        if (text != nullptr) {
            explained_.insert(text);
            html_ += " " + Link(*text, *first.Rule());
        }
        html_ += fmt::format("</h4>\n<p class=\"frase\">{}</p>\n", HtmlLines(first.Reason()));
        Places(first, group);
        html_ += HtmlExcerpt(excerpts_.Around(first));
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
        const std::size_t count = group.Messages.size();
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
            for (std::size_t i = 0; i < std::min(count, kShownPlaces); ++i)
                places += (i == 0 ? "" : ", ") + Place(*listed_[group.Messages[i]], group.Guides > 1);
            if (count > kShownPlaces)
                places += fmt::format(" e mais {}", CountText(count - kShownPlaces));
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
    std::set<const TRuleText*>& explained_;
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
    return fmt::format("regra-{}", &text - TRuleGuide::Instance().Texts().data() + 1);
}

std::string HtmlFile(const TFileResult& file, const TReportOptions& options,
                     std::set<const TRuleText*>& explained) {
    return THtmlFile(file, options, explained).Text();
}

} // namespace conferix
