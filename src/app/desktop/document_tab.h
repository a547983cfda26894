// The tab of one file.
#pragma once

#include "app/controller_manager.h"
#include "app/desktop/file_session.h"

#include <QWidget>

#include <functional>
#include <vector>

class QFileSystemWatcher;
class QSplitter;
class QTimer;

namespace conferix {

class TInformationPanel;
class TMessagePanel;
class TNoticeBar;
class TSearchBar;
class TXmlEditor;

/// Editor, messages and information of one file, as its controller tells of it.
class TDocumentTab : public QWidget {
    Q_OBJECT

  public:
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
    /// Asks on the way whether changes are to be saved; true once the file is closed.
    bool Close();
    void Format();
    /// Goes to the next message after the caret, or the previous one before it.
    void GoToMessage(bool next);
    /// Index of the message at the caret, else of the selected one.
    std::optional<std::size_t> MessageAtCaret() const;
    /// Corrects one message; asks which way where it offers several.
    void Correct(std::size_t message, std::optional<std::size_t> solver = std::nullopt);
    /// Puts a corrected or converted text into the editor and validates it.
    void TakeText(const std::shared_ptr<const std::string>& text);
    /// Whether the file was changed by others meanwhile; tells the user.
    void CheckDisk();
    /// Moves the keyboard to the next part of the tab, or the previous one.
    void GoRound(bool forwards);

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
    void RuleCorrectionWanted(const QString& rule);
    void RuleSwitchWanted(const QString& rule);
    void HelpWanted(const QString& rule);

  private:
    void BuildViews();
    void Subscribe();
    void ShowRead(const TReadFile& read);
    void ShowResult(const TValidateArgs& result);
    void OnEdited();
    void OnClose(TFileCloseArgs& args);
    void ShowAsItCame();
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
    TReadFile read_;
    bool edited_ = false;    ///< since the last validation ended
    bool reloading_ = false; ///< the file is closed only to be read again
    bool asItCame_ = false;  ///< shown in its own lines, for reading alone
    bool wasValid_ = false;
    bool wasJudged_ = false;
    QString kind_;
};

} // namespace conferix
