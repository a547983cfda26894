#include "app/desktop/background.h"

#include <QThread>

#include <algorithm>

namespace conferix {

QThreadPool& ThreadsBeside() {
    static QThreadPool threads;
    static const bool kWaited = [] {
        threads.setMaxThreadCount(std::max(4, QThread::idealThreadCount()));
        qAddPostRoutine([] { threads.waitForDone(); });
        return true;
    }();
    Q_UNUSED(kWaited)
    return threads;
}

} // namespace conferix
