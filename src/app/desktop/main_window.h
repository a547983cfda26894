#pragma once

#include "app/controller_manager.h"
#include "app/desktop/dialogs/configuracoes_dialog.h"
#include "app/file_validation.h"
#include "data/file_history.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

class QDockWidget;
class QLabel;
class QStackedWidget;
class QTabWidget;

namespace conferix {

class TDocumentTab;
class TNoticeBell;
class TRuleHelp;
class TWelcomePage;

/// The window of conferix-desktop: a tab a file, and what can be done with them.
class TMainWindow : public QMainWindow {
    Q_OBJECT

  public:
    TMainWindow();
    ~TMainWindow() override;

    /// Opens files, and those of folders; one that is open already comes to the front.
    void OpenFiles(const QStringList& names);
    TDocumentTab* CurrentTab() const;
    TControllerManager& Controllers() { return controllers_; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    /// When an action can be used.
    enum class TNeeds { Nothing, Tab, OpenFile };
    void BuildMenus();
    void BuildFileMenu();
    void BuildEditMenu();
    void BuildViewMenu();
    void BuildValidationMenu();
    void BuildSettingsMenu();
    void BuildHelpMenu();
    void BuildStatusBar();
    /// An action of the menu that is being built. `name`: for finding it again.
    template<class Slot>
    QAction* Add(const char* name, const QString& text, const QKeySequence& keys, TNeeds needs, Slot slot);
    /// The same for something that is done with the current tab.
    QAction* AddForTab(const char* name, const QString& text, const QKeySequence& keys,
                       std::function<void(TDocumentTab&)> action, TNeeds needs = TNeeds::OpenFile);

    void OpenFile(const QString& name);
    void OnController(TControllerOperation operation, const std::string& fileName,
                      const TControllerManager::TControllerPtr& controller);
    void AddTab(const QString& fileName, const TControllerManager::TControllerPtr& controller);
    int IndexOf(const IValidadorController& controller) const;
    TDocumentTab* TabAt(int index) const;
    void CloseTab(int index);
    /// Asks once for all changed files; false where the user does not want to go, or a file was not saved.
    bool CloseAll();
    void UpdateTab(TDocumentTab* tab);
    void UpdateActions();
    void ChooseFiles();
    void GoToLine();
    void OpenFolder();
    void OpenExample();
    void FillRecentFiles();
    void NoteValidated(const TDocumentTab& tab, const TValidateArgs& result);
    void ValidateFolder();
    void ShowRules(const QString& rule);
    void ShowSettings(TSettingsPage page);
    void ShowHistory();
    /// Shows the guides of the current file on their forms; with a place of its text (1-based) the box of the
    /// element there, or why it has none.
    void ShowGuides(std::optional<std::pair<int, int>> place = std::nullopt);
    void ShowListings();
    void ShowNotices();
    /// Brings the help panel up, with the keyboard.
    TRuleHelp& OpenHelp();
    void ShowHelp(const QString& rule);
    /// Shows help on the message that the user is at.
    void ShowHelpOnMessage();
    void CloseHelp();
    /// Moves the keyboard to the next part of the window, the help panel among them.
    void GoRound(bool forwards);
    /// Does something with what the current tab's validation found; tells where there is nothing.
    void WithResult(const std::function<void(const TFileResult&)>& action);
    void ValidateAll();
    void ShowAbout();
    void SaveLayout() const;
    void RestoreLayout();

    TControllerManager controllers_;
    QStackedWidget* pages_;
    QTabWidget* tabs_;
    TWelcomePage* welcome_;
    QMenu* menu_ = nullptr; ///< being built
    std::vector<std::pair<QAction*, TNeeds>> actions_;
    std::unique_ptr<TFileHistory> history_;
    QMenu* recent_ = nullptr;
    QPointer<QDockWidget> helpDock_;
    TRuleHelp* help_ = nullptr;
    QPointer<QWidget> beforeHelp_; ///< who had the keyboard
    QLabel* state_ = nullptr;
    QLabel* kind_ = nullptr;
    QLabel* encoding_ = nullptr;
    QLabel* position_ = nullptr;
    TNoticeBell* bell_ = nullptr;
};

} // namespace conferix
