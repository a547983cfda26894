#include "app/desktop/dialogs/configuracoes_dialog.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/schemas_page.h"
#include "app/desktop/dialogs/terminology_page.h"
#include "app/desktop/dialogs/updates_page.h"
#include "app/desktop/dialogs/work_bar.h"
#include "platform/platform.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace conferix {

namespace {

constexpr QSize kSize(980, 640);
const auto kTitle = QStringLiteral("Configurações");

} // namespace

TFConfiguracoes::TFConfiguracoes(TSettingsPage page, QWidget* owner)
    : QDialog(owner), terminologia_(new TTerminologyPage(this)), schemas_(new TSchemasPage(this)),
      atualizacoes_(new TUpdatesPage(this)) {
    setWindowTitle(kTitle);
    auto* const pages = new QTabWidget(this);
    pages->addTab(terminologia_, QStringLiteral("&Terminologia"));
    pages->addTab(schemas_, QStringLiteral("&Schemas"));
    pages->addTab(atualizacoes_, QStringLiteral("&Atualizações"));
    pages->tabBar()->setAccessibleName(QStringLiteral("Páginas"));
    pages->setCurrentIndex(static_cast<int>(page));
    auto* const close = new QPushButton(QStringLiteral("Fechar"), this);
    close->setAutoDefault(false);
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(close);
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(pages);
    lines->addLayout(buttons);
    resize(kSize);
    for (QPushButton* button : findChildren<QPushButton*>())
        button->setAutoDefault(false); // Enter in the search searches
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    const auto note = [this] { changed_ = true; };
    connect(terminologia_, &TTerminologyPage::Changed, this, note);
    connect(schemas_, &TSchemasPage::Changed, this, note);
    connect(atualizacoes_, &TUpdatesPage::Changed, this, [this] {
        changed_ = true;
        terminologia_->Refresh();
        schemas_->Refresh();
    });
    terminologia_->Refresh();
    schemas_->Refresh();
}

bool TFConfiguracoes::Abrir(QWidget* owner, TSettingsPage page) {
    try {
        TFConfiguracoes dialog(page, owner);
        if (page == TSettingsPage::Atualizacoes && !TUpdateSettings().Address.empty())
            dialog.Atualizacoes().Check(); // that is what the user came for
        dialog.exec();
        return dialog.HasChanged();
    } catch (const EFileNotRead& error) { // Conferix.ini
        ShowFailure(owner, kTitle, error.what());
    }
    return false;
}

bool TFConfiguracoes::Changing() const {
    return terminologia_->Work().Changing() || schemas_->Work().Changing() ||
           atualizacoes_->Work().Changing();
}

void TFConfiguracoes::reject() {
    if (Changing() &&
        !AskYesNo(this, kTitle,
                  "Há um trabalho em andamento, que será interrompido. Nada do que está instalado se "
                  "perde. Confirma?"))
        return;
    QDialog::reject();
}

} // namespace conferix
