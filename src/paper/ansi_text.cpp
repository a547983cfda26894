#include "paper/ansi_text.h"

#include "platform/utf8.h"
#include "xml/xml_encoding.h"

namespace conferix {

void AppendAnsi(std::string& to, std::string_view text) {
    while (!text.empty()) {
        const std::size_t plain = FindNonAscii(text);
        to += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty())
            return;
        std::string_view rest = text;
        const char32_t c = TakeCharacter(rest);
        if (c >= 0xA0 && c <= 0xFF) // the same in both, and nearly all there is
            to += static_cast<char>(c);
        else
            to += EncodeAnsi(text.substr(0, text.size() - rest.size()));
        text = rest;
    }
}

} // namespace conferix
