// Texts on their way between the program, in UTF-8, and Qt.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace conferix {

inline QString Q(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string Utf8(const QString& text) {
    return text.toStdString();
}

} // namespace conferix
