// The report on a file on paper.
#pragma once

#include "app/file_validation.h"

#include <QByteArray>
#include <QString>

#include <filesystem>
#include <memory>
#include <string_view>

class QPagedPaintDevice;
class QTextDocument;
class QWidget;

namespace conferix {

/// A report in HTML, as THtmlReport writes it, as a document of Qt, which knows a part of HTML and of its
/// styles alone.
std::unique_ptr<QTextDocument> PrintableReport(std::string_view html);
/// The report on one file: what is wrong guide by guide, and what the rules demand that found it.
std::unique_ptr<QTextDocument> PrintableReport(const TFileResult& file);

/// The report laid out on the pages of a paper: a heading stays on the page of what it heads, and what takes
/// little room is not parted.
std::unique_ptr<QTextDocument> Paginated(const QTextDocument& report, QPagedPaintDevice& paper);
/// Prints a report, each page with its number.
void Print(const QTextDocument& report, QPagedPaintDevice& paper);

/// Shows the report as it will be printed, from where it is printed.
void PrintReport(QWidget* owner, const TFileResult& file);
/// Writes the report as a PDF. Raises EFileNotWritten.
void SaveReportPdf(const TFileResult& file, const std::filesystem::path& pdf);
/// Asks for a name and writes the report as a PDF; what goes wrong is told.
bool AskAndSaveReportPdf(QWidget* owner, const TFileResult& file);

} // namespace conferix
