#include "app/desktop/dialogs/proxy_settings_dialog.h"

#include "app/desktop/dialogs/choice_group.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "platform/platform.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace conferix {

namespace {

constexpr int kWidth = 420;
constexpr int kPortDigits = 5;
const auto kTitle = QStringLiteral("Configurações de Proxy");

/// Moves the pointer of attention to a field that has to be mended.
void Point(QLineEdit& field) {
    field.setFocus();
    field.selectAll();
}

} // namespace

TFProxySettings::TFProxySettings(TProxySettings settings, QWidget* owner)
    : QDialog(owner), settings_(std::move(settings)),
      modes_(new TChoiceGroup(QStringLiteral("Configuração de proxy para acesso à internet"), this)),
      server_(new QLineEdit(this)), port_(new QLineEdit(this)) {
    setWindowTitle(kTitle);
    for (const auto& caption : {QStringLiteral("Conexão direta com a internet"),
                                QStringLiteral("Detecção automática das configurações de proxy"),
                                QStringLiteral("Configuração de proxy manual")})
        modes_->Add(caption);
    server_->setValidator(new TKeyFilter([](QChar key) { return !key.isSpace(); }, server_));
    port_->setValidator(new TKeyFilter([](QChar key) { return key >= u'0' && key <= u'9'; }, port_));
    port_->setMaximumWidth(port_->fontMetrics().horizontalAdvance(QString(qsizetype{2} * kPortDigits, u'0')));
    auto* const fields = new QFormLayout;
    fields->addRow(QStringLiteral("Servidor:"), server_);
    fields->addRow(QStringLiteral("Porta:"), port_);
    server_->setAccessibleName(QStringLiteral("Servidor"));
    port_->setAccessibleName(QStringLiteral("Porta"));
    modes_->AddBelow(fields);
    const TEndButtons buttons = AddEndButtons(*this);
    connect(buttons.Accept, &QPushButton::clicked, this, &QDialog::accept);
    connect(modes_, &TChoiceGroup::Changed, this, &TFProxySettings::ShowManual);

    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(modes_);
    lines->addLayout(buttons.Line);
    modes_->setMinimumWidth(kWidth);
    lines->setSizeConstraint(QLayout::SetFixedSize);
    setTabOrder(modes_->Choices().back(), server_);
    setTabOrder(server_, port_);
    setTabOrder(port_, buttons.Accept);
    setTabOrder(buttons.Accept, buttons.Cancel);

    server_->setText(ToQt(settings_.Server));
    port_->setText(ToQt(TProxySettings::PortText(settings_.Port)));
    modes_->Choose(static_cast<int>(settings_.Mode));
    modes_->Choices()[static_cast<std::size_t>(modes_->Chosen())]->setFocus();
    ShowManual();
}

bool TFProxySettings::Abrir(QWidget* owner) {
    try {
        TFProxySettings dialog(TProxySettings(), owner);
        return dialog.exec() == Accepted;
    } catch (const EFileNotRead& error) {
        ShowFailure(owner, kTitle, error.what());
    }
    return false;
}

void TFProxySettings::ShowManual() {
    const bool manual = modes_->Chosen() == static_cast<int>(TProxyMode::Manual);
    server_->setEnabled(manual);
    port_->setEnabled(manual);
}

void TFProxySettings::accept() {
    const std::string_view wrong = settings_.Take(static_cast<TProxyMode>(modes_->Chosen()),
                                                  FromQt(server_->text()), FromQt(port_->text()));
    if (!wrong.empty()) {
        ShowNotice(this, windowTitle(), wrong);
        Point(wrong == TProxySettings::kInvalidPort ? *port_ : *server_);
        return;
    }
    try {
        settings_.Save();
    } catch (const EFileNotWritten& error) {
        ShowFailure(this, windowTitle(), error.what());
        return;
    }
    QDialog::accept();
}

} // namespace conferix
