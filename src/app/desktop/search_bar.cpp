#include "app/desktop/search_bar.h"

#include "app/desktop/patience.h"
#include "app/desktop/theme.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

namespace conferix {

TSearchBar::TSearchBar(TXmlEditor* editor, QWidget* parent)
    : QWidget(parent), editor_(editor), text_(new QLineEdit), by_(new QLineEdit), replacing_(new QWidget),
      matchCase_(new QCheckBox(QStringLiteral("&Maiúsculas e minúsculas"))),
      wholeWord_(new QCheckBox(QStringLiteral("Palavra &inteira"))), result_(new QLabel) {
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 2, 0, 2);
    auto* search = new QHBoxLayout;
    text_->setObjectName(QStringLiteral("localizar"));
    text_->setAccessibleName(QStringLiteral("Localizar"));
    text_->setPlaceholderText(QStringLiteral("Localizar"));
    text_->setClearButtonEnabled(true);
    by_->setObjectName(QStringLiteral("substituirPor"));
    by_->setAccessibleName(QStringLiteral("Substituir por"));
    by_->setPlaceholderText(QStringLiteral("Substituir por"));
    const auto button = [this](QLayout* row, const QString& caption, auto action) {
        auto* made = new QPushButton(caption);
        connect(made, &QPushButton::clicked, this, action);
        row->addWidget(made);
    };
    search->addWidget(text_, 1);
    button(search, QStringLiteral("An&terior"), &TSearchBar::FindPrevious);
    button(search, QStringLiteral("&Próxima"), &TSearchBar::FindNext);
    auto* close = new QToolButton;
    close->setAutoRaise(true);
    close->setIcon(IconOf(QStringLiteral("fechar")));
    close->setAccessibleName(QStringLiteral("Fechar a busca"));
    close->setToolTip(QStringLiteral("Fechar a busca (Esc)"));
    close->setFocusPolicy(Qt::TabFocus);
    connect(close, &QToolButton::clicked, this, [this] {
        hide();
        editor_->setFocus();
    });
    search->addWidget(close);
    rows->addLayout(search);
    auto* options = new QHBoxLayout;
    options->addWidget(matchCase_);
    options->addWidget(wholeWord_);
    options->addWidget(result_, 1);
    rows->addLayout(options);
    auto* replace = new QHBoxLayout(replacing_);
    replace->setContentsMargins(0, 0, 0, 0);
    replace->addWidget(by_, 1);
    button(replace, QStringLiteral("&Substituir"), &TSearchBar::Replace);
    button(replace, QStringLiteral("Substituir &todas"), [this] {
        TPatience patience(window(), QStringLiteral("Substituindo..."), TPatience::TStop::Offered);
        const int count = editor_->ReplaceAll(Search(), by_->text(), [&patience] { return patience.Go(); });
        const QString told = count == 1 ? QStringLiteral("1 ocorrência substituída.")
                                        : QStringLiteral("%1 ocorrências substituídas.").arg(count);
        Tell(patience.Go() ? told : told + QStringLiteral(" O resto não foi procurado."));
    });
    rows->addWidget(replacing_);
    setTabOrder(text_, by_); // what is typed one after the other
    connect(text_, &QLineEdit::returnPressed, this, &TSearchBar::FindNext);
    connect(by_, &QLineEdit::returnPressed, this, &TSearchBar::Replace);
    connect(text_, &QLineEdit::textChanged, this, [this] { Tell({}); });
    hide();
}

void TSearchBar::Open(bool withReplace) {
    show();
    replacing_->setVisible(withReplace);
    if (const QString selected = editor_->selectedText();
        !selected.isEmpty() && !selected.contains(QLatin1Char('\n')))
        text_->setText(selected);
    text_->setFocus();
    text_->selectAll();
}

void TSearchBar::FindNext() {
    Find(false);
}

void TSearchBar::FindPrevious() {
    Find(true);
}

void TSearchBar::Replace() {
    TPatience patience(window(), QStringLiteral("Localizando..."), TPatience::TStop::Offered);
    const bool found = editor_->ReplaceFound(Search(), by_->text(), [&patience] { return patience.Go(); });
    Tell(found ? QString() : QStringLiteral("Não há mais ocorrências."), patience);
}

void TSearchBar::Find(bool backwards) {
    if (text_->text().isEmpty())
        return Open(false);
    TPatience patience(window(), QStringLiteral("Localizando..."), TPatience::TStop::Offered);
    const bool found = editor_->Find(Search(), backwards, [&patience] { return patience.Go(); });
    Tell(found ? QString() : QStringLiteral("\"%1\" não foi encontrado.").arg(text_->text()), patience);
}

TXmlEditor::TSearch TSearchBar::Search() const {
    return {text_->text(), matchCase_->isChecked(), wholeWord_->isChecked()};
}

void TSearchBar::Tell(const QString& text, TPatience& patience) {
    Tell(patience.Go() ? text : QStringLiteral("A busca foi interrompida."));
}

void TSearchBar::Tell(const QString& text) {
    result_->setText(text);
    result_->setAccessibleName(text);
}

void TSearchBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        hide();
        editor_->setFocus();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace conferix
