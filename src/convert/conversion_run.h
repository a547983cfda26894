// What a conversion was asked for, and what it has to tell.
#pragma once

#include "xml/xml_node.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A file that cannot be converted as asked; the text says why.
class EConversionNotSupported : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Weight of a note.
enum class TConversionNoteType : std::uint8_t {
    ntLoss,    ///< a value that the target version has no place for
    ntPending, ///< what a person has to fill in or decide
    ntChange   ///< a value that was moved, written in another way or filled in
};

/// One thing that a conversion did to a document, or left open.
struct TConversionNote {
    TConversionNoteType Type = TConversionNoteType::ntChange;
    std::string Step;    ///< as "3.05.00 -> 4.00.00"
    std::string Guia;    ///< provider's number of the guide; empty outside guides
    int Line = 0;        ///< 1-based, of the file that was read; of the parent for what is new
    std::string Element; ///< path below the guide, or below the document element
    std::string Value;   ///< the value before; of what is new, the value itself
    std::string Text;    ///< what the user reads; the same for notes of one cause
    /// The element at fault; of a missing one, its parent. In the tree of the converted file; null for a
    /// note that speaks of more than the element.
    const TXmlNode* Node = nullptr;
};

using TConversionNotes = std::vector<TConversionNote>;

/// Answers that a conversion needs from a person beforehand.
struct TConversionOptions {
    /// Attendance regime for guides that must name one from 4.00.00 on: "01" to "05". Empty: left open.
    std::string RegimeAtendimento;
};

/// The attendance regimes of terminology table 76.
struct TRegimeAtendimento {
    std::string_view Codigo;
    std::string_view Description;
};
inline constexpr TRegimeAtendimento kRegimesAtendimento[] = {{"01", "Ambulatorial"},
                                                             {"02", "Domiciliar"},
                                                             {"03", "Internação"},
                                                             {"04", "Pronto Socorro"},
                                                             {"05", "Telessaúde"}};

/// One run of a conversion: its options and its notes. The notes point into the tree that is converted.
class TConversionRun {
  public:
    explicit TConversionRun(TConversionOptions options = {}) : options_(std::move(options)) {}

    const TConversionOptions& Options() const { return options_; }
    const TConversionNotes& Notes() const { return notes_; }
    TConversionNotes& Notes() { return notes_; }
    TConversionNotes TakeNotes() { return std::move(notes_); }
    /// The steps begun so far, as "3.05.00 -> 4.00.00".
    const std::vector<std::string>& Steps() const { return steps_; }

    /// The notes that follow are of this step.
    void StartStep(std::string_view from, std::string_view to);
    /// A note on an element that stands in the tree, with its value.
    void Add(TConversionNoteType type, const TXmlNode& node, std::string text);
    /// The same with another value than the element's; answers the note until the next one comes.
    TConversionNote& Add(TConversionNoteType type, const TXmlNode& node, std::string value, std::string text);
    /// A note on something below an element that is no element of the tree, such as a missing child.
    void AddBelow(TConversionNoteType type, const TXmlNode& parent, std::string_view name, std::string value,
                  std::string text);
    /// A note of loss on each attribute and each text of an element that is removed, and of all below it; on
    /// the element's own text only with `ownText`. An empty element without children has a note as well.
    void AddLosses(const TXmlNode& element, const std::string& text, bool ownText);

  private:
    TConversionNote MakeNote(TConversionNoteType type, const TXmlNode& node) const;

    TConversionOptions options_;
    TConversionNotes notes_;
    std::vector<std::string> steps_;
};

/// The guide that holds an element, or is it; null outside guides.
const TXmlNode* GuideOf(const TXmlNode& node);
/// Provider's number of a guide; empty when absent.
std::string_view GuideNumber(const TXmlNode& guide);
/// Names from below the guide, or below the document element, down to an element, joined by "/".
std::string ElementPath(const TXmlNode& node);
/// Line of an element, or of the nearest one around it that the file held.
int SourceLine(const TXmlNode& node);

} // namespace conferix
