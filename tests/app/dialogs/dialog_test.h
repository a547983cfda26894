// Dialogs as a user sees them, without a screen.
#pragma once

#include "app/desktop/dialogs/dialog_parts.h"
#include "support/test_files.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// Makes the application, and answers the message boxes that come up.
class TDialogTest : public testing::Test {
  protected:
    TDialogTest() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int count = 1;
        static char name[] = "tests";
        static char* names[] = {name, nullptr};
        if (qApp == nullptr)
            new QApplication(count, names); // lives as long as the process
        Look();
    }
    ~TDialogTest() override {
        EXPECT_TRUE(answers_.empty()) << "not asked for: " << FromQt(answers_.front());
        EXPECT_TRUE(visits_.empty()) << "a dialog did not come up";
    }

    /// The boxes that come up from now on are answered by these buttons.
    void Answer(std::vector<const char*> buttons) {
        for (const char* button : buttons)
            answers_.push_back(QString::fromUtf8(button));
    }
    /// What is done with the modal dialogs that come up from now on, one after the other.
    void Visit(std::function<void(QDialog&)> visit) { visits_.push_back(std::move(visit)); }
    /// Title and text of the boxes so far.
    std::vector<std::string> TakeTold() { return std::exchange(told_, {}); }

    /// A control by its accessible name or caption, without marks for keys.
    template<class Control>
    static Control& Find(const QWidget& in, const char* name) {
        for (Control* control : in.findChildren<Control*>())
            // A combo box answers what it shows as its name.
            if (NameOf(*control) == QString::fromUtf8(name) ||
                control->accessibleName() == QString::fromUtf8(name))
                return *control;
        ADD_FAILURE() << "no " << name;
        std::abort();
    }
    static void Press(const QWidget& in, const char* button) {
        QTest::mouseClick(&Find<QAbstractButton>(in, button), Qt::LeftButton);
        QCoreApplication::processEvents();
    }
    static QString NameOf(const QWidget& control) {
        QAccessibleInterface* const seen =
            QAccessible::queryAccessibleInterface(const_cast<QWidget*>(&control));
        return seen->text(QAccessible::Name);
    }
    /// What Tab reaches in a window has a name for who cannot see it.
    static void ExpectNames(const QWidget& window) {
        int reached = 0;
        for (const QWidget* control : window.findChildren<QWidget*>()) {
            if ((control->focusPolicy() & Qt::TabFocus) == 0 || !control->isVisible() ||
                control->focusProxy() != nullptr)
                continue;
            ++reached;
            EXPECT_FALSE(NameOf(*control).isEmpty())
                << FromQt(window.windowTitle()) << ": " << control->metaObject()->className();
        }
        EXPECT_GT(reached, 1);
    }
    /// Waits until something holds; fails where it does not come to that.
    static void Wait(const std::function<bool()>& holds) { EXPECT_TRUE(QTest::qWaitFor(holds, 20'000)); }

    const TTemporaryFolder folder_;
    const TEnvironment dados_{"CONFERIX_DADOS", (folder_ / "dados").string()};
    const TEnvironment ini_{"CONFERIX_INI", (folder_ / "Conferix.ini").string()};

  private:
    /// Looks for what has come up, again and again, also while a dialog is being visited.
    void Look() {
        QTimer::singleShot(5, &timers_, [this] { Look(); });
        QWidget* const modal = QApplication::activeModalWidget();
        if (modal == nullptr || modal == seen_ || !modal->isVisible())
            return;
        if (auto* const box = qobject_cast<QMessageBox*>(modal)) {
            told_.push_back(FromQt(box->windowTitle() + "|" + box->text()));
            if (answers_.empty()) {
                ADD_FAILURE() << "unexpected: " << told_.back();
                box->reject();
                return;
            }
            const QString button = std::exchange(answers_.front(), {});
            answers_.erase(answers_.begin());
            Press(*box, button.toUtf8());
        } else if (auto* const dialog = qobject_cast<QDialog*>(modal);
                   dialog != nullptr && !visits_.empty()) {
            const auto visit = std::move(visits_.front());
            visits_.erase(visits_.begin());
            const auto* const before = std::exchange(seen_, modal);
            visit(*dialog);
            seen_ = before;
            if (dialog->isVisible())
                ADD_FAILURE() << "the dialog was left open";
        }
    }

    QObject timers_;                ///< ends with the test
    const QWidget* seen_ = nullptr; ///< the dialog that is being visited
    std::vector<QString> answers_;
    std::vector<std::function<void(QDialog&)>> visits_;
    std::vector<std::string> told_;
};

} // namespace conferix
