#include "app/desktop/dialogs/version_converter_dialogs.h"

#include "app/desktop/dialogs/choice_group.h"
#include "app/desktop/dialogs/dialog_parts.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace conferix {

namespace {

constexpr int kSelectWidth = 340;
constexpr int kRegimeWidth = 480;
const auto kTitle = QStringLiteral("Converter Versão");

enum TWay : std::uint8_t { kAutomatic, kByHand };

} // namespace

TFVersionConverterSelect::TFVersionConverterSelect(const TConversionChoice& choice, QWidget* owner)
    : QDialog(owner), choice_(choice),
      targets_(new TChoiceGroup(QStringLiteral("Escolha para qual versão deseja converter:"), this)) {
    setWindowTitle(kTitle);
    auto* const present = new QLabel(QStringLiteral("Versão Atual: ") + ToQt(choice.Versao()), this);
    present->setTextFormat(Qt::PlainText);
    for (const std::string& versao : choice.Targets())
        targets_->Add(ToQt(versao));
    targets_->setMinimumWidth(kSelectWidth);
    const TEndButtons buttons = AddEndButtons(*this);
    connect(buttons.Accept, &QPushButton::clicked, this, &QDialog::accept);
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(present);
    lines->addWidget(targets_);
    lines->addLayout(buttons.Line);
    lines->setSizeConstraint(QLayout::SetFixedSize);
    targets_->Choices().front()->setFocus();
}

const std::string& TFVersionConverterSelect::SelectedTargetVersion() const {
    return choice_.Targets()[static_cast<std::size_t>(targets_->Chosen())];
}

TFVersionConverterRegimeAtendimento::TFVersionConverterRegimeAtendimento(QWidget* owner)
    : QDialog(owner), ways_(new TChoiceGroup(QStringLiteral("Como preencher o campo"), this)),
      regimes_(new QComboBox(this)) {
    setWindowTitle(QStringLiteral("Regime de Atendimento"));
    auto* const explanation = new QLabel(ToQt(TConversionChoice::kRegimeExplanation), this);
    explanation->setWordWrap(true);
    explanation->setFixedWidth(kRegimeWidth);
    ways_->Add(QStringLiteral("Preencher o campo automaticamente, em todas as guias, com o valor:"));
    for (const TRegimeAtendimento& regime : kRegimesAtendimento)
        regimes_->addItem(ToQt(regime.Codigo) + QStringLiteral(" - ") + ToQt(regime.Description));
    regimes_->setPlaceholderText(QStringLiteral("Escolha o regime"));
    regimes_->setCurrentIndex(-1);
    regimes_->setAccessibleName(QStringLiteral("Valor do Regime de Atendimento"));
    ways_->AddBelow(regimes_);
    ways_->Add(QStringLiteral("Não preencher o campo automaticamente. Informarei manualmente o Regime de "
                              "Atendimento em cada guia."));
    ways_->setFixedWidth(kRegimeWidth);
    connect(ways_, &TChoiceGroup::Changed, this,
            [this] { regimes_->setEnabled(ways_->Chosen() == kAutomatic); });
    const TEndButtons buttons = AddEndButtons(*this);
    connect(buttons.Accept, &QPushButton::clicked, this, &QDialog::accept);
    auto* const lines = new QVBoxLayout(this);
    lines->addWidget(explanation);
    lines->addWidget(ways_);
    lines->addLayout(buttons.Line);
    lines->setSizeConstraint(QLayout::SetFixedSize);
    ways_->Choices().front()->setFocus();
}

std::string TFVersionConverterRegimeAtendimento::RegimeAtendimento() const {
    const int row = regimes_->currentIndex();
    return ways_->Chosen() == kAutomatic && row >= 0 ? std::string(kRegimesAtendimento[row].Codigo)
                                                     : std::string();
}

void TFVersionConverterRegimeAtendimento::accept() {
    if (ways_->Chosen() == kAutomatic && RegimeAtendimento().empty()) {
        ShowNotice(this, windowTitle(), TConversionChoice::kMissingRegime);
        regimes_->setFocus();
        return;
    }
    QDialog::accept();
}

std::optional<TConversionRequest> AskConversion(QWidget* owner, const IArquivoTiss& arquivo) {
    try {
        const TConversionChoice choice(arquivo);
        TFVersionConverterSelect select(choice, owner);
        if (select.exec() != QDialog::Accepted)
            return std::nullopt;
        TConversionRequest request{select.SelectedTargetVersion(), {}};
        if (choice.AsksRegime(request.Target)) {
            TFVersionConverterRegimeAtendimento regime(owner);
            if (regime.exec() != QDialog::Accepted)
                return std::nullopt;
            request.Options.RegimeAtendimento = regime.RegimeAtendimento();
        }
        return request;
    } catch (const EConversionNotSupported& error) {
        ShowNotice(owner, kTitle, error.what());
    }
    return std::nullopt;
}

} // namespace conferix
