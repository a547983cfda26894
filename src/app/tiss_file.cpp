#include "app/tiss_file.h"

#include "model/arquivo_tiss_factory.h"
#include "platform/platform.h"

namespace conferix {

TTissFile TTissFile::Read(const std::filesystem::path& file) {
    return TTissFile(ReadWholeFile(file));
}

TTissFile::TTissFile(std::string bytes) {
    TXmlText decoded = TakeXml(bytes);
    encoding_ = std::move(decoded.Encoding);
    text_ = std::make_shared<const std::string>(std::move(decoded.Text));
    bytes_ = bytes.empty() ? text_ : std::make_shared<const std::string>(std::move(bytes));
}

TTissFile TTissFile::WithText(std::shared_ptr<const std::string> text) const {
    return text == text_ || *text == *text_ ? *this : TTissFile(std::move(text), encoding_);
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

void TTissFile::Write(const std::filesystem::path& file) const {
    WriteFileAtomically(file, Bytes());
}

} // namespace conferix
