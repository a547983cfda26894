// Searching and replacing in a text.
#pragma once

#include "app/desktop/xml_editor.h"

#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;

namespace conferix {

class TPatience;

/// The row below the editor in which the user says what to search.
class TSearchBar : public QWidget {
    Q_OBJECT

  public:
    explicit TSearchBar(TXmlEditor* editor, QWidget* parent = nullptr);
    /// Shows the row and takes the keyboard; the selected text becomes what is searched.
    void Open(bool withReplace);
    void FindNext();
    void FindPrevious();

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void Find(bool backwards);
    void Replace();
    TXmlEditor::TSearch Search() const;
    void Tell(const QString& text);
    /// The same, unless the user gave up.
    void Tell(const QString& text, TPatience& patience);

    TXmlEditor* editor_;
    QLineEdit* text_;
    QLineEdit* by_;
    QWidget* replacing_;
    QCheckBox* matchCase_;
    QCheckBox* wholeWord_;
    QLabel* result_;
};

} // namespace conferix
