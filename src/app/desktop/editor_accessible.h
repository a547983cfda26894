// The editor as screen readers see it.
#pragma once

class QString;

namespace conferix {

class TXmlEditor;

/// Makes screen readers ask this program, not QScintilla, for the text of editors: QScintilla counts all
/// characters before the caret whenever it moves, so that in files of many megabytes nobody could type.
void ServeScreenReaders();
/// Has the editor count what its lines hold from now on, which is asked at each move of the caret: the whole
/// text at once where it has one.
void CountCharacters(TXmlEditor& editor);
/// Tells them of a part of the text; positions in bytes.
void TellTextRemoved(TXmlEditor& editor, long position, const QString& text);
void TellTextInserted(TXmlEditor& editor, long position, const QString& text);
void TellCaretMoved(TXmlEditor& editor);

} // namespace conferix
