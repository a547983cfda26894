#include "report/html_report.h"

#include "report/console.h"
#include "report/html_file.h"
#include "report/html_style.h"
#include "report/html_text.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <ostream>
#include <utility>

namespace conferix {

namespace {

constexpr std::size_t kMostBytes = 32UL * 1024 * 1024; ///< of the texts about files

/// What a file is called in headings.
std::string NameOfFile(const TFileSummary& file) {
    return file.Arquivo == "-" ? std::string("Entrada padrão") : HtmlText(file.Arquivo);
}

} // namespace

std::string THtmlReport::FileText(const TFileResult& file) const {
    return HtmlFile(file, options_);
}

void THtmlReport::AddFile(std::ostream&, const TFileSummary& file, std::string text) {
    if (size_ + text.size() > kMostBytes)
        text = fmt::format("<p class=\"veredito {}\">{}</p>\n<p class=\"fora\">O que há neste arquivo ficou "
                           "fora do relatório, que já é grande demais. Valide-o sozinho para vê-lo.</p>\n",
                           HtmlVerdictClass(file.Verdict), HtmlVerdict(file.Verdict));
    size_ += text.size();
    // What a file holds is escaped, so that only our own links read so.
    constexpr std::string_view kLink = "href=\"#";
    for (std::size_t at = text.find(kLink); at != std::string::npos; at = text.find(kLink, at)) {
        at += kLink.size();
        explained_.insert(text.substr(at, text.find('"', at) - at));
    }
    files_.push_back({file, std::move(text)});
}

void THtmlReport::End(std::ostream& out, const TReportTotals& totals) {
    const std::string title = files_.size() == 1 ? NameOfFile(files_.front().Summary)
                                                 : Counted(files_.size(), "arquivo", "arquivos");
    out << "<!DOCTYPE html>\n<html lang=\"pt-BR\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
           "'unsafe-inline'\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        << "<title>Validação TISS: " << title << "</title>\n<style>\n";
    for (const std::string_view style : HtmlStyle())
        out << style;
    out << "</style>\n</head>\n<body>\n<header>\n<h1>Relatório de validação TISS</h1>\n"
        << fmt::format("<p>{:%d/%m/%Y, %H:%M}. Conferix " CONFERIX_VERSAO ".</p>\n</header>\n<main>\n",
                       fmt::localtime(std::time(nullptr)));
    if (files_.size() > 1)
        WriteIndex(out, totals);
    for (std::size_t i = 0; i < files_.size(); ++i)
        out << fmt::format("<article class=\"arquivo\" id=\"arquivo-{}\">\n<h2>{}</h2>\n", i + 1,
                           NameOfFile(files_[i].Summary))
            << files_[i].Text << "</article>\n";
    WriteAppendix(out);
    out << "</main>\n<footer>\n<p>O relatório traz trechos dos arquivos, que podem ter dados de "
           "pacientes.</p>\n</footer>\n</body>\n</html>\n";
}

void THtmlReport::WriteIndex(std::ostream& out, const TReportTotals& totals) const {
    out << "<nav aria-labelledby=\"indice\">\n<h2 id=\"indice\">Arquivos</h2>\n"
        << fmt::format("<p>{}: {}, {}, {}.</p>\n", Counted(totals.Files(), "arquivo", "arquivos"),
                       Counted(totals.Of(TVerdict::Valid), "válido", "válidos"),
                       Counted(totals.Of(TVerdict::Invalid), "inválido", "inválidos"),
                       Counted(totals.Of(TVerdict::NotVerified), "não verificado", "não verificados"))
        << "<table class=\"indice\">\n<thead><tr><th scope=\"col\">Arquivo</th><th "
           "scope=\"col\">Resultado</th><th scope=\"col\">Erros</th><th "
           "scope=\"col\">Avisos</th></tr></thead>\n<tbody>\n";
    for (std::size_t i = 0; i < files_.size(); ++i) {
        const TFileSummary& file = files_[i].Summary;
        out << fmt::format("<tr><td><a href=\"#arquivo-{}\">{}</a></td><td class=\"{}\">{}</td><td>{}</td>"
                           "<td>{}</td></tr>\n",
                           i + 1, NameOfFile(file), HtmlVerdictClass(file.Verdict), HtmlVerdict(file.Verdict),
                           file.Counts.Failures(), file.Counts.Warnings());
    }
    out << "</tbody>\n</table>\n";
    if (!totals.Repeated().empty()) {
        out << "<h3>" << kRepeatedGuides << "</h3>\n<ul>\n";
        for (const std::string& text : RepeatedGuideTexts(totals.Repeated()))
            out << "<li>" << HtmlText(text) << "</li>\n";
        out << "</ul>\n";
    }
    out << "</nav>\n";
}

void THtmlReport::WriteAppendix(std::ostream& out) const {
    if (explained_.empty())
        return;
    out << "<section class=\"apendice\">\n<h2>Apêndice: as regras que acharam algo</h2>\n";
    for (const TRuleText& text : TRuleGuide::WithoutCommands().Texts()) {
        if (!explained_.contains(HtmlAnchor(text)))
            continue;
        out << fmt::format("<article id=\"{}\">\n<h3>{}</h3>\n<p>{}</p>\n", HtmlAnchor(text),
                           HtmlText(text.Title), HtmlText(text.ShortText));
        for (const TGuideSection& section : text.Sections)
            out << "<h4>" << HtmlText(section.Title) << "</h4>\n" << HtmlBlocks(section.Blocks);
        out << "<p class=\"nomes\">" << (text.Rules.size() == 1 ? "Regra:" : "Regras:");
        for (const std::string& rule : text.Rules)
            out << (&rule == &text.Rules.front() ? " <code>" : ", <code>") << HtmlText(rule) << "</code>";
        out << "</p>\n</article>\n";
    }
    out << "</section>\n";
}

} // namespace conferix
