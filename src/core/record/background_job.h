#pragma once
// One piece of work off the logic thread: its progress reports and its end
// are posted to the event loop, so the form's handlers run where all logic
// runs. A job dies with its owner: the owner's end stops it and waits.

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "../platform/encoders.h"
#include "../ui/event_loop.h"

namespace velaro::record {

class BackgroundJob {
public:
    // Returns "" when the work was done (or stopped), else the reason it failed.
    using Work = std::function<std::string(const std::atomic<bool>& stop, const platform::PercentDone& progress)>;

    explicit BackgroundJob(ui::EventLoop& loop);
    ~BackgroundJob();
    BackgroundJob(const BackgroundJob&) = delete;
    BackgroundJob& operator=(const BackgroundJob&) = delete;

    // Thread: logic. Returns at once. A job still running is stopped and waited for first.
    void start(Work work, std::function<void(double)> onProgress, std::function<void(const std::string&)> onEnd);
    // Thread: logic. Asks the work to end; returns at once.
    void stop() { stop_.store(true); }
    // Thread: logic. Waits until the work has ended; its reports are then queued on the loop.
    void wait();
    // Thread: any. The work is still going on.
    bool running() const { return running_.load(); }
    bool stopRequested() const { return stop_.load(); }

private:
    ui::EventLoop& loop_;
    std::thread thread_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> running_{false};
    // Reports posted after the owner is gone find this false and do nothing.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace velaro::record
