#include "xml/bindings/xml_field.h"

#include "platform/format_settings.h"
#include "xml/cut_text.h"

#include <charconv>

namespace conferix {

std::string TXmlField::Shown() const {
    return CutText(Text(), kShownFound);
}

std::optional<double> TXmlField::Number() const {
    return node_ != nullptr ? ParseDecimal(node_->Value()) : std::nullopt;
}

std::optional<std::int64_t> TXmlField::Integer() const {
    std::string_view text = TrimXmlSpace(Text());
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

} // namespace conferix
