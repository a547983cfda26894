#include "app/desktop/dialogs/rule_help.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "report/rule_search.h"
#include "validator/rule_list.h"

#include <QEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QSplitter>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <map>

namespace conferix {

namespace {

constexpr int kListWidth = 280;
constexpr int kPageWidth = 520;
constexpr int kPageMargin = 12;
constexpr auto kTextRole = Qt::UserRole; ///< index in the guide
const auto kStart = QStringLiteral("Escolha uma regra na lista, ou procure por palavras. Em uma mensagem, F1 "
                                   "mostra a regra que a produziu.");

/// The text under its title, with the rules as the dialog that switches them on and off calls them.
QString PageOf(const TRuleText& text) {
    static const std::vector<TListedRule> kRules = ListRules();
    QString page = QStringLiteral("## ") + ToQt(text.Title) + QStringLiteral("\n\n");
    for (const std::string& name : text.Rules)
        if (const auto rule = FindRule(kRules, name))
            page += QStringLiteral("- %1 (`%2`)\n").arg(ToQt(kRules[*rule].Rule->Description), ToQt(name));
    return page + QLatin1Char('\n') + ToQt(text.MarkdownBody());
}

} // namespace

TRuleHelp::TRuleHelp(QWidget* parent, const TRuleGuide& guide)
    : QWidget(parent), guide_(guide), words_(new QLineEdit(this)), list_(new QTreeWidget(this)),
      page_(new QTextBrowser(this)) {
    setWindowTitle(QStringLiteral("Ajuda das regras"));
    words_->setPlaceholderText(QStringLiteral("Procurar nas regras"));
    words_->setAccessibleName(QStringLiteral("Procurar nas regras"));
    words_->setClearButtonEnabled(true);
    list_->setAccessibleName(QStringLiteral("Regras"));
    list_->setHeaderHidden(true);
    list_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    page_->setAccessibleName(QStringLiteral("Texto da regra"));
    page_->setOpenLinks(false);
    page_->document()->setDocumentMargin(kPageMargin);

    auto* const left = new QWidget(this);
    auto* const lines = new QVBoxLayout(left);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->addWidget(words_);
    lines->addWidget(list_);
    auto* const both = new QSplitter(this);
    both->addWidget(left);
    both->addWidget(page_);
    both->setSizes({kListWidth, kPageWidth});
    both->setStretchFactor(1, 1);
    both->setChildrenCollapsible(false);
    auto* const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(both);

    connect(words_, &QLineEdit::textChanged, this, &TRuleHelp::Fill);
    connect(words_, &QLineEdit::returnPressed, list_, qOverload<>(&QWidget::setFocus));
    connect(list_, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* item) {
        if (item != nullptr && item->data(0, kTextRole).isValid())
            Show(&guide_.Texts()[item->data(0, kTextRole).toULongLong()]);
    });
    Fill();
    Show(nullptr);
}

void TRuleHelp::Fill() {
    const QSignalBlocker quiet(list_);
    list_->clear();
    std::map<std::string, QTreeWidgetItem*> families;
    for (const TRuleText* text : SearchRuleTexts(guide_, FromQt(words_->text()))) {
        QTreeWidgetItem*& family = families[text->Family];
        if (family == nullptr) {
            family = new QTreeWidgetItem(list_, {ToQt(text->Family)});
            family->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        }
        auto* const item = new QTreeWidgetItem(family, {ToQt(text->Title)});
        item->setData(0, kTextRole, static_cast<qulonglong>(text - guide_.Texts().data()));
        item->setToolTip(0, ToQt(text->Title));
    }
    if (families.empty()) {
        auto* const none = new QTreeWidgetItem(list_, {QStringLiteral("Nenhuma regra tem essas palavras.")});
        none->setFlags(Qt::ItemIsEnabled);
    }
    list_->expandAll();
    if (shown_ != nullptr)
        list_->setCurrentItem(ItemOf(*shown_));
}

QTreeWidgetItem* TRuleHelp::ItemOf(const TRuleText& text) const {
    const auto number = static_cast<qulonglong>(&text - guide_.Texts().data());
    for (int family = 0; family < list_->topLevelItemCount(); ++family)
        for (int i = 0; i < list_->topLevelItem(family)->childCount(); ++i)
            if (QTreeWidgetItem* const item = list_->topLevelItem(family)->child(i);
                item->data(0, kTextRole).toULongLong() == number)
                return item;
    return nullptr;
}

bool TRuleHelp::ShowRule(std::string_view rule) {
    const TRuleText* const text = guide_.Find(rule);
    if (text == nullptr)
        return false;
    if (ItemOf(*text) == nullptr)
        words_->clear(); // the search has left it out
    Show(text);
    const QSignalBlocker quiet(list_);
    list_->setCurrentItem(ItemOf(*text));
    list_->scrollToItem(list_->currentItem());
    return true;
}

void TRuleHelp::Show(const TRuleText* text) {
    shown_ = text;
    page_->setMarkdown(text != nullptr ? PageOf(*text) : kStart);
    page_->moveCursor(QTextCursor::Start);
}

void TRuleHelp::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        Show(shown_); // the page keeps the colours of the time when it was made
}

} // namespace conferix
