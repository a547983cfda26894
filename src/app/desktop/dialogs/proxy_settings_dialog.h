#pragma once

#include "app/proxy_settings.h"

#include <QDialog>

class QLineEdit;

namespace conferix {

class TChoiceGroup;

/// Asks how the program reaches the internet.
class TFProxySettings : public QDialog {
    Q_OBJECT

  public:
    explicit TFProxySettings(TProxySettings settings, QWidget* owner = nullptr);

    /// Reads the settings, shows the dialog, and answers whether they were saved. What cannot be read is told
    /// here.
    static bool Abrir(QWidget* owner);

    /// Saves and ends, unless something is missing or cannot be written, which is told.
    void accept() override;

  private:
    void ShowManual();

    TProxySettings settings_;
    TChoiceGroup* modes_; ///< in the order of TProxyMode
    QLineEdit* server_;
    QLineEdit* port_;
};

} // namespace conferix
