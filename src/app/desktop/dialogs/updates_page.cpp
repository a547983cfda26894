#include "app/desktop/dialogs/updates_page.h"

#include "app/desktop/dialogs/cell_table.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/proxy_settings_dialog.h"
#include "app/desktop/dialogs/work_bar.h"
#include "app/missing_data.h"
#include "app/notices.h"
#include "app/update_importers.h"
#include "data/constantes.h"
#include "data/database_tuss.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

namespace conferix {

namespace {

struct TOutcome {
    std::vector<TPackage> Packages;
    QString Failures; ///< a line each
    bool Installed = false;
};

TPackageImporters Importers() {
    return UpdateImporters(TConstantes::SchemaTissDirectory(), TDatabaseTuss::ImportTarget());
}

TUpdater Updater() {
    return {TUpdateSettings().Address, TProxySettings(), TConstantes::ValidadorDirectory()};
}

/// Tells in the inbox what a list offers, what of it is installed, and what else it says.
void NoteList(const TUpdater& updater, const std::vector<TPackage>& packages) {
    if (!packages.empty() || !updater.Published().empty())
        Notify([&](TNoticeBox& box) { NoteUpdates(box, packages, updater.Published()); });
}

/// Installs what is offered; from the thread of the work.
void InstallAll(const TWork& work, TOutcome& outcome) {
    TUpdater updater = Updater();
    const std::unique_ptr<TFileLock> lock = updater.Lock();
    const TPackageImporters importers = Importers();
    for (const TPackage& package : updater.List(importers)) {
        if (package.Installed)
            continue;
        const QString name = ToQt(package.Name + " " + package.Version);
        try {
            updater.Install(package, importers, [&](std::uint64_t received, std::uint64_t total) {
                work.Tell(QStringLiteral("Buscando ") + name,
                          static_cast<double>(received) /
                              static_cast<double>(std::max<std::uint64_t>(total, 1)));
                return !work.Stop;
            });
            outcome.Installed = true;
        } catch (const std::exception& error) {
            outcome.Failures += name + QStringLiteral(": ") + ToQt(error.what()) + u'\n';
        }
        if (work.Stop)
            break;
    }
    outcome.Packages = updater.List(importers);
    NoteList(updater, outcome.Packages);
}

QStringList RowOf(const TPackage& package) {
    return {
        ToQt(package.Name), ToQt(package.Kind), ToQt(package.Version),
        QLocale(QLocale::Portuguese, QLocale::Brazil).formattedDataSize(static_cast<qint64>(package.Size)),
        package.Installed ? QStringLiteral("Instalado") : QStringLiteral("Disponível")};
}

} // namespace

TUpdatesPage::TUpdatesPage(QWidget* parent)
    : QWidget(parent), address_(new QLabel(this)),
      table_(new TCellTable(QStringLiteral("Pacotes"),
                            {QStringLiteral("Nome"), QStringLiteral("Tipo"), QStringLiteral("Versão"),
                             QStringLiteral("Tamanho"), QStringLiteral("Situação")},
                            0, this)),
      told_(new QLabel(this)), check_(new QPushButton(QStringLiteral("&Verificar atualizações"), this)),
      install_(new QPushButton(QStringLiteral("&Instalar"), this)),
      proxy_(new QPushButton(QStringLiteral("&Proxy..."), this)), work_(new TWorkBar(this)) {
    const std::string address = TUpdateSettings().Address;
    address_->setText(
        address.empty()
            ? QStringLiteral("Nenhum endereço de atualização está configurado (Conferix.ini, seção "
                             "Atualizacao, chave Endereco).")
            : QStringLiteral("Endereço das atualizações: ") + ToQt(address));
    for (QLabel* label : {address_, told_}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }
    told_->hide();
    table_->SetNumbers({3});
    install_->setEnabled(false);
    auto* const buttons = new QHBoxLayout;
    for (QPushButton* button : {check_, install_, proxy_})
        buttons->addWidget(button);
    buttons->addStretch();
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(address_);
    lines->addWidget(table_);
    lines->addWidget(told_);
    lines->addLayout(buttons);
    lines->addWidget(work_);
    connect(check_, &QPushButton::clicked, this, &TUpdatesPage::Check);
    connect(install_, &QPushButton::clicked, this, &TUpdatesPage::Install);
    connect(proxy_, &QPushButton::clicked, this, [this] { TFProxySettings::Abrir(this); });
    connect(work_, &TWorkBar::RunningChanged, this, [this](bool running) {
        check_->setEnabled(!running);
        proxy_->setEnabled(!running);
        if (running)
            install_->setEnabled(false);
    });
}

void TUpdatesPage::Check() {
    const auto outcome = std::make_shared<TOutcome>();
    work_->Run(
        TWorkKind::Reading, QStringLiteral("Verificando atualizações..."),
        [outcome](const TWork&) {
            TUpdater updater = Updater();
            outcome->Packages = updater.List(Importers());
            NoteList(updater, outcome->Packages);
        },
        [this, outcome](const std::exception_ptr& failure) {
            Show(outcome->Packages, failure != nullptr ? ReasonOf(failure) : QString());
        });
}

void TUpdatesPage::Install() {
    const auto outcome = std::make_shared<TOutcome>();
    work_->Run(
        TWorkKind::Changing, QStringLiteral("Instalando atualizações..."),
        [outcome](const TWork& work) { InstallAll(work, *outcome); },
        [this, outcome](const std::exception_ptr& failure) {
            if (outcome->Installed)
                emit Changed();
            Show(failure != nullptr ? packages_ : outcome->Packages,
                 outcome->Failures + (failure != nullptr ? ReasonOf(failure) : QString()));
        });
}

void TUpdatesPage::Show(const std::vector<TPackage>& packages, const QString& failures) {
    packages_ = packages;
    std::vector<QStringList> rows;
    for (const TPackage& package : packages_)
        rows.push_back(RowOf(package));
    table_->SetRows(rows);
    const bool offered = std::ranges::any_of(packages_, [](const TPackage& p) { return !p.Installed; });
    install_->setEnabled(offered);
    QString told = failures.trimmed();
    if (told.isEmpty() && !offered)
        told =
            packages_.empty() ? QStringLiteral("Não há pacotes.") : QStringLiteral("Tudo está atualizado.");
    told_->setText(ToQt(TextForWindow(FromQt(told))));
    told_->setVisible(!told.isEmpty());
}

} // namespace conferix
