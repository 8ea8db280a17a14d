#pragma once
// The two work controls of the forms: MEnc2, the MP3 encoder (the main form's
// MEnc1, Form1's test), and DGPNorm, the normaliser (Form11's norm). Each
// keeps its members, starts its work off the logic thread and raises its
// progress event on the logic thread; exactly 100.0 is the last report of a
// completed job, and a stopped or failed job never reports it.

#include <string>

#include "../platform/encoders.h"
#include "../ui/event_loop.h"
#include "background_job.h"

namespace velaro::record {

class MEnc2 : public platform::Mp3Settings {
public:
    MEnc2(ui::EventLoop& loop, platform::Mp3Encoder* service) : job_(loop), service_(service) {}

    // Member 12: returns at once; the encode runs by itself.
    void encoderStart();
    // Member 13: ends the encode; what was encoded so far stays a complete MP3.
    void encoderStop() { job_.stop(); }

    // The progress event: percent done.
    std::function<void(double percent)> encoderProgress;
    // Our own addition: the end of every job, with "" or the reason it failed
    // (the forms show none; the window's status and the tests read it).
    std::function<void(const std::string& error)> encoderEnded;
    std::string lastError;
    bool busy() const { return job_.running(); }
    void wait() { job_.wait(); }

private:
    BackgroundJob job_;
    platform::Mp3Encoder* service_;
};

class DGPNorm {
public:
    DGPNorm(ui::EventLoop& loop, platform::Normaliser* service) : job_(loop), service_(service) {}

    // Member 1: source, target, percent; returns at once and runs by itself.
    void Normalize(const std::string& source, const std::string& target, int32_t percent);
    void stop() { job_.stop(); }

    // The progress event: percent done.
    std::function<void(double percent)> progress;
    std::function<void(const std::string& error)> ended;
    std::string lastError;
    bool busy() const { return job_.running(); }
    void wait() { job_.wait(); }

private:
    BackgroundJob job_;
    platform::Normaliser* service_;
};

}  // namespace velaro::record
