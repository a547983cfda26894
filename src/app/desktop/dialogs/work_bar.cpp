#include "app/desktop/dialogs/work_bar.h"

#include "app/desktop/dialogs/dialog_parts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QThread>

#include <memory>

namespace conferix {

namespace {

constexpr int kSteps = 1000;

} // namespace

TWorkBar::TWorkBar(QWidget* parent)
    : QWidget(parent), label_(new QLabel(this)), bar_(new QProgressBar(this)),
      stop_(new QPushButton(QStringLiteral("Parar"), this)) {
    label_->setTextFormat(Qt::PlainText);
    label_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    bar_->setAccessibleName(QStringLiteral("Andamento"));
    auto* const line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(label_, 1);
    line->addWidget(bar_, 1);
    line->addWidget(stop_);
    connect(stop_, &QPushButton::clicked, this, &TWorkBar::Stop);
    connect(this, &TWorkBar::Told, this, &TWorkBar::Show, Qt::QueuedConnection);
    hide();
}

TWorkBar::~TWorkBar() {
    stopped_ = true;
    if (thread_ == nullptr)
        return;
    thread_->disconnect(this);
    thread_->wait();
    delete thread_;
}

void TWorkBar::Stop() {
    stopped_ = true;
    stop_->setEnabled(false);
}

void TWorkBar::Run(TWorkKind kind, const QString& title, std::function<void(const TWork&)> work,
                   std::function<void(std::exception_ptr)> done) {
    kind_ = kind;
    stopped_ = false;
    stop_->setEnabled(true);
    Show(title, -1);
    show();
    const auto failure = std::make_shared<std::exception_ptr>();
    thread_ = QThread::create([this, failure, work = std::move(work)] {
        try {
            work({stopped_, [this](const QString& what, double fraction) { emit Told(what, fraction); }});
        } catch (...) {
            *failure = std::current_exception();
        }
    });
    connect(thread_, &QThread::finished, this, [this, failure, done = std::move(done)] {
        thread_->deleteLater();
        thread_ = nullptr;
        hide();
        emit RunningChanged(false);
        done(*failure);
    });
    emit RunningChanged(true);
    thread_->start();
}

void TWorkBar::Show(const QString& what, double fraction) {
    label_->setText(what);
    bar_->setRange(0, fraction < 0 ? 0 : kSteps);
    bar_->setValue(static_cast<int>(fraction * kSteps));
}

QString ReasonOf(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& error) {
        return ToQt(error.what());
    }
}

} // namespace conferix
