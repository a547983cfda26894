#include "app/desktop/dialogs/rule_help.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/missing_data.h"
#include "report/rule_search.h"
#include "validation/identity.h"
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
constexpr int kBesideWidth = 640;        ///< from which on list and page stand side by side
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

/// What a message that comes from no rule means, and what can be done.
QString MeaningOf(const TXmlMessage& message) {
    switch (message.MsgType()) {
    case TMessageType::mtSuccess:
    case TMessageType::mtInformation:
        return QStringLiteral("Esta mensagem não aponta um erro: ela diz o resultado da validação, e nada "
                              "precisa ser corrigido "
                              "por causa dela.\n\n- As regras desativadas estão em Configurações > "
                              "Ativar/Desativar Validações.\n"
                              "- Das mensagens que passam do limite da lista, a primeira de cada causa é "
                              "mostrada; corrija as que "
                              "estão na lista e valide de novo (F5).");
    case TMessageType::mtWarning:
        return QStringLiteral(
            "Este aviso não torna o arquivo inválido. Leia o que ele diz e confira se é o que "
            "se queria.");
    case TMessageType::mtFatal:
        return QStringLiteral(
            "O programa não conseguiu terminar a validação, e o arquivo não foi julgado. O texto "
            "não foi alterado: feche outros programas e valide de novo (F5).");
    case TMessageType::mtError:
        break;
    }
    switch (MissingDataOf(message)) {
    case TMissingData::Schema:
        return QStringLiteral(
            "O schema da versão do arquivo não pôde ser usado, e por isso o arquivo não foi "
            "julgado. Confira a versão no cabeçalho; se ela está certa, importe o schema da "
            "ANS em Configurações > Schemas e valide de novo (F5).");
    case TMissingData::Terminology:
    case TMissingData::Nothing:
        break;
    }
    return QStringLiteral(
        "O arquivo não pôde ser lido ou identificado por inteiro. As regras só são conferidas depois disso: "
        "outras mensagens podem aparecer quando esta for corrigida.\n\n"
        "### Como corrigir\n\n"
        "- Vá ao lugar com Enter, na lista. O que falta ou sobra costuma estar ali ou um pouco antes.\n"
        "- Se o arquivo termina no meio, ele não foi gravado ou copiado por inteiro: gere-o ou baixe-o de "
        "novo.\n"
        "- Cada `<nome>` precisa do seu `</nome>`, na ordem inversa. Dentro de um valor, escreva `&amp;amp;` "
        "em lugar "
        "de `&amp;` e `&amp;lt;` em lugar de `<`.\n"
        "- Se o texto tem bytes que não são da codificação declarada na primeira linha, gere o arquivo de "
        "novo na "
        "codificação certa, ou corrija a declaração.\n"
        "- Se a versão ou o tipo não são conhecidos, confira o nome do primeiro elemento e, no cabeçalho, o "
        "elemento "
        "com a versão do padrão.");
}

} // namespace

TRuleHelp::TRuleHelp(QWidget* parent, const TRuleGuide& guide)
    : QWidget(parent), guide_(guide), pageOfNoRule_(kStart), parts_(new QSplitter(this)),
      words_(new QLineEdit(this)), list_(new QTreeWidget(this)), page_(new QTextBrowser(this)) {
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
    parts_->addWidget(left);
    parts_->addWidget(page_);
    parts_->setSizes({kListWidth, kPageWidth});
    parts_->setStretchFactor(1, 1);
    parts_->setChildrenCollapsible(false);
    auto* const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(parts_);

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

void TRuleHelp::ShowMessage(const TXmlMessage& message) {
    if (message.Rule() != nullptr && ShowRule(message.Rule()->Name))
        return;
    // The sentence stands apart as a quotation; what looks like markup in it is none.
    QString said = ToQt(TextForWindow(message.Reason())).toHtmlEscaped();
    said.replace(QStringLiteral("\r\n"), QStringLiteral("\n> "));
    ShowPage(QStringLiteral("## Sobre esta mensagem\n\n> %1\n\n").arg(said) + MeaningOf(message));
}

QWidget* TRuleHelp::Page() const {
    return page_;
}

void TRuleHelp::ShowPage(const QString& page) {
    pageOfNoRule_ = page;
    const QSignalBlocker quiet(list_);
    list_->setCurrentItem(nullptr);
    Show(nullptr);
}

void TRuleHelp::Show(const TRuleText* text) {
    shown_ = text;
    page_->setMarkdown(text != nullptr ? PageOf(*text) : pageOfNoRule_);
    page_->moveCursor(QTextCursor::Start);
}

void TRuleHelp::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const Qt::Orientation wanted = width() < kBesideWidth ? Qt::Vertical : Qt::Horizontal;
    if (parts_->orientation() == wanted)
        return;
    parts_->setOrientation(wanted);
    parts_->setSizes(wanted == Qt::Vertical ? QList<int>{height() / 3, height() - height() / 3}
                                            : QList<int>{kListWidth, width() - kListWidth});
}

void TRuleHelp::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        Show(shown_); // the page keeps the colours of the time when it was made
}

} // namespace conferix
