#include "app/desktop/dialogs/report_print.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "platform/platform.h"
#include "report/report_writer.h"

#include <QBuffer>
#include <QFileInfo>
#include <QPageLayout>
#include <QPdfWriter>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QRegularExpression>
#include <QTextDocument>

#include <sstream>

namespace conferix {

namespace {

constexpr int kPdfDpi = 300;
constexpr QSize kPreviewSize(900, 680);
constexpr int kFontPoints = 9;

/// What of the report's own style a text document can show, for paper.
const auto kStyle = QStringLiteral(
    "h1 { font-size: 15pt; } h2 { font-size: 13pt; margin-top: 14pt; }"
    "h3 { font-size: 11pt; margin-top: 12pt; margin-bottom: 3pt; } h4 { font-size: 9.5pt; margin-top: 8pt; "
    "margin-bottom: 2pt; }"
    "p { margin-top: 2pt; margin-bottom: 2pt; } a { color: #000000; text-decoration: none; }"
    "code, pre { font-family: 'Liberation Mono', 'DejaVu Sans Mono', monospace; font-size: 8pt; }"
    "pre { background-color: #f2f2f2; margin-top: 2pt; margin-bottom: 4pt; white-space: pre-wrap; }"
    "th { font-weight: bold; text-align: left; padding-right: 10pt; } td { padding-right: 10pt; }"
    "mark { background-color: #dddddd; text-decoration: underline; }"
    ".veredito { font-size: 12pt; font-weight: bold; } .selo { font-weight: bold; }"
    ".numero { color: #555555; } .lugar, .nomes { color: #444444; }"
    ".invalido { color: #8c1d18; } .valido { color: #14512a; } .naoverificado { color: #5c3b00; }");

/// The text between two marks, marks included, taken out.
void Remove(QString& text, const QString& first, const QString& last) {
    const qsizetype start = text.indexOf(first);
    const qsizetype end = start < 0 ? -1 : text.indexOf(last, start);
    if (end >= 0)
        text.remove(start, end + last.size() - start);
}

/// What stands in the report for its own style, put as a text document knows it: lines of an excerpt end in
/// line breaks, labels and values are the cells of a table, a finding is a framed cell.
void TranslateLayout(QString& text) {
    const struct {
        const char* From;
        const char* To;
    } kParts[] = {
        {"</span></span><span class=\"linha", "</span></span>\n<span class=\"linha"},
        {"class=\"numero\">▶ ", "class=\"numero\">&gt; "},
        {"</span><span class=\"codigo\">", "</span>  <span class=\"codigo\">"},
        {"</span> <a href", "</span>: <a href"},
        {"<dl>", "<table cellspacing=\"0\" cellpadding=\"2\">"},
        {"<div><dt>", "<tr><td class=\"nomes\">"},
        {"</dt><dd>", "</td><td>"},
        {"</dd></div>", "</td></tr>"},
        {"</dl>", "</table>"},
    };
    for (const auto& part : kParts)
        text.replace(QString::fromUtf8(part.From), QString::fromUtf8(part.To));
    static const QRegularExpression finding(
        QStringLiteral("<article class=\"(achado[^\"]*)\">(.*?)</article>"),
        QRegularExpression::DotMatchesEverythingOption);
    text.replace(finding, QStringLiteral("<table class=\"\\1\" width=\"100%\" border=\"1\" cellspacing=\"0\" "
                                         "cellpadding=\"5\"><tr><td>\\2</td></tr></table><p></p>"));
}

QPageLayout Page() {
    return {QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(),
            QPageLayout::Millimeter}; // printing a text document leaves two centimetres
}

} // namespace

std::unique_ptr<QTextDocument> PrintableReport(std::string_view html) {
    QString text = ToQt(html);
    Remove(text, QStringLiteral("<style>"), QStringLiteral("</style>"));
    TranslateLayout(text);
    auto document = std::make_unique<QTextDocument>();
    QFont font(QStringLiteral("sans-serif"), kFontPoints);
    font.setStyleHint(QFont::SansSerif);
    document->setDefaultFont(font);
    document->setDefaultStyleSheet(kStyle);
    document->setHtml(text);
    return document;
}

std::unique_ptr<QTextDocument> PrintableReport(const TFileResult& file) {
    const std::unique_ptr<IReportWriter> writer = NewReportWriter("html", {});
    std::ostringstream out;
    TReportTotals totals(false);
    TFileSummary summary(file);
    // Where the file lies is nobody's business who gets the report.
    summary.Arquivo = FromQt(QFileInfo(ToQt(summary.Arquivo)).fileName());
    totals.Add(summary);
    writer->Begin(out);
    writer->AddFile(out, summary, writer->FileText(file));
    writer->End(out, totals);
    auto document = PrintableReport(out.str());
    document->setMetaInformation(QTextDocument::DocumentTitle,
                                 QStringLiteral("Validação de ") +
                                     QFileInfo(ToQt(file.Validation.FileName)).fileName());
    return document;
}

void PrintReport(QWidget* owner, const TFileResult& file) {
    const std::unique_ptr<QTextDocument> document = PrintableReport(file);
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageLayout(Page());
    printer.setDocName(document->metaInformation(QTextDocument::DocumentTitle));
    QPrintPreviewDialog preview(&printer, owner);
    preview.resize(kPreviewSize);
    preview.setWindowTitle(QStringLiteral("Imprimir relatório"));
    QObject::connect(&preview, &QPrintPreviewDialog::paintRequested,
                     [&](QPrinter* paper) { document->print(paper); });
    preview.exec();
}

void SaveReportPdf(const TFileResult& file, const std::filesystem::path& pdf) {
    const std::unique_ptr<QTextDocument> document = PrintableReport(file);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setPageLayout(Page());
        writer.setResolution(kPdfDpi);
        writer.setTitle(document->metaInformation(QTextDocument::DocumentTitle));
        writer.setCreator(QStringLiteral("Conferix"));
        document->print(&writer);
    } // what is missing is written at its end
    WriteFileAtomically(pdf, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

bool AskAndSaveReportPdf(QWidget* owner, const TFileResult& file) {
    const QString title = QStringLiteral("Salvar relatório em PDF");
    const QFileInfo source(ToQt(file.Validation.FileName));
    const QString name = AskForSaveName(
        owner, title, source.path() + QLatin1Char('/') + source.completeBaseName() + QStringLiteral(".pdf"),
        QStringLiteral("PDF (*.pdf)"), QStringLiteral("pdf"));
    if (name.isEmpty())
        return false;
    try {
        SaveReportPdf(file, PathFromText(FromQt(name)));
        return true;
    } catch (const EFileNotWritten& error) {
        ShowFailure(owner, title, error.what());
    }
    return false;
}

} // namespace conferix
