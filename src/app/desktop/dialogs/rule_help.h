#pragma once

#include "report/rule_guide.h"

#include <QWidget>

#include <string>
#include <string_view>

class QLineEdit;
class QTextBrowser;
class QTreeWidget;
class QTreeWidgetItem;

namespace conferix {

/// The texts about the rules: a list by family that can be searched, and the chosen one beside it. For a dock
/// or a window of its own.
class TRuleHelp : public QWidget {
    Q_OBJECT

  public:
    explicit TRuleHelp(QWidget* parent = nullptr, const TRuleGuide& guide = TRuleGuide::Instance());

    /// Shows the text about a rule; answers false, with the page as it was, where there is none.
    bool ShowRule(std::string_view rule);
    /// The text shown; null for the page that says how to use the list.
    const TRuleText* Shown() const { return shown_; }

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void Fill();
    void Show(const TRuleText* text);
    QTreeWidgetItem* ItemOf(const TRuleText& text) const;

    const TRuleGuide& guide_;
    const TRuleText* shown_ = nullptr;
    QLineEdit* words_;
    QTreeWidget* list_;
    QTextBrowser* page_;
};

} // namespace conferix
