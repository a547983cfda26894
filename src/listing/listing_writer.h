// Listings as text, CSV, JSON, HTML and PDF.
#pragma once

#include "listing/listing.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// Formats of listings, the default first.
std::vector<std::string> ListingFormats();

/// Writes a listing in one of these formats. `colours`: of a terminal. Raises ENotListed where the format
/// cannot hold it: CSV is one table, which lots and monitoring files do not share.
void WriteListing(std::ostream& out, const TListing& listing, std::string_view format, bool colours);

/// A cell as people in Brazil write it: "1.234,56", "31/12/2026".
std::string CellText(const TListingCell& cell, TCellKind kind);
/// Appends it.
void AppendCellText(std::string& to, const TListingCell& cell, TCellKind kind);
/// A number as the cells of the kind, which is one of numbers, hold it.
std::string NumberText(double number, TCellKind kind);

/// What stands above totals over files: "Total de 2 arquivos", where there are several kinds of them "Total
/// de 2 lotes de guias".
std::string SumsTitle(const TListingSums& sums, bool only);
/// "2 lotes de guias"
std::string CountedFiles(const TListingSums& sums);
/// What is said under totals over files: that some could not be listed, and that some have notes.
std::vector<std::string> SumsNotes(const TListing& listing);

/// Columns that have something in them, 0-based.
std::vector<std::size_t> ShownColumns(const TFileListing& file);

// One format each.
void WriteListingText(std::ostream& out, const TListing& listing, bool colours);
void WriteListingCsv(std::ostream& out, const TListing& listing);
void WriteListingJson(std::ostream& out, const TListing& listing);
void WriteListingHtml(std::ostream& out, const TListing& listing);
void WriteListingPdf(std::ostream& out, const TListing& listing); ///< with a file that could be listed

} // namespace conferix
