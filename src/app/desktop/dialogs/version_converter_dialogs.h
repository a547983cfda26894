#pragma once

#include "app/conversion_choice.h"

#include <QDialog>

#include <optional>
#include <string>
#include <string_view>

class QComboBox;

namespace conferix {

class TChoiceGroup;

/// Asks to which version a lot is to be converted.
class TFVersionConverterSelect : public QDialog {
    Q_OBJECT

  public:
    /// `choice` has to outlive the dialog, and to offer a target.
    explicit TFVersionConverterSelect(const TConversionChoice& choice, QWidget* owner = nullptr);

    const std::string& SelectedTargetVersion() const;

  private:
    const TConversionChoice& choice_;
    TChoiceGroup* targets_;
};

/// Asks how a conversion to version 4 fills in the attendance regime.
class TFVersionConverterRegimeAtendimento : public QDialog {
    Q_OBJECT

  public:
    explicit TFVersionConverterRegimeAtendimento(QWidget* owner = nullptr);

    /// The code for all guides; empty to leave it open.
    std::string RegimeAtendimento() const;

    void accept() override;

  private:
    TChoiceGroup* ways_;
    QComboBox* regimes_;
};

/// Asks all that a conversion has to know; nothing when the user cancels, or for a file that cannot be
/// converted, of which the reason is told.
std::optional<TConversionRequest> AskConversion(QWidget* owner, const IArquivoTiss& arquivo);

} // namespace conferix
