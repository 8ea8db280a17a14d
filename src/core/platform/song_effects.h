#pragma once
// The song's sound buffer with its effect chain, as the effects part and the
// eight panels drive it: the chain set from descriptors, an effect of the
// chain found by class and index, and its parameter record read and written.

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace velaro::platform {

enum class EffectClass : uint8_t { Gargle, Chorus, Flanger, Echo, Distortion, Compressor, ParamEq, WavesReverb };

// The class names the descriptors carry, and the interfaces the panels ask for.
inline constexpr const char* kEffectClassNames[] = {
    "GUID_DSFX_STANDARD_GARGLE",     "GUID_DSFX_STANDARD_CHORUS",     "GUID_DSFX_STANDARD_FLANGER",
    "GUID_DSFX_STANDARD_ECHO",       "GUID_DSFX_STANDARD_DISTORTION", "GUID_DSFX_STANDARD_COMPRESSOR",
    "GUID_DSFX_STANDARD_PARAMEQ",    "GUID_DSFX_WAVES_REVERB"};
inline constexpr const char* kEffectInterfaceNames[] = {
    "IID_DirectSoundFXGargle",     "IID_DirectSoundFXChorus",     "IID_DirectSoundFXFlanger",
    "IID_DirectSoundFXEcho",       "IID_DirectSoundFXDistortion", "IID_DirectSoundFXCompressor",
    "IID_DirectSoundFXParamEq",    "IID_DirectSoundFXWavesReverb"};
inline const char* classNameOf(EffectClass c) { return kEffectClassNames[static_cast<int>(c)]; }
inline const char* interfaceNameOf(EffectClass c) { return kEffectInterfaceNames[static_cast<int>(c)]; }

struct DSEFFECTDESC {
    std::string guidDSFXClass;  // empty: no class
    int32_t lFlags = 0;
};

// What SetFX reports for each descriptor.
enum : int32_t {
    DSFXR_PRESENT = 0,
    DSFXR_LOCHARDWARE = 1,
    DSFXR_LOCSOFTWARE = 2,
    DSFXR_UNALLOCATED = 3,
    DSFXR_FAILED = 4,
    DSFXR_UNKNOWN = 5,
};
inline constexpr int32_t DS_OK = 0;
inline constexpr int32_t REGDB_E_CLASSNOTREG = static_cast<int32_t>(0x80040154u);
inline constexpr int32_t E_FAIL = static_cast<int32_t>(0x80004005u);

// The parameter records, field for field; defaults are the classes' own.
struct DSFXGargle {
    int32_t lRateHz = 20;
    int32_t lWaveShape = 0;
};
struct DSFXChorus {
    float fWetDryMix = 50, fDepth = 10, fFeedback = 25, fFrequency = 1.1f;
    int32_t lWaveform = 1;
    float fDelay = 16;
    int32_t lPhase = 3;
};
struct DSFXFlanger {
    float fWetDryMix = 50, fDepth = 100, fFeedback = -50, fFrequency = 0.25f;
    int32_t lWaveform = 1;
    float fDelay = 2;
    int32_t lPhase = 2;
};
struct DSFXEcho {
    float fWetDryMix = 50, fFeedback = 50, fLeftDelay = 500, fRightDelay = 500;
    int32_t lPanDelay = 0;
};
struct DSFXDistortion {
    float fGain = -18, fEdge = 15, fPostEQCenterFrequency = 2400, fPostEQBandwidth = 2400, fPreLowpassCutoff = 8000;
};
struct DSFXCompressor {
    float fGain = 0, fAttack = 10, fRelease = 200, fThreshold = -20, fRatio = 3, fPredelay = 4;
};
struct DSFXParamEq {
    float fCenter = 8000, fBandwidth = 12, fGain = 0;
};
struct DSFXWavesReverb {
    float fInGain = 0, fReverbMix = 0, fReverbTime = 1000, fHighFreqRTRatio = 0.001f;
};

// A record of any class; the alternative's index is its EffectClass.
using EffectRecord = std::variant<DSFXGargle, DSFXChorus, DSFXFlanger, DSFXEcho, DSFXDistortion, DSFXCompressor,
                                  DSFXParamEq, DSFXWavesReverb>;

// An effect of the chain, as GetObjectInPath hands it out; 0 is none.
using EffectObject = int32_t;

class SongEffects {
public:
    virtual ~SongEffects() = default;
    // The audio path on or off around a change of chain. Thread: logic, as all here.
    virtual void Activate(bool on) = 0;
    // Replaces the chain with `count` effects in order; one result per
    // descriptor. DS_OK, or an error code with the buffer left without effects.
    virtual int32_t SetFX(int count, const std::vector<DSEFFECTDESC>& desc, std::vector<int32_t>& results) = 0;
    // The `index`-th effect of a class in the chain, 0 when there is none.
    virtual EffectObject GetObjectInPath(const std::string& classGuid, int index, const std::string& iid) = 0;
    // False when the object is gone or the record is of another class.
    virtual bool GetAllParameters(EffectObject fx, EffectRecord& out) = 0;
    virtual bool SetAllParameters(EffectObject fx, const EffectRecord& in) = 0;
};

// The chain's bookkeeping with no sound: what a buffer holds and hands out.
// The engine's buffer builds on it; tests use it as it is.
class EffectBook : public SongEffects {
public:
    void Activate(bool on) override { active_ = on; }
    int32_t SetFX(int count, const std::vector<DSEFFECTDESC>& desc, std::vector<int32_t>& results) override;
    EffectObject GetObjectInPath(const std::string& classGuid, int index, const std::string& iid) override;
    bool GetAllParameters(EffectObject fx, EffectRecord& out) override;
    bool SetAllParameters(EffectObject fx, const EffectRecord& in) override;

    bool active() const { return active_; }
    // The chain's classes in order, and each effect's record.
    std::vector<EffectClass> chain() const;
    const EffectRecord& record(int slot) const { return slots_[slot].record; }
    int size() const { return static_cast<int>(slots_.size()); }

protected:
    // Told after the chain or a record changed. Thread: logic.
    virtual void chainChanged() {}
    virtual void recordChanged(int /*slot*/) {}

private:
    struct Slot {
        EffectObject object;
        EffectRecord record;
    };
    int slotOf(EffectObject fx) const;
    std::vector<Slot> slots_;
    EffectObject next_ = 1;
    bool active_ = true;
};

}  // namespace velaro::platform
