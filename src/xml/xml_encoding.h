#pragma once

#include "xml/xml_message.h"
#include "xml/xml_position.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace conferix {

/// How the bytes of an XML file hold its text.
struct TXmlEncoding {
    std::string Name = "UTF-8"; ///< as the converter knows it
    bool Bom = false;           ///< a byte-order mark stands before the text
    /// Why the bytes are no text in the encoding that the file declares, where they were read in another
    /// one all the same; null else.
    std::shared_ptr<const TXmlMessage> Fault;
    bool Mixed = false; ///< with a Fault: letters in UTF-8 stand beside others in Windows-1252
    bool Once = false;  ///< seen while decoding: no letters of the text can be UTF-8 once more
};

/// What becomes of bytes that are no text in the declared encoding.
enum class TXmlUndecodable {
    Refused,
    /// Read as what they seem to be, with TXmlEncoding::Fault, where that is beyond doubt: as Windows-1252
    /// where UTF-8 is declared (or nothing, or a mark says so) and none of the letters is UTF-8, as either
    /// where ASCII is, or UTF-16 which it is not; each as what it is where letters of both stand side by
    /// side, all of them usual; as UTF-8 where the bytes are nothing in another encoding.
    Guessed
};

/// Bytes that are no text in the encoding that the file names, or a text that an encoding cannot hold.
class EXmlEncoding : public std::runtime_error {
  public:
    explicit EXmlEncoding(std::shared_ptr<const TXmlMessage> message);
    /// Several findings, at least one; the first stands for all where only one is shown.
    explicit EXmlEncoding(TXmlMessages messages);
    /// The finding with its line, for lists of messages.
    const std::shared_ptr<const TXmlMessage>& Message() const { return messages_.front(); }
    const TXmlMessages& Messages() const { return messages_; }

  private:
    TXmlMessages messages_;
};

/// A decoded file: its text in UTF-8 without byte-order mark, and how it was held.
struct TXmlText {
    std::string Text;
    TXmlEncoding Encoding;
};

/// Decodes by byte-order mark, else by the XML declaration, else as UTF-8; compressed files, PDFs and the
/// like are refused by what they are. ISO-8859-1 is read as Windows-1252, which holds the same letters and
/// gives every byte back when written. Besides UTF-8 and UTF-16 the single-byte encodings ISO-8859,
/// Windows-125x, IBM850 and Macintosh are accepted. Raises EXmlEncoding for any other, and with the line of
/// the first byte that does not decode.
TXmlText DecodeXml(std::string bytes, TXmlUndecodable undecodable = TXmlUndecodable::Refused);

/// The same without a copy: bytes that are the text themselves are taken over and leave `bytes` empty; else
/// it stays as it is.
TXmlText TakeXml(std::string& bytes, TXmlUndecodable undecodable = TXmlUndecodable::Refused);

/// A file that was read in another encoding than the one in which it was written, or that others may read so.
struct TXmlMisreading {
    enum class TKind : std::uint8_t {
        Utf8AsOneByte,         ///< its letters are UTF-8, the declaration says an encoding of one byte each
        Utf8Twice,             ///< its letters, once read as UTF-8, are UTF-8 again in Windows-1252
        Guessed,               ///< TXmlEncoding::Fault
        BomAgainstDeclaration, ///< byte-order mark, or bytes of UTF-16, and declaration are of two encodings
    };
    TKind Kind;
    std::string Declared;      ///< encoding; empty for none
    std::string Page;          ///< as the converter knows it: in which the letters are UTF-8; empty for none
    std::string Read;          ///< the first word with such letters, as read
    std::string Meant;         ///< the same as it was meant
    TXmlPlace Place;           ///< of its first such letter
    std::string Kept;          ///< the first word that was read as it was meant all the same; empty for none
    std::int32_t KeptLine = 0; ///< 1-based
    bool Partly = false;       ///< what was misread is not most of it
    int Again = 0;             ///< how often the letters that were meant were written in UTF-8 once more

    /// True where the letters were misread, so that the text is not the one that was meant.
    bool OfLetters() const { return !Page.empty(); }
};
std::optional<TXmlMisreading> FindMisreading(std::string_view text, const TXmlEncoding& encoding);
/// The text that was meant, or the part of it that a part of the text stands for.
std::string MeantText(std::string_view text, const TXmlMisreading& misreading);
/// Each word of a text that is not as it was meant, as a piece of information with the word that was.
TXmlMessages WordsToChange(std::string_view text, const TXmlMisreading& misreading);

/// Encodes a text for a file: in the encoding of its byte-order mark when it had one, else in the one that
/// the text's own XML declaration names (UTF-8 without one). A character that the encoding does not hold
/// is written as a numeric reference in text and attribute values; elsewhere EXmlEncoding is raised, as it is
/// where the bytes would not be read as the same text again.
std::string EncodeXml(std::string_view text, const TXmlEncoding& original);
/// How EncodeXml holds a text.
TXmlEncoding EncodingToWrite(std::string_view text, const TXmlEncoding& original);

/// A text for another encoding.
struct TXmlRecoding {
    std::string Text;      ///< declares the encoding
    TXmlMessages Replaced; ///< a piece of information a character that became a numeric reference
};
/// Prepares a text to be written in UTF-8 or an encoding of one byte a character, ISO-8859-1 strictly
/// (without Windows-1252's signs), without byte-order mark: what that does not hold becomes a numeric
/// reference in text and attribute values; where it stands elsewhere, EXmlEncoding is raised with each of
/// those places, then those of the others.
TXmlRecoding RecodeXml(std::string_view text, std::string_view encoding);

/// Bytes of a text in Windows-1252, "?" for what it does not hold.
std::string EncodeAnsi(std::string_view text);

/// The encoding that the XML declaration of a text names, also when white space stands before it; empty
/// without one.
std::string_view DeclaredEncoding(std::string_view text);
/// The text from its XML declaration on, without the white space before it; the whole text where no
/// declaration begins it.
std::string_view FromDeclaration(std::string_view text);
/// The version of XML that the declaration of a text names; empty without one.
std::string_view DeclaredVersion(std::string_view text);
/// The same text with a declaration that names an encoding.
std::string DeclareEncoding(std::string_view text, std::string_view encoding);

} // namespace conferix
