// The window with one file: how long each step takes, the longest time in which it did not answer, in
// processor time of its thread as well (what else the machine does counts there the least), and the memory.
// Usage: bench_janela [--guias] FILE, a copy that may be changed; platform as QT_QPA_PLATFORM says. --guias:
// the preview of the guides in place of editing.

#include "app/desktop/document_tab.h"
#include "app/desktop/guide_print_dialog.h"
#include "app/desktop/main_window.h"
#include "app/desktop/message_panel.h"
#include "app/desktop/search_bar.h"
#include "app/desktop/xml_editor.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>

namespace {

using namespace conferix;

/// A line of this process's status in MB: "VmRSS" its memory, "VmHWM" the most of it so far.
long Memory(const std::string& what) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(what + ':'))
            return std::stol(line.substr(what.size() + 1)) / 1024;
    return 0;
}

/// Processor time of a clock in milliseconds.
double ProcessorTime(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// Notes the longest gap between two turns of the event loop.
class TStallWatch {
  public:
    TStallWatch() {
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, [this] { Turn(); });
        timer_.start(1);
    }
    void Turn() {
        const double wall = ProcessorTime(CLOCK_MONOTONIC);
        const double cpu = ProcessorTime(CLOCK_THREAD_CPUTIME_ID);
        longest_ = std::max(longest_, wall - std::exchange(wall_, wall));
        longestCpu_ = std::max(longestCpu_, cpu - std::exchange(cpu_, cpu));
    }
    /// What was noted since the last call, as a text.
    std::string Take() {
        Turn();
        char text[100];
        std::snprintf(
            text, sizeof text, "longest stall %6.0f ms (%5.0f ms CPU), memory %5ld MB, peak %5ld MB",
            std::exchange(longest_, 0), std::exchange(longestCpu_, 0), Memory("VmRSS"), Memory("VmHWM"));
        return text;
    }

  private:
    QTimer timer_;
    double wall_ = ProcessorTime(CLOCK_MONOTONIC);
    double cpu_ = ProcessorTime(CLOCK_THREAD_CPUTIME_ID);
    double longest_ = 0;
    double longestCpu_ = 0;
};

class TMeasure {
  public:
    explicit TMeasure(const QString& file) {
        window_.resize(1280, 720);
        window_.show();
        QTest::qWait(500);
        Step(
            "open", [&] { window_.OpenFiles({file}); },
            [&] { return !Tab().Editor()->IsLoading() && Tab().Editor()->length() > 0; });
        Step(
            "validate", [] {}, [&] { return Tab().Result().has_value(); });
        Rest("rest after it", 5'000);
    }

    void Step(const char* what, const std::function<void()>& act, const std::function<bool()>& done) {
        watch_.Take();
        const double wall = ProcessorTime(CLOCK_MONOTONIC);
        const double cpu = ProcessorTime(CLOCK_PROCESS_CPUTIME_ID);
        act();
        while (!done())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 50);
        const double taken = ProcessorTime(CLOCK_MONOTONIC) - wall;
        const double worked = ProcessorTime(CLOCK_PROCESS_CPUTIME_ID) - cpu;
        QTest::qWait(300); // what is drawn after it belongs to it
        std::printf("%-22s %7.0f ms (%6.0f ms CPU), %s\n", what, taken, worked, watch_.Take().c_str());
        std::fflush(stdout);
    }
    void Action(const char* name, const std::function<bool()>& done) {
        Step(
            name, [&] { window_.findChild<QAction*>(QString::fromLatin1(name))->trigger(); }, done);
    }
    void Rest(const char* what, int milliseconds) {
        watch_.Take();
        const double cpu = ProcessorTime(CLOCK_PROCESS_CPUTIME_ID);
        QTest::qWait(milliseconds);
        std::printf("%-22s %7d ms (%6.0f ms CPU), %s\n", what, milliseconds,
                    ProcessorTime(CLOCK_PROCESS_CPUTIME_ID) - cpu, watch_.Take().c_str());
    }
    TDocumentTab& Tab() const { return *window_.CurrentTab(); }
    bool Judged() const { return Tab().Result().has_value(); }

    /// The guides on their forms: opened, some chosen, the box of a place in the middle of the file.
    void Preview() {
        Open("guides on their forms", "imprimirGuias", [this](TFGuidePrint& dialog) {
            TGuideChoiceModel& list = *dialog.findChild<TGuideChoiceModel*>();
            for (int i = 0; i < 20; ++i)
                list.setData(list.index(i % list.rowCount(), 0), i % 2 == 0 ? Qt::Unchecked : Qt::Checked,
                             Qt::CheckStateRole);
            std::printf("%-22s %s, %zu pages\n", "20 marks", watch_.Take().c_str(), dialog.Pages().Count());
        });
        TXmlEditor& editor = *Tab().Editor();
        const int line = editor.LineCount() / 2; // 0-based; of a file of two lines the long one
        editor.GoTo(line + 1, editor.lineLength(line) / 2);
        Open("box of a place", "mostrarNoFormulario", [](TFGuidePrint&) {});
    }

    /// Opens the guides by an action, uses them and closes them.
    void Open(const char* what, const char* action, const std::function<void(TFGuidePrint&)>& use) {
        QTimer poll;
        int turns = 0;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            QWidget* const shown = QApplication::activeModalWidget();
            auto* const dialog = qobject_cast<TFGuidePrint*>(shown);
            if (dialog == nullptr && qobject_cast<QMessageBox*>(shown) != nullptr) {
                std::printf("%-22s there is none\n", what);
                shown->close();
            }
            if (dialog == nullptr || ++turns < 10) // what is drawn first belongs to it
                return;
            poll.stop();
            std::printf("%-22s %s\n", what, watch_.Take().c_str());
            use(*dialog);
            dialog->close();
        });
        poll.start(50);
        watch_.Take();
        window_.findChild<QAction*>(QString::fromLatin1(action))->trigger();
    }
    void Run() {
        const auto now = [] { return true; };
        const auto judged = [this] { return Judged(); };
        TXmlEditor& editor = *Tab().Editor();
        Step(
            "scroll 100 pages",
            [&] {
                editor.setFocus();
                for (int i = 0; i < 100; ++i) {
                    QTest::keyClick(&editor, Qt::Key_PageDown);
                    QCoreApplication::processEvents();
                }
            },
            now);
        Step(
            "to the end", [&] { editor.GoTo(editor.LineCount(), 1); }, now);
        Step(
            "type 50 letters",
            [&] {
                editor.GoTo(editor.LineCount() / 2, 1);
                for (int i = 0; i < 50; ++i) {
                    QTest::keyClick(&editor, Qt::Key_X);
                    QCoreApplication::processEvents();
                }
            },
            now);
        Step(
            "undo", [&] { editor.undo(); }, now);
        window_.findChild<QAction*>(QStringLiteral("substituir"))->trigger();
        Tab()
            .Search()
            ->findChild<QLineEdit*>(QStringLiteral("localizar"))
            ->setText(QStringLiteral("não está aqui"));
        Action("localizarProxima", now);
        Action("validar", judged);
        Action("salvar", [&] { return !Tab().Controller().Modified(); });
        Action("formatar", judged);
        Action("desfazer", now);
        Action("validar", judged);
        QTreeView* list = Tab().Messages()->List();
        for (int column = 0; column < list->model()->columnCount(); ++column)
            Step(("sort by " + list->model()->headerData(column, Qt::Horizontal).toString().toStdString())
                     .c_str(),
                 [&] { list->sortByColumn(column, Qt::AscendingOrder); }, now);
        Step(
            "filter",
            [&] {
                Tab()
                    .Messages()
                    ->findChild<QLineEdit*>(QStringLiteral("filtroTexto"))
                    ->setText(QStringLiteral("valor"));
            },
            now);
    }

  private:
    TStallWatch watch_;
    TMainWindow window_;
};

} // namespace

int main(int argc, char* argv[]) {
    const QApplication application(argc, argv);
    const std::string kind = argc == 3 ? argv[1] : "";
    if (argc != 2 && kind != "--guias") {
        std::fputs("bench_janela [--guias] FILE\n", stderr);
        return 2;
    }
    TMeasure measure(QString::fromLocal8Bit(argv[argc - 1]));
    if (kind == "--guias")
        measure.Preview();
    else
        measure.Run();
    return 0;
}
