#pragma once

#include "app/configuracao_validacoes.h"

#include <QDialog>

#include <filesystem>
#include <string_view>

class QTreeView;

namespace conferix {

class TRuleTreeModel;

/// Switches rules on and off.
class TFConfiguracaoValidacoes : public QDialog {
    Q_OBJECT

  public:
    /// `file`: where "Salvar" writes. `name`: the rule to be selected; may be empty.
    TFConfiguracaoValidacoes(TConfig config, std::filesystem::path file, std::string_view name,
                             QWidget* owner = nullptr);

    /// Loads the configuration, shows the dialog on a rule, and answers whether the rules were saved. What
    /// cannot be read or written is told here.
    static bool Abrir(QWidget* owner, std::string_view name,
                      const std::filesystem::path& file = TConfig::DefaultFile());

    /// Saves and ends; where that fails the dialog stays open with all changes.
    void accept() override;
    /// Ends without saving, unless there are changes that the user does not want to lose.
    void reject() override;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    TConfiguracaoValidacoes rules_;
    std::filesystem::path file_;
    TRuleTreeModel* model_;
    QTreeView* tree_;
};

} // namespace conferix
