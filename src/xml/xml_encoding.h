#pragma once

#include "xml/xml_message.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace conferix {

/// How the bytes of an XML file hold its text.
struct TXmlEncoding {
    std::string Name = "UTF-8"; ///< as the converter knows it
    bool Bom = false;           ///< a byte-order mark stands before the text
};

/// Bytes that are no text in the encoding that the file names, or a text that an encoding cannot hold.
class EXmlEncoding : public std::runtime_error {
  public:
    explicit EXmlEncoding(std::shared_ptr<const TXmlMessage> message);
    /// The finding with its line, for lists of messages.
    const std::shared_ptr<const TXmlMessage>& Message() const { return message_; }

  private:
    std::shared_ptr<const TXmlMessage> message_;
};

/// A decoded file: its text in UTF-8 without byte-order mark, and how it was held.
struct TXmlText {
    std::string Text;
    TXmlEncoding Encoding;
};

/// Decodes by byte-order mark, else by the XML declaration, else as UTF-8; compressed files, PDFs and the
/// like are refused by what they are. ISO-8859-1 is read as Windows-1252, which holds the same letters and
/// gives every byte back when written. Raises EXmlEncoding with the line of the first byte that does not
/// decode.
TXmlText DecodeXml(std::string bytes);

/// The same without a copy: bytes that are the text themselves are taken over and leave `bytes` empty; else
/// it stays as it is.
TXmlText TakeXml(std::string& bytes);

/// Doubts about the encoding in which a file was read: a byte-order mark against the declaration, or letters
/// that were written in UTF-8 under another declaration. Warnings, none when all agrees.
TXmlMessages CheckEncoding(std::string_view text, const TXmlEncoding& encoding);

/// Encodes a text for a file: in the encoding of its byte-order mark when it had one, else in the one that
/// the text's own XML declaration names (UTF-8 without one). A character that the encoding does not hold
/// is written as a numeric reference in text and attribute values; elsewhere EXmlEncoding is raised.
std::string EncodeXml(std::string_view text, const TXmlEncoding& original);

/// Bytes of a text in Windows-1252, "?" for what it does not hold.
std::string EncodeAnsi(std::string_view text);

/// The encoding that the XML declaration of a text names, also when white space stands before it; empty
/// without one.
std::string_view DeclaredEncoding(std::string_view text);

} // namespace conferix
