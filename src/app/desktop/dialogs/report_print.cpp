#include "app/desktop/dialogs/report_print.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "app/missing_data.h"
#include "platform/platform.h"
#include "report/report_writer.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPageLayout>
#include <QPageRanges>
#include <QPainter>
#include <QPdfWriter>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QRegularExpression>
#include <QScreen>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextTable>

#include <sstream>
#include <utility>

namespace conferix {

namespace {

constexpr int kPdfDpi = 300;
constexpr QSize kPreviewSize(900, 680);
constexpr int kFontPoints = 9;
constexpr int kFooterPoints = 7;
constexpr double kMarginInches = 2 / 2.54;
/// Part of a page; what takes less is not parted.
constexpr double kKeptWhole = 0.5;

/// What of the report's own style a text document can show, for paper; of distances it knows pixels alone.
const auto kStyle = QStringLiteral(
    "h1 { font-size: 15pt; } h2 { font-size: 13pt; margin-top: 19px; }"
    "h3 { font-size: 11pt; margin-top: 16px; margin-bottom: 4px; } h4 { font-size: 9.5pt; margin-top: 11px; "
    "margin-bottom: 3px; }"
    "p { margin-top: 3px; margin-bottom: 3px; } a { color: #000000; text-decoration: none; }"
    "code, pre { font-family: 'Liberation Mono', 'DejaVu Sans Mono', monospace; font-size: 8pt; }"
    "pre { background-color: #f2f2f2; margin-top: 3px; margin-bottom: 5px; white-space: pre-wrap; }"
    "th { font-weight: bold; text-align: left; padding-right: 13px; } td { padding-right: 13px; }"
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

bool IsHeading(const QTextBlock& block) {
    return block.isValid() && block.blockFormat().headingLevel() > 0;
}

/// Moves what would be torn from page to page, from the first page on.
class TPageBreaks {
  public:
    explicit TPageBreaks(QTextDocument& report) : report_(report), height_(report.pageSize().height()) {}

    void Set() {
        for (QTextBlock block = report_.begin(); block.isValid(); block = block.next())
            if (IsTorn(block))
                BreakBefore(block);
    }

  private:
    QRectF RectOf(const QTextBlock& block) const {
        return report_.documentLayout()->blockBoundingRect(block);
    }
    /// 0-based.
    int PageAt(double y) const { return static_cast<int>(y / height_); }
    int FirstPageOf(const QTextBlock& block) const {
        // The first line: a block that is broken begins at the end of a page, its line on the next.
        const QTextLayout* const lines = block.layout();
        return PageAt(RectOf(block).top() +
                      (lines->lineCount() > 0 ? lines->lineAt(0).rect().bottom() - 1 : 0));
    }
    /// True of a heading without what it heads, and of the beginning of a frame that has room on one page.
    bool IsTorn(const QTextBlock& block) const {
        if (IsHeading(block) && block.next().isValid() && FirstPageOf(block.next()) != FirstPageOf(block))
            return true;
        const QTextTable* const table = QTextCursor(block).currentTable();
        if (table == nullptr || table->firstCursorPosition().block() != block)
            return false;
        const QRectF whole = report_.documentLayout()->frameBoundingRect(const_cast<QTextTable*>(table));
        return whole.height() < kKeptWhole * height_ && PageAt(whole.top()) != PageAt(whole.bottom() - 1);
    }
    /// What begins with the block starts a new page, together with the headings before it.
    void BreakBefore(QTextBlock block) {
        QTextTable* table = QTextCursor(block).currentTable();
        for (;;) {
            const QTextBlock before =
                table != nullptr ? report_.findBlock(table->firstPosition() - 1) : block.previous();
            if (!IsHeading(before) || before == block)
                break;
            block = before;
            table = QTextCursor(block).currentTable();
        }
        if (table != nullptr) {
            QTextTableFormat format = table->format();
            format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
            table->setFormat(format);
        } else {
            QTextBlockFormat format;
            format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
            QTextCursor(block).mergeBlockFormat(format);
        }
    }

    QTextDocument& report_;
    double height_;
};

} // namespace

std::unique_ptr<QTextDocument> Paginated(const QTextDocument& report, QPagedPaintDevice& paper) {
    std::unique_ptr<QTextDocument> pages(report.clone());
    pages->documentLayout()->setPaintDevice(&paper);
    pages->setPageSize(QSizeF(paper.width(), paper.height()));
    QTextFrameFormat frame = pages->rootFrame()->frameFormat();
    // Lengths of formats are those of the screen, and scaled to the paper.
    frame.setMargin(kMarginInches * QGuiApplication::primaryScreen()->logicalDotsPerInchY());
    pages->rootFrame()->setFrameFormat(frame);
    TPageBreaks(*pages).Set();
    return pages;
}

void Print(const QTextDocument& report, QPagedPaintDevice& paper) {
    const std::unique_ptr<QTextDocument> pages = Paginated(report, paper);
    const double margin = kMarginInches * paper.logicalDpiY();
    const QRectF page(QPointF(0, 0), pages->pageSize());
    const QRectF footer(margin, page.height() - margin * 0.7, page.width() - 2 * margin, margin * 0.4);
    const QPageRanges wanted = paper.pageRanges();
    const int count = pages->pageCount();
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, Qt::black); // whatever the screen's theme
    QPainter painter(&paper);
    bool begun = false;
    for (int number = 1; number <= count; ++number) {
        if (!wanted.isEmpty() && !wanted.contains(number))
            continue;
        if (std::exchange(begun, true))
            paper.newPage();
        context.clip = page.translated(0, (number - 1) * page.height());
        painter.save();
        painter.translate(0, -context.clip.top());
        painter.setClipRect(context.clip);
        pages->documentLayout()->draw(&painter, context);
        painter.restore();
        painter.setFont(QFont(report.defaultFont().family(), kFooterPoints));
        painter.setPen(Qt::darkGray);
        painter.drawText(footer, Qt::AlignLeft, report.metaInformation(QTextDocument::DocumentTitle));
        painter.drawText(footer, Qt::AlignRight, QStringLiteral("página %1 de %2").arg(number).arg(count));
    }
}

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
    auto document = PrintableReport(TextForWindow(out.str()));
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
                     [&](QPrinter* paper) { Print(*document, *paper); });
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
        Print(*document, writer);
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
