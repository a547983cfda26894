#pragma once

#include "report/rule_guide.h"
#include "xml/xml_message.h"

#include <QWidget>

#include <string>
#include <string_view>

class QLineEdit;
class QSplitter;
class QTextBrowser;
class QTreeWidget;
class QTreeWidgetItem;

namespace conferix {

/// The texts about the rules: a list by family that can be searched, and the chosen one beside it, or below
/// it where there is little width. For a dock or a window of its own.
class TRuleHelp : public QWidget {
    Q_OBJECT

  public:
    explicit TRuleHelp(QWidget* parent = nullptr, const TRuleGuide& guide = TRuleGuide::WithoutCommands());

    /// Shows the text about a rule; answers false, with the page as it was, where there is none.
    bool ShowRule(std::string_view rule);
    /// Shows the text about a message's rule; of one that comes from no rule, what it means and what to do.
    void ShowMessage(const TXmlMessage& message);
    /// The page, which takes the keyboard.
    QWidget* Page() const;
    /// The text shown; null for a page that is about no rule.
    const TRuleText* Shown() const { return shown_; }

  protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void Fill();
    void Show(const TRuleText* text);
    /// Shows a page in Markdown that is about no rule.
    void ShowPage(const QString& page);
    QTreeWidgetItem* ItemOf(const TRuleText& text) const;

    const TRuleGuide& guide_;
    const TRuleText* shown_ = nullptr;
    QString pageOfNoRule_;
    QSplitter* parts_;
    QLineEdit* words_;
    QTreeWidget* list_;
    QTextBrowser* page_;
};

} // namespace conferix
