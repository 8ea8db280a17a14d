#include "background_job.h"

namespace velaro::record {

BackgroundJob::BackgroundJob(ui::EventLoop& loop) : loop_(loop) {}

BackgroundJob::~BackgroundJob() {
    *alive_ = false;
    stop();
    wait();
}

void BackgroundJob::wait() {
    if (thread_.joinable()) thread_.join();
}

void BackgroundJob::start(Work work, std::function<void(double)> onProgress,
                          std::function<void(const std::string&)> onEnd) {
    stop();
    wait();
    stop_.store(false);
    running_.store(true);
    std::weak_ptr<bool> alive = alive_;
    auto progressFn = std::make_shared<std::function<void(double)>>(std::move(onProgress));
    auto endFn = std::make_shared<std::function<void(const std::string&)>>(std::move(onEnd));
    thread_ = std::thread([this, alive, progressFn, endFn, work = std::move(work)] {
        const platform::PercentDone report = [this, alive, progressFn](double p) {
            loop_.post([alive, progressFn, p] {
                if (auto a = alive.lock(); a && *a && *progressFn) (*progressFn)(p);
            });
        };
        std::string error;
        try {
            error = work(stop_, report);
        } catch (const std::exception& e) {
            error = e.what();
        }
        loop_.post([alive, endFn, error] {
            if (auto a = alive.lock(); a && *a && *endFn) (*endFn)(error);
        });
        running_.store(false);
    });
}

}  // namespace velaro::record
