// The editor of a file's text.
#pragma once

#include "app/message_places.h"

#include <QDeadlineTimer>
#include <QPixmap>
#include <Qsci/qsciscintilla.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class QTimer;

namespace conferix {

class TPatience;

/// Shows and edits an XML text; marks the places of messages. Lines and columns are 1-based, in characters.
class TXmlEditor : public QsciScintilla {
    Q_OBJECT

  public:
    using TXmlPtr = std::shared_ptr<const std::string>;

    /// Asked between the steps of long work; false to give it up.
    using TGoOn = std::function<bool()>;

    explicit TXmlEditor(QWidget* parent = nullptr);

    /// Shows another text, a part at a time; Loaded is told at the end. The user cannot undo it.
    /// `highlighted`: not for texts of enormous lines.
    void Load(TXmlPtr text, bool highlighted);
    bool IsLoading() const { return loading_ != nullptr; }
    /// The text as it is now; the same object as long as nobody edits it.
    TXmlPtr Snapshot() const;
    /// Makes the text another one in one step that the user can undo; only what differs is replaced, so that
    /// place and folds stay. `patience` is not to be stopped.
    void ReplaceBy(const TXmlPtr& text, TPatience& patience);
    /// The text as it is now is the one that was saved: BackAtSaved tells when undoing or redoing leads back
    /// to it.
    void NoteSaved();
    /// The last step back, or forward again. What `goOn` answers does not matter.
    void Undo(const TGoOn& goOn);
    void Redo(const TGoOn& goOn);
    /// Whether the user may edit; nobody can while a text is loaded.
    void SetEditable(bool editable);

    /// Marks the places of messages from now on. `textOf`: what a tooltip tells of a message.
    void SetPlaces(const TXmlMessages& messages, std::function<QString(std::size_t message)> textOf);
    const TMessagePlaces& Places();

    /// Puts the caret at a place and shows it with lines around it; unfolds what hides it.
    void GoTo(int line, int linePos);
    int CurrentLine() const;
    int CurrentLinePos() const;
    int LineCount() const;

    /// What is searched, and how.
    struct TSearch {
        QString Text;
        bool MatchCase = false;
        bool WholeWord = false;
    };
    /// Searches from the selection on, round the end; false for what is not there or was given up.
    bool Find(const TSearch& search, bool backwards, const TGoOn& goOn);
    /// Replaces the selection where it is what was searched, then searches on.
    bool ReplaceFound(const TSearch& search, const QString& by, const TGoOn& goOn);
    /// Replaces all in one step; answers how many.
    int ReplaceAll(const TSearch& search, const QString& by, const TGoOn& goOn);
    /// Ignores the Enter key for a while, in milliseconds.
    void IgnoreEnter(int duration);
    /// Puts the caret at the tag that belongs to the one at the caret.
    bool GoToMatchingTag();

  signals:
    /// The user, an undo or a correction changed the text.
    void Edited();
    void BackAtSaved();
    void Loaded();
    void Moved();

  protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    /// A call of the editing component; what takes a text gets it by SendText.
    long Send(unsigned message, long first = 0, long second = 0) const;
    long SendText(unsigned message, std::string_view text) const;
    void ApplyTheme();
    /// What is found out about a text beside, before the editing component gets it.
    struct TPreparedText;
    static TPreparedText Prepare(const std::string& text);
    void BeginLoading(const TPreparedText& prepared);
    void LoadMore();
    /// The text is about to change.
    void OnChange(long position, long length, bool inserted);
    /// Whether screen readers are told of a change of so many bytes.
    bool IsReadAloud(long length) const;
    /// Does what follows from the last change: places move with their lines, screen readers are told.
    void SettleChange();
    void OnUpdated(int what);
    void PlaceMarks();
    /// Draws into the margin what is found on the lines on the screen.
    void DrawMarks();
    const QPixmap& MarkIcon(std::size_t mark, int size);
    /// Pixels from the left to where a margin ends.
    int MarginEnd(int margin) const;
    void MarkMatchingTags();
    void ShowTip(int position, int x, int y);
    long PositionOf(int line, int linePos) const;
    std::string TextOf(long start, long end) const;
    /// A part of the text around a place, and the position at which it starts.
    std::pair<std::string, long> Around(long position, long reach) const;
    void SelectRange(long start, long end);
    /// Searches from one position to another, which may be before it; -1 for what is not there.
    long FindFrom(long start, long end, const TSearch& search, const TGoOn& goOn) const;

    mutable TXmlPtr snapshot_;
    TXmlPtr loading_;
    std::size_t loaded_ = 0; ///< bytes
    int loads_ = 0;          ///< how many texts were loaded so far
    std::size_t room_ = 0;   ///< bytes that the editing component has room for, or more
    bool editable_ = true;
    /// A change that was told before it happened.
    struct TTextChange {
        long Position;
        long Inserted; ///< bytes
        int Line;      ///< 0-based
        int LineCount; ///< of the text before it
    };
    std::optional<TTextChange> changing_; ///< what it did to the lines is not known yet
    TMessagePlaces places_;
    std::function<QString(std::size_t)> textOf_;
    std::vector<QPixmap> markIcons_;   ///< by mark, as large as they were drawn last
    TGoOn goOn_;                       ///< of the step that is being undone
    std::optional<int> changesOfStep_; ///< that is being done, undone or redone
    QDeadlineTimer enterIgnored_;
    QTimer* loadTimer_;
    QTimer* markTimer_;
};

} // namespace conferix
