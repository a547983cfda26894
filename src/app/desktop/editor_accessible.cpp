#include "app/desktop/editor_accessible.h"

#include "app/desktop/xml_editor.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include <algorithm>

namespace conferix {

namespace {

constexpr long kUnits = TXmlEditor::SC_LINECHARACTERINDEX_UTF16;

/// Offsets are in units of UTF-16 from the start of the text, positions in bytes. The editor keeps an index
/// of its lines, so that neither is counted from the start.
class TEditorAccessible : public QAccessibleWidget,
                          public QAccessibleTextInterface,
                          public QAccessibleEditableTextInterface {
  public:
    explicit TEditorAccessible(TXmlEditor* editor)
        : QAccessibleWidget(editor, QAccessible::EditableText), editor_(editor) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface*>(this);
        if (type == QAccessible::EditableTextInterface)
            return static_cast<QAccessibleEditableTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.multiLine = true;
        state.selectableText = true;
        state.editable = !editor_->isReadOnly();
        state.readOnly = editor_->isReadOnly();
        return state;
    }
    using QAccessibleWidget::text; // name and description

    int OffsetOf(long position) const {
        CountCharacters(*editor_);
        const long line = Send(TXmlEditor::SCI_LINEFROMPOSITION, position);
        const long start = Send(TXmlEditor::SCI_POSITIONFROMLINE, line);
        return static_cast<int>(Send(TXmlEditor::SCI_INDEXPOSITIONFROMLINE, line, kUnits) +
                                Send(TXmlEditor::SCI_COUNTCODEUNITS, start, position));
    }

    void selection(int /*index*/, int* start, int* end) const override {
        *start = OffsetOf(Send(TXmlEditor::SCI_GETSELECTIONSTART));
        *end = OffsetOf(Send(TXmlEditor::SCI_GETSELECTIONEND));
    }
    int selectionCount() const override { return Send(TXmlEditor::SCI_GETSELECTIONEMPTY) != 0 ? 0 : 1; }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int /*index*/) override {
        Send(TXmlEditor::SCI_SETEMPTYSELECTION, Send(TXmlEditor::SCI_GETCURRENTPOS));
    }
    void setSelection(int /*index*/, int start, int end) override {
        Send(TXmlEditor::SCI_SETSEL, PositionOf(start), PositionOf(end));
    }

    int cursorPosition() const override { return OffsetOf(Send(TXmlEditor::SCI_GETCURRENTPOS)); }
    void setCursorPosition(int offset) override { Send(TXmlEditor::SCI_GOTOPOS, PositionOf(offset)); }

    QString text(int start, int end) const override {
        const long from = PositionOf(start);
        return Text(from, end < 0 ? Send(TXmlEditor::SCI_GETLENGTH) : std::max(from, PositionOf(end)));
    }
    QString textAtOffset(int offset, QAccessible::TextBoundaryType unit, int* start,
                         int* end) const override {
        return Unit(PositionOf(offset), unit, start, end);
    }
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType unit, int* start,
                             int* end) const override {
        Unit(PositionOf(offset), unit, start, end);
        if (*start == 0)
            return Text(0, 0);
        return Unit(PositionOf(*start - 1), unit, start, end);
    }
    QString textAfterOffset(int offset, QAccessible::TextBoundaryType unit, int* start,
                            int* end) const override {
        Unit(PositionOf(offset), unit, start, end);
        return Unit(PositionOf(*end), unit, start, end);
    }
    int characterCount() const override { return OffsetOf(Send(TXmlEditor::SCI_GETLENGTH)); }

    QRect characterRect(int offset) const override {
        const long position = PositionOf(offset);
        const long next = Send(TXmlEditor::SCI_POSITIONAFTER, position);
        const auto x = [this](long of) { return SendSecond(TXmlEditor::SCI_POINTXFROMPOSITION, of); };
        const QPoint corner(static_cast<int>(x(position)),
                            static_cast<int>(SendSecond(TXmlEditor::SCI_POINTYFROMPOSITION, position)));
        return {editor_->viewport()->mapToGlobal(corner),
                QSize(std::max(1, static_cast<int>(x(next) - x(position))), editor_->textHeight(0))};
    }
    int offsetAtPoint(const QPoint& point) const override {
        const QPoint place = editor_->viewport()->mapFromGlobal(point);
        return OffsetOf(Send(TXmlEditor::SCI_POSITIONFROMPOINT, place.x(), place.y()));
    }
    void scrollToSubstring(int start, int end) override {
        Send(TXmlEditor::SCI_SCROLLRANGE, PositionOf(start), PositionOf(end));
    }
    QString attributes(int offset, int* start, int* end) const override {
        Unit(PositionOf(offset), QAccessible::LineBoundary, start, end);
        return {};
    }

    void deleteText(int start, int end) override { replaceText(start, end, {}); }
    void insertText(int offset, const QString& text) override { replaceText(offset, offset, text); }
    void replaceText(int start, int end, const QString& text) override {
        const QByteArray bytes = text.toUtf8();
        Send(TXmlEditor::SCI_SETTARGETRANGE, PositionOf(start), PositionOf(end));
        editor_->SendScintilla(TXmlEditor::SCI_REPLACETARGET, static_cast<uintptr_t>(bytes.size()),
                               bytes.constData());
    }

  private:
    long Send(unsigned message, long first = 0, long second = 0) const {
        return editor_->SendScintilla(message, static_cast<unsigned long>(first), second);
    }
    long SendSecond(unsigned message, long second) const { return Send(message, 0, second); }
    long PositionOf(int offset) const {
        if (offset < 0)
            return Send(TXmlEditor::SCI_GETCURRENTPOS);
        CountCharacters(*editor_);
        const long line = Send(TXmlEditor::SCI_LINEFROMINDEXPOSITION, offset, kUnits);
        const long start = Send(TXmlEditor::SCI_POSITIONFROMLINE, line);
        const long units = offset - Send(TXmlEditor::SCI_INDEXPOSITIONFROMLINE, line, kUnits);
        const long position = Send(TXmlEditor::SCI_POSITIONRELATIVECODEUNITS, start, units);
        return position < start ? Send(TXmlEditor::SCI_GETLENGTH) : position;
    }
    QString Text(long start, long end) const {
        QByteArray bytes(static_cast<qsizetype>(end - start), '\0');
        editor_->SendScintilla(TXmlEditor::SCI_GETTEXTRANGE, start, end, bytes.data());
        return QString::fromUtf8(bytes);
    }
    /// The character, word or line at a position.
    QString Unit(long position, QAccessible::TextBoundaryType unit, int* start, int* end) const {
        long from = position;
        long to = Send(TXmlEditor::SCI_POSITIONAFTER, position);
        if (unit == QAccessible::WordBoundary) {
            from = Send(TXmlEditor::SCI_WORDSTARTPOSITION, position, 1);
            to = std::max(to, Send(TXmlEditor::SCI_WORDENDPOSITION, position, 1));
        } else if (unit != QAccessible::CharBoundary) {
            const long line = Send(TXmlEditor::SCI_LINEFROMPOSITION, position);
            from = Send(TXmlEditor::SCI_POSITIONFROMLINE, line);
            to = from + Send(TXmlEditor::SCI_LINELENGTH, line);
        }
        *start = OffsetOf(from);
        *end = OffsetOf(to);
        return Text(from, to);
    }

    TXmlEditor* editor_;
};

QAccessibleInterface* Make(const QString& className, QObject* object) {
    auto* editor = qobject_cast<TXmlEditor*>(object);
    return editor != nullptr && className == QLatin1String(TXmlEditor::staticMetaObject.className())
               ? new TEditorAccessible(editor)
               : nullptr;
}

int OffsetIn(TXmlEditor& editor, long position) {
    const auto* seen = dynamic_cast<TEditorAccessible*>(QAccessible::queryAccessibleInterface(&editor));
    return seen != nullptr ? seen->OffsetOf(position) : 0;
}

} // namespace

void ServeScreenReaders() {
    QAccessible::installFactory(Make);
}

void CountCharacters(TXmlEditor& editor) {
    if ((editor.SendScintilla(TXmlEditor::SCI_GETLINECHARACTERINDEX) & kUnits) == 0)
        editor.SendScintilla(TXmlEditor::SCI_ALLOCATELINECHARACTERINDEX, kUnits);
}

void TellTextRemoved(TXmlEditor& editor, long position, const QString& text) {
    QAccessibleTextRemoveEvent event(&editor, OffsetIn(editor, position), text);
    QAccessible::updateAccessibility(&event);
}

void TellTextInserted(TXmlEditor& editor, long position, const QString& text) {
    QAccessibleTextInsertEvent event(&editor, OffsetIn(editor, position), text);
    QAccessible::updateAccessibility(&event);
}

void TellCaretMoved(TXmlEditor& editor) {
    QAccessibleTextCursorEvent event(&editor,
                                     OffsetIn(editor, editor.SendScintilla(TXmlEditor::SCI_GETCURRENTPOS)));
    QAccessible::updateAccessibility(&event);
}

} // namespace conferix
