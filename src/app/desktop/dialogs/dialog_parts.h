// What the dialogs have in common.
#pragma once

#include <QDialog>
#include <QString>
#include <QStringList>
#include <QValidator>

#include <functional>
#include <string>
#include <string_view>

class QHBoxLayout;
class QPushButton;

namespace conferix {

/// A text of the program for the window, and back.
inline QString ToQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline std::string FromQt(const QString& text) {
    return text.toStdString();
}

/// Tells something that the user has to know before going on; returns once it is read.
void ShowNotice(QWidget* owner, const QString& title, std::string_view text);
/// Tells what went wrong.
void ShowFailure(QWidget* owner, const QString& title, std::string_view text);
/// The same where the action has no title of its own.
void ShowError(QWidget* owner, const QString& text);
/// Asks a question with "Sim" and "Não"; Esc and closing mean "Não".
bool AskYesNo(QWidget* owner, const QString& title, std::string_view text);

/// A question with answers of its own and "Cancelar"; answers the index of the chosen one, or -1. The first
/// is what Enter chooses.
int Ask(QWidget* owner, const QString& title, const QString& question, const QStringList& answers);

/// The two buttons that end a dialog, at the right of a line of their own. Closing by Esc is Cancel.
struct TEndButtons {
    QHBoxLayout* Line;
    QPushButton* Accept; ///< the default; not yet connected
    QPushButton* Cancel;
};
TEndButtons AddEndButtons(QDialog& dialog, const QString& accept = QStringLiteral("OK"));

/// Leaves only the system menu of a dialog's title bar, without the button for context help.
void KeepSystemMenuOnly(QDialog& dialog);

/// Refuses characters of a field, typed or pasted; what else is pasted with them stays.
class TKeyFilter : public QValidator {
    Q_OBJECT

  public:
    TKeyFilter(std::function<bool(QChar)> accepts, QObject* parent)
        : QValidator(parent), accepts_(std::move(accepts)) {}
    State validate(QString& input, int& position) const override;

  private:
    std::function<bool(QChar)> accepts_;
};

} // namespace conferix
