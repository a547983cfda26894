#include "app/tiss_file.h"

#include "model/arquivo_tiss_factory.h"
#include "platform/whole_path.h"

namespace conferix {

namespace {

/// True for two names of one place, whether or not there is a file.
bool IsSamePlace(const std::filesystem::path& one, const std::filesystem::path& other) {
    return one == other || (!one.empty() && CanonicalPath(one) == CanonicalPath(other));
}

} // namespace

TTissFile TTissFile::Read(const std::filesystem::path& file, TXmlUndecodable undecodable) {
    std::optional<TFileStamp> stamp;
    TTissFile read(ReadWholeFile(file, kMaxFileBytes, &stamp), undecodable);
    read.origin_ = {file, stamp};
    return read;
}

TTissFile TTissFile::ReadText(const std::filesystem::path& file, TXmlUndecodable undecodable) {
    std::optional<TFileStamp> stamp;
    TXmlText decoded = DecodeXml(ReadWholeFile(file, kMaxFileBytes, &stamp), undecodable);
    return {std::make_shared<const std::string>(std::move(decoded.Text)),
            std::move(decoded.Encoding),
            {file, stamp}};
}

TTissFile::TTissFile(std::string bytes, TXmlUndecodable undecodable) {
    TXmlText decoded = TakeXml(bytes, undecodable);
    encoding_ = std::move(decoded.Encoding);
    text_ = std::make_shared<const std::string>(std::move(decoded.Text));
    bytes_ = bytes.empty() ? text_ : std::make_shared<const std::string>(std::move(bytes));
}

TTissFile TTissFile::WithText(std::shared_ptr<const std::string> text) const {
    return text == text_ || *text == *text_ ? *this : TTissFile(std::move(text), encoding_, origin_);
}

TTissFile TTissFile::WithText(std::shared_ptr<const std::string> text, const TXmlEncoding& encoding) const {
    const bool same =
        encoding.Name == encoding_.Name && encoding.Bom == encoding_.Bom && encoding.Fault == encoding_.Fault;
    return same ? WithText(std::move(text)) : TTissFile(std::move(text), encoding, origin_);
}

TTissFile TTissFile::WithText(std::string text) const {
    return WithText(std::make_shared<const std::string>(std::move(text)));
}

std::string TTissFile::Bytes() const {
    return bytes_ != nullptr ? *bytes_ : EncodeXml(*text_, encoding_);
}

std::shared_ptr<IArquivoTiss> TTissFile::Load() const {
    const TXmlParseResult parsed = Parse();
    if (parsed.Document == nullptr)
        throw EXmlNotParsed(parsed.Messages.front()->Msg());
    return TArquivoTissFactory().GetNewArquivoTiss(parsed.Document);
}

void TTissFile::Write(const std::filesystem::path& file, const std::filesystem::path& copy) const {
    WriteFileAtomically(file, Bytes(), IsSamePlace(origin_.File, file) ? origin_.Stamp : std::nullopt, copy);
}

std::filesystem::path TTissFile::WriteBeside(const std::filesystem::path& file) const {
    std::filesystem::path beside = FreeName(file, ".conferix-novo");
    WriteCopyAtomically(beside, Bytes(), file);
    return beside;
}

} // namespace conferix
