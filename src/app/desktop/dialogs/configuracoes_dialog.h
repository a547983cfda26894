#pragma once

#include <QDialog>

#include <cstdint>

namespace conferix {

class TSchemasPage;
class TTerminologyPage;
class TUpdatesPage;

/// The pages of the settings.
enum class TSettingsPage : std::uint8_t { Terminologia, Schemas, Atualizacoes };

/// What the program judges files by: terminology, schemas, and updates of both.
class TFConfiguracoes : public QDialog {
    Q_OBJECT

  public:
    explicit TFConfiguracoes(TSettingsPage page, QWidget* owner = nullptr);

    /// Shows the dialog on a page; answers whether files may be judged otherwise now.
    static bool Abrir(QWidget* owner, TSettingsPage page);

    bool HasChanged() const { return changed_; }
    TTerminologyPage& Terminologia() { return *terminologia_; }
    TSchemasPage& Schemas() { return *schemas_; }
    TUpdatesPage& Atualizacoes() { return *atualizacoes_; }

    /// Ends; where something is being imported, asks first and then waits for its end.
    void reject() override;

  private:
    bool Changing() const;

    TTerminologyPage* terminologia_;
    TSchemasPage* schemas_;
    TUpdatesPage* atualizacoes_;
    bool changed_ = false;
};

} // namespace conferix
