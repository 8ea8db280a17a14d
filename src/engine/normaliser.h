#pragma once
// The normaliser over libsndfile: one pass for the peak, one pass writing
// every sample scaled so that the peak reaches the asked percent of full
// scale, in the source's own format. Whole-number formats are scaled in their
// own steps, so the peak lands within one step of the aim.

#include "core/platform/encoders.h"

namespace velaro::engine {

class SndfileNormaliser : public platform::Normaliser {
public:
    // Thread: any; one job per call.
    std::string Normalize(const std::string& source, const std::string& target, int32_t percent,
                          const std::atomic<bool>& stop, const platform::PercentDone& progress) override;
};

}  // namespace velaro::engine
