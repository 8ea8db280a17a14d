#pragma once
// The MP3 encoder over LAME: reads anything libsndfile reads, lets LAME
// resample where the rate is not an MPEG one, and writes the LAME info frame
// over the first frame at the end so that players know the exact length and
// play the take without a gap.

#include "core/platform/encoders.h"

namespace velaro::engine {

class LameMp3Encoder : public platform::Mp3Encoder {
public:
    // Thread: any; one job per call, nothing shared between calls.
    std::string Encode(const platform::Mp3Settings& s, const std::atomic<bool>& stop,
                       const platform::PercentDone& progress) override;
};

// LAME's algorithm quality for the control's 0 fast, 1 medium, 2 high.
int lameQuality(int encoderQuality);
// LAME's VBR scale (0 best to 9.999) for the control's 0-100 (100 best).
float lameVbrQuality(int encoderVbrQuality);

}  // namespace velaro::engine
