// The tab of one file.
#pragma once

#include "app/controller_manager.h"
#include "app/desktop/file_session.h"
#include "app/desktop/message_panel.h"
#include "app/file_validation.h"
#include "app/lote_conversion.h"

#include <QWidget>

#include <functional>
#include <utility>
#include <vector>

class QFileSystemWatcher;
class QSplitter;
class QTabWidget;
class QTimer;

namespace conferix {

class TInformationPanel;
class TNoticeBar;
class TPatience;
class TSearchBar;
class TXmlEditor;

/// Editor, messages and information of one file, as its controller tells of it.
class TDocumentTab : public QWidget {
    Q_OBJECT

  public:
    using TXmlPtr = std::shared_ptr<const std::string>;

    TDocumentTab(const std::shared_ptr<IValidadorController>& controller, const QString& fileName,
                 TControllerManager& manager, QWidget* parent = nullptr);
    ~TDocumentTab() override;

    const QString& FileName() const { return session_->FileName(); }
    IValidadorController& Controller() const { return session_->Controller(); }
    TFileSession& Session() const { return *session_; }
    TXmlEditor* Editor() const { return editor_; }
    TMessagePanel* Messages() const { return messages_; }
    TInformationPanel* Informations() const { return informations_; }
    TSearchBar* Search() const { return search_; }
    TNoticeBar* Notices() const { return notices_; }

    void Load() { session_->Read(); }
    void Reload();
    void Validate();
    void StopValidation();
    /// False where nothing was saved: the user was told why, or chose so.
    bool Save();
    bool SaveAs();
    /// Writes the file in another encoding, and declares it.
    bool SaveWithEncoding(const QString& encoding);
    /// Whether there would be less on the disk than here: the text was changed, or its file was removed.
    bool IsUnsaved() const;
    /// Asks on the way whether changes are to be saved, unless they are to be discarded; true once the file
    /// is closed.
    bool Close(bool discard = false);
    void Format();
    void Undo();
    void Redo();
    /// Goes from message to message in the order of the text, from the last on to the first: from error to
    /// error while errors are shown, else from one to the next of what is.
    void GoToMessage(bool next);
    /// Index of the message at the caret, else of the selected one.
    std::optional<std::size_t> MessageAtCaret() const;
    /// Line and column (1-based) of the message at the caret, or of the selected one where the list has the
    /// keyboard; else of the caret.
    std::pair<int, int> PlaceAtCaret() const;
    /// Corrects the message at the caret, or another of its place where that one has no correction; tells
    /// where there is none.
    void CorrectAtCaret();
    /// Corrects one message; asks which way where it offers several.
    void Correct(std::size_t message, std::optional<std::size_t> solver = std::nullopt);
    /// Shows what would be corrected, of one rule or (empty) of all, and does it when the user agrees.
    void CorrectAll(const QString& rule);
    /// Asks for a version and converts the lot to it.
    void Convert();
    /// What the last validation found, for reports; nothing while there is none of the text as it is.
    std::optional<TFileResult> Result() const;
    /// Puts a corrected or converted text into the editor and validates it.
    void TakeText(const TXmlPtr& text);
    /// Whether the file was changed by others meanwhile; tells the user.
    void CheckDisk();
    /// Moves the keyboard to the next part of the tab, or the previous one; `after` the last comes another
    /// part of the window, unless it is null.
    void GoRound(bool forwards, QWidget* after);

    QString StateText() const;
    QString KindText() const;
    QString VersionText() const;
    QString EncodingText() const;
    QString PositionText() const;
    QIcon StateIcon() const;

    QByteArray SaveState() const;
    void RestoreState(const QByteArray& state);

  signals:
    /// Something of what the window tells of the file is another.
    void Changed();
    /// The file could not be read; the tab is of no use.
    void Unreadable(const QString& reason);
    void FileSaved();
    void Validated(const conferix::TValidateArgs& result);
    void RuleSwitchWanted(const QString& rule);
    void HelpWanted(const QString& rule);
    void SettingsWanted(conferix::TSettingsPage page);
    /// The user wants to see the element at a place (1-based) on its form.
    void BoxWanted(int line, int linePos);
    /// The file was converted to a version; so many points are left to the user.
    void Converted(const QString& to, std::size_t openPoints);

  private:
    /// True where the bytes of the file are no text, so that there is nothing but the message that says so.
    bool IsUndecodable() const;
    void BuildViews();
    void Subscribe();
    void ShowRead(const TReadFile& read);
    void ShowResult(TValidateArgs told);
    void OnEdited();
    /// The text as it is now is that of the file.
    void NoteSaved();
    void OnBackAtSaved();
    void OnClose(TFileCloseArgs& args);
    void ShowAsItCame();
    /// Makes the editor's text another one in one step.
    void PutText(const TXmlPtr& text, TPatience& patience);
    /// True where the messages are about the text as it is; else it is validated anew.
    bool IsUpToDate();
    void GoBackToPlace();
    void ShowConverted(const TConvertedLote& lote);
    void SelectPlace(std::size_t message);
    void ActivatePlace(std::size_t message);
    bool SaveTo(const QString& fileName);
    void Watch();

    TFileSession* session_;
    TControllerManager& manager_;
    TNoticeBar* notices_;
    TXmlEditor* editor_;
    TSearchBar* search_;
    TMessagePanel* messages_;
    TInformationPanel* informations_;
    QSplitter* columns_ = nullptr;
    QSplitter* rows_ = nullptr;
    QTimer* typing_;
    QFileSystemWatcher* watcher_;
    std::vector<std::function<void()>> unsubscribe_;
    QTabWidget* lists_;
    TMessagePanel* notes_ = nullptr; ///< of the last conversion
    TReadFile read_;
    TXmlEncoding savedEncoding_; ///< how the file is held
    /// Where the user was when a correction was made.
    struct TPlaceBefore {
        std::optional<TMessagePanel::TFocus> Row;
        int Line;
        int LinePos;
    };
    std::optional<TPlaceBefore> back_;
    bool goingBack_ = false;
    bool correcting_ = false; ///< the text is being replaced by the program
    std::optional<TValidateArgs> result_;
    bool edited_ = false;     ///< since the last validation ended
    bool discarding_ = false; ///< the file is closed without asking
    bool asItCame_ = false;   ///< shown in its own lines, for reading alone
    bool wasValid_ = false;
    bool wasJudged_ = false;
    QString kind_;
};

} // namespace conferix
