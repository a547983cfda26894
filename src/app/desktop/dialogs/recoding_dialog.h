#pragma once

#include "xml/xml_message.h"

#include <QDialog>

namespace conferix {

/// Shows what changes in a file that is to be saved in another encoding: the words that were misread, the
/// characters that become references. Accepted: it is to be saved.
class TFRecoding : public QDialog {
    Q_OBJECT

  public:
    TFRecoding(const QString& encoding, const TXmlMessages& replaced, QWidget* owner = nullptr);
};

} // namespace conferix
