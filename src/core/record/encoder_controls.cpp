#include "encoder_controls.h"

namespace velaro::record {

void MEnc2::encoderStart() {
    // The members are read now; changing them during the encode changes nothing.
    const platform::Mp3Settings settings = *this;
    platform::Mp3Encoder* service = service_;
    lastError.clear();
    job_.start(
        [settings, service](const std::atomic<bool>& stop, const platform::PercentDone& report) -> std::string {
            if (!service) return "no MP3 encoder";
            return service->Encode(settings, stop, report);
        },
        [this](double p) {
            if (encoderProgress) encoderProgress(p);
        },
        [this](const std::string& error) {
            lastError = error;
            if (encoderEnded) encoderEnded(error);
        });
}

void DGPNorm::Normalize(const std::string& source, const std::string& target, int32_t percent) {
    platform::Normaliser* service = service_;
    lastError.clear();
    job_.start(
        [=](const std::atomic<bool>& stop, const platform::PercentDone& report) -> std::string {
            if (!service) return "no normaliser";
            return service->Normalize(source, target, percent, stop, report);
        },
        [this](double p) {
            if (progress) progress(p);
        },
        [this](const std::string& error) {
            lastError = error;
            if (ended) ended(error);
        });
}

}  // namespace velaro::record
