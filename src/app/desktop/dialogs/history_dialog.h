#pragma once

#include "data/file_history.h"

#include <QDialog>

#include <vector>

class QPushButton;

namespace conferix {

class TCellTable;

/// The validations so far; opens a file again.
class TFHistory : public QDialog {
    Q_OBJECT

  public:
    /// `history` has to outlive the dialog.
    explicit TFHistory(TFileHistory& history, QWidget* owner = nullptr);

    /// The file that the user wants to see; empty where the dialog was just closed.
    const QString& Chosen() const { return chosen_; }

  private:
    void Fill();
    void Choose();

    TFileHistory& history_;
    std::vector<TValidationRecord> records_;
    QString chosen_;
    TCellTable* table_;
    QPushButton* open_;
    QPushButton* clear_;
};

} // namespace conferix
