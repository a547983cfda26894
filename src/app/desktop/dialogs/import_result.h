#pragma once

#include "data/import/tuss_importer.h"

#include <QDialog>

namespace conferix {

/// Shows what an import of terminology did.
class TFImportResult : public QDialog {
    Q_OBJECT

  public:
    explicit TFImportResult(const TImportReport& report, QWidget* owner = nullptr);
};

} // namespace conferix
