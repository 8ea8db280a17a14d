#pragma once
// The event loop on Qt: timer controls become QTimers, doEvents lets Qt
// process what is pending, post queues work onto the GUI thread.

#include <QObject>

#include <map>
#include <memory>

#include "core/ui/event_loop.h"

class QTimer;
class QElapsedTimer;

namespace velaro::gui {

class QtLoop : public QObject, public ui::EventLoop {
public:
    QtLoop();
    ~QtLoop() override;
    int64_t now() const override;
    void doEvents() override;
    void post(std::function<void()> fn) override;  // any thread
    void sleep(int64_t ms) override;
    void runUntil(const std::function<bool()>& done) override;
    void timerChanged(ui::Timer& timer) override;
    void timerGone(ui::Timer& timer) override;

private:
    struct Slot {
        QTimer* qt = nullptr;
        bool running = false;
    };
    std::map<ui::Timer*, Slot> timers_;
    std::unique_ptr<QElapsedTimer> clock_;
};

}  // namespace velaro::gui
