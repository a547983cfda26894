// The messages of a file: filters, list, and the selected one in full with its corrections.
#pragma once

#include "app/desktop/dialogs/configuracoes_dialog.h"
#include "app/desktop/message_model.h"

#include <QWidget>

#include <array>
#include <optional>

class QComboBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QMenu;
class QTextBrowser;
class QToolButton;
class QTreeView;

namespace conferix {

class TMessagePanel : public QWidget {
    Q_OBJECT

  public:
    /// `name`: what the list is called by those who do not see it.
    explicit TMessagePanel(const QString& name, QWidget* parent = nullptr);

    /// Shows a list; large ones are looked through beside, and shown when that is done.
    void ShowMessages(TXmlMessages messages);
    /// Tells in place of a list why there is none.
    void ShowNothing(const QString& why);
    const TXmlMessages& Messages() const { return model_->Table().Messages(); }
    const TMessageModel& Model() const { return *model_; }

    /// The selected message; the first of a group.
    std::optional<std::size_t> Current() const;
    void Select(std::size_t message);
    /// Place of the selected row in the list as it is shown, to be taken again after a correction.
    struct TFocus {
        std::size_t Place = 0;
        bool Group = false;
    };
    std::optional<TFocus> Focus() const;
    /// Takes a place again, now or as soon as the list that is being looked through is shown.
    void Restore(std::optional<TFocus> focus);

    /// The list, which takes the keyboard.
    QTreeView* List() const { return view_; }
    QWidget* Details() const;
    /// Widths of columns, sorting and grouping, for the next start.
    QByteArray SaveState() const;
    void RestoreState(const QByteArray& state);

  public slots:
    void CopySelected();
    void HideSelected();
    void ShowHidden();
    /// Opens the menu of the selected message at its row.
    void OpenMenu();

  signals:
    /// The messages are there, after ShowMessages.
    void Shown();
    void Selected(std::size_t message);
    /// The user wants to go to the place.
    void Activated(std::size_t message);
    void CorrectionWanted(std::size_t message, std::size_t solver);
    void RuleCorrectionWanted(const QString& rule);
    void RuleSwitchWanted(const QString& rule);
    void HelpWanted(const QString& rule);
    /// The user wants to install what could not be judged by.
    void SettingsWanted(conferix::TSettingsPage page);
    /// The user wants to see the element at the place of a message (1-based) on its form.
    void BoxWanted(int line, int linePos);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void Fill(const std::shared_ptr<const TMessageDigest>& digest);
    void BuildFilters(QHBoxLayout* row);
    void ApplyFilter();
    void UpdateCounts();
    void ShowDetails();
    void ShowMenu(const QPoint& place);
    void SelectIndex(const QModelIndex& index);

    TMessageModel* model_;
    QTreeView* view_;
    QLabel* nothing_;
    QTextBrowser* details_;
    QHBoxLayout* buttons_;
    std::array<QToolButton*, 3> severities_{};
    QComboBox* rule_ = nullptr;
    QComboBox* guide_ = nullptr;
    QComboBox* grouping_ = nullptr;
    QLineEdit* text_ = nullptr;
    QTimer* typing_;
    std::optional<TFocus> wanted_;
    unsigned fillings_ = 0; ///< lists that were given
    std::vector<bool> left_;
};

} // namespace conferix
