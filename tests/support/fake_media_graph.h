#pragma once
// A media graph whose position runs with the event loop's clock while it
// plays; a path with "broken" in it cannot be rendered. It records what it
// was asked, for the player tests.

#include <algorithm>
#include <string>
#include <vector>

#include "core/platform/media_graph.h"
#include "core/ui/event_loop.h"

namespace velaro::testing {

class ClockGraph : public platform::MediaGraph {
public:
    explicit ClockGraph(ui::EventLoop& loop) : loop_(loop) {}
    bool RenderFile(const std::string& path) override {
        rendered.push_back(path);
        if (path.find("broken") != std::string::npos) return false;
        file = path;
        pos_ = 0;
        state_ = 0;
        return true;
    }
    void Run() override {
        if (state_ != 2) since_ = loop_.now();
        state_ = 2;
    }
    void Pause() override { hold(1); }
    void Stop() override { hold(0); }
    void Release() override {
        file.clear();
        state_ = 0;
    }
    double CurrentPosition() override {
        return std::min(pos_ + (state_ == 2 ? (loop_.now() - since_) / 1000.0 : 0), Duration());
    }
    void SetCurrentPosition(double s) override {
        pos_ = s;
        since_ = loop_.now();
        seeks.push_back(s);
    }
    double Duration() override { return file.empty() ? 0 : duration; }
    int State() override { return state_; }
    void SetVolume(int v) override { volumes.push_back(volume = v); }
    int Volume() override { return volume; }
    void SetBalance(int) override {}

    std::string file;
    double duration = 30;
    int volume = 0;
    std::vector<std::string> rendered;
    std::vector<double> seeks;
    std::vector<int> volumes;

private:
    void hold(int state) {
        pos_ = CurrentPosition();
        state_ = state;
    }
    ui::EventLoop& loop_;
    double pos_ = 0;
    int64_t since_ = 0;
    int state_ = 0;
};

}  // namespace velaro::testing
