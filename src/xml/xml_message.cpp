#include "xml/xml_message.h"

#include "xml/cut_text.h"

#include <fmt/format.h>

#include <atomic>
#include <random>

namespace conferix {

namespace {

std::atomic<std::uint64_t> nextNumber{1};

std::uint64_t ProcessMark() {
    static const std::uint64_t mark = [] {
        std::random_device source;
        return (static_cast<std::uint64_t>(source()) << 32U) | source();
    }();
    return mark;
}

/// Adds a bracketed part to a place, with a blank between the parts; an empty value adds nothing.
void AppendPart(std::string& place, std::string_view label, const std::string& value) {
    if (!value.empty())
        place += fmt::format("{}[{}: {}]", place.empty() ? "" : " ", label, CutText(value));
}

} // namespace

TSequentialId::TSequentialId() : number_(nextNumber.fetch_add(1, std::memory_order_relaxed)) {}

std::string TSequentialId::Text() const {
    const std::uint64_t mark = ProcessMark();
    return fmt::format("{{{:08X}-{:04X}-{:04X}-{:04X}-{:012X}}}", number_ & 0xFFFFFFFFU,
                       (number_ >> 32U) & 0xFFFFU, number_ >> 48U, mark >> 48U, mark & 0xFFFFFFFFFFFFU);
}

TXmlMessage::TXmlMessage(TMessageType type, std::string reason, std::string srcText, std::int32_t line,
                         std::int32_t linePos, std::int32_t filePos)
    : TXmlMessage(TMessageOrigin{}, type, std::move(reason), std::move(srcText), line, linePos, filePos) {}

TXmlMessage::TXmlMessage(TMessageOrigin origin, TMessageType type, std::string reason, std::string srcText,
                         std::int32_t line, std::int32_t linePos, std::int32_t filePos)
    : type_(type), line_(line), linePos_(linePos), filePos_(filePos), origin_(std::move(origin)),
      reason_(std::move(reason)), srcText_(std::move(srcText)) {}

TXmlMessage::~TXmlMessage() = default;

std::shared_ptr<TXmlMessage> TXmlMessage::CreateSuccess(std::string reason, std::string srcText,
                                                        std::int32_t line, std::int32_t linePos,
                                                        std::int32_t filePos) {
    return std::make_shared<TXmlMessage>(TMessageType::mtSuccess, std::move(reason), std::move(srcText), line,
                                         linePos, filePos);
}

std::shared_ptr<TXmlMessage> TXmlMessage::CreateInfo(std::string reason, std::string srcText,
                                                     std::int32_t line, std::int32_t linePos,
                                                     std::int32_t filePos) {
    return std::make_shared<TXmlMessage>(TMessageType::mtInformation, std::move(reason), std::move(srcText),
                                         line, linePos, filePos);
}

std::shared_ptr<TXmlMessage> TXmlMessage::CreateWarn(std::string reason, std::string srcText,
                                                     std::int32_t line, std::int32_t linePos,
                                                     std::int32_t filePos) {
    return std::make_shared<TXmlMessage>(TMessageType::mtWarning, std::move(reason), std::move(srcText), line,
                                         linePos, filePos);
}

std::shared_ptr<TXmlMessage> TXmlMessage::CreateError(std::string reason, std::string srcText,
                                                      std::int32_t line, std::int32_t linePos,
                                                      std::int32_t filePos) {
    return std::make_shared<TXmlMessage>(TMessageType::mtError, std::move(reason), std::move(srcText), line,
                                         linePos, filePos);
}

std::string TXmlMessage::Place() const {
    std::string place;
    if (line_ != 0)
        place = fmt::format("[Linha: {}]", line_);
    AppendPart(place, "Guia", NumeroGuia());
    AppendPart(place, "Campo", Campo());
    if (!item_.empty())
        place += (place.empty() ? "" : " ") + item_ + ':';
    return place;
}

std::string TXmlMessage::Msg() const {
    std::string text = Place();
    if (!text.empty())
        text += ' ';
    return text + reason_;
}

} // namespace conferix
