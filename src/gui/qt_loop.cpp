#include "qt_loop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <thread>

#include "core/ui/control.h"

namespace velaro::gui {

QtLoop::QtLoop() : clock_(std::make_unique<QElapsedTimer>()) { clock_->start(); }

QtLoop::~QtLoop() {
    for (auto& [t, s] : timers_) delete s.qt;
}

int64_t QtLoop::now() const { return clock_->elapsed(); }

void QtLoop::doEvents() { QCoreApplication::processEvents(QEventLoop::AllEvents); }

void QtLoop::post(std::function<void()> fn) {
    QMetaObject::invokeMethod(this, std::move(fn), Qt::QueuedConnection);
}

void QtLoop::sleep(int64_t ms) {
    if (ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void QtLoop::runUntil(const std::function<bool()>& done) {
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (done()) loop.quit();
    });
    check.start(10);
    if (!done()) loop.exec();
}

void QtLoop::timerChanged(ui::Timer& timer) {
    Slot& s = timers_[&timer];
    if (!s.qt) {
        s.qt = new QTimer(this);
        s.qt->setTimerType(Qt::PreciseTimer);
        ui::Timer* t = &timer;
        QObject::connect(s.qt, &QTimer::timeout, this, [this, t] {
            auto it = timers_.find(t);
            // A tick is not entered again while its own handler runs.
            if (it == timers_.end() || it->second.running) return;
            it->second.running = true;
            t->fire();
            it = timers_.find(t);
            if (it != timers_.end()) it->second.running = false;
        });
    }
    if (!timer.active()) {
        s.qt->stop();
        return;
    }
    if (!s.qt->isActive() || s.qt->interval() != timer.interval()) s.qt->start(timer.interval());
}

void QtLoop::timerGone(ui::Timer& timer) {
    auto it = timers_.find(&timer);
    if (it == timers_.end()) return;
    it->second.qt->deleteLater();
    timers_.erase(it);
}

}  // namespace velaro::gui
