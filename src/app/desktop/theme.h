// Colours and icons that follow the system's light or dark theme.
#pragma once

#include "xml/xml_message.h"

#include <QColor>
#include <QIcon>
#include <QPalette>
#include <QString>

namespace conferix {

/// True for a palette of light letters on a dark ground.
bool IsDark(const QPalette& palette);

/// Colours of the editor and of severities, readable on the palette's ground.
struct TThemeColors {
    QColor Tag;
    QColor Attribute;
    QColor Value;
    QColor Comment;
    QColor Entity;
    QColor MarginText;
    QColor Margin;
    QColor CurrentLine;
    QColor MatchingTag;
    QColor Found;
    QColor Removed; ///< ground of lines that go
    QColor Added;   ///< ground of lines that come
};
TThemeColors ColorsOf(const QPalette& palette);
QColor SeverityColor(TMessageType type, const QPalette& palette);

/// One of the program's icons, drawn at any size in the colour of the text around it.
QIcon IconOf(const QString& name);
/// The program's own picture.
QIcon ProgramIcon();
/// The icon of a severity, told apart by its shape too.
QIcon SeverityIcon(TMessageType type);
/// "Erro", "Aviso"...
QString SeverityName(TMessageType type);

} // namespace conferix
