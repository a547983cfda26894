// The one way in and out of a file of the standard.
#pragma once

#include "model/arquivo_tiss.h"
#include "platform/platform.h"
#include "validation/encoding_findings.h"
#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace conferix {

/// A text that is no well-formed XML; the text of the error is the parser's first finding.
class EXmlNotParsed : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The file that a content was read from, as it was then.
struct TFileOrigin {
    std::filesystem::path File;      ///< empty for what came from elsewhere
    std::optional<TFileStamp> Stamp; ///< none for a pipe or device

    /// The file as it is now.
    static TFileOrigin Of(const std::filesystem::path& file) { return {file, StampOf(file)}; }
};

/// The content of a file: its bytes, the text that they hold and in which encoding, and the document that the
/// text stands for. A value: copies share what was read.
class TTissFile {
  public:
    /// Reads a file whole. Raises EFileNotRead, EXmlEncoding.
    static TTissFile Read(const std::filesystem::path& file,
                          TXmlUndecodable undecodable = TXmlUndecodable::Refused);
    /// The same for who needs the text alone: takes half the memory where the bytes are not in UTF-8, and
    /// makes them anew when they are asked for.
    static TTissFile ReadText(const std::filesystem::path& file,
                              TXmlUndecodable undecodable = TXmlUndecodable::Refused);
    /// Bytes that came from elsewhere, such as standard input. Raises EXmlEncoding.
    explicit TTissFile(std::string bytes, TXmlUndecodable undecodable = TXmlUndecodable::Refused);
    /// A text in UTF-8 that is to be held as `encoding` says.
    TTissFile(std::shared_ptr<const std::string> text, TXmlEncoding encoding, TFileOrigin source = {})
        : text_(std::move(text)), encoding_(std::move(encoding)), origin_(std::move(source)) {}

    /// The same file with another text, held in the same way.
    TTissFile WithText(std::shared_ptr<const std::string> text) const;
    TTissFile WithText(std::string text) const;
    /// The same, held in another way.
    TTissFile WithText(std::shared_ptr<const std::string> text, const TXmlEncoding& encoding) const;

    /// The text in UTF-8, without byte-order mark.
    const std::shared_ptr<const std::string>& Text() const { return text_; }
    const TXmlEncoding& Encoding() const { return encoding_; }
    const TFileOrigin& Origin() const { return origin_; }
    /// The bytes that were read; of another text those that hold it. Raises EXmlEncoding for a text that the
    /// encoding cannot hold.
    std::string Bytes() const;
    /// How the text was misread; nothing where it was not.
    std::optional<TXmlMisreading> Misreading() const { return FindMisreading(*text_, encoding_); }

    /// A document of its own at every call, since corrections and conversions change it.
    TXmlParseResult Parse() const { return TXmlParser::Parse(text_); }
    /// The same, identified. Raises EXmlNotParsed, ETissException.
    std::shared_ptr<IArquivoTiss> Load() const;

    /// Replaces a file by Bytes() in one step; what is replaced is kept under `copy`, unless that is empty.
    /// Raises EFileNotWritten, EXmlEncoding; EFileChanged where it is the source and no longer what was read.
    void Write(const std::filesystem::path& file, const std::filesystem::path& copy = {}) const;
    /// Writes Bytes() under a free name beside a file that somebody else has changed, and answers where.
    /// Raises EFileNotWritten, EXmlEncoding.
    std::filesystem::path WriteBeside(const std::filesystem::path& file) const;

  private:
    std::shared_ptr<const std::string> bytes_; ///< null for a text that was not read
    std::shared_ptr<const std::string> text_;
    TXmlEncoding encoding_;
    TFileOrigin origin_;
};

} // namespace conferix
