#include "song_effects.h"

namespace velaro::platform {

namespace {

bool classByName(const std::string& name, EffectClass& out) {
    for (int i = 0; i < 8; ++i)
        if (name == kEffectClassNames[i]) {
            out = static_cast<EffectClass>(i);
            return true;
        }
    return false;
}

EffectRecord defaultRecord(EffectClass c) {
    EffectRecord r;
    switch (c) {
        case EffectClass::Gargle: r = DSFXGargle{}; break;
        case EffectClass::Chorus: r = DSFXChorus{}; break;
        case EffectClass::Flanger: r = DSFXFlanger{}; break;
        case EffectClass::Echo: r = DSFXEcho{}; break;
        case EffectClass::Distortion: r = DSFXDistortion{}; break;
        case EffectClass::Compressor: r = DSFXCompressor{}; break;
        case EffectClass::ParamEq: r = DSFXParamEq{}; break;
        case EffectClass::WavesReverb: r = DSFXWavesReverb{}; break;
    }
    return r;
}

}  // namespace

int32_t EffectBook::SetFX(int count, const std::vector<DSEFFECTDESC>& desc, std::vector<int32_t>& results) {
    results.assign(count > 0 ? count : 0, DSFXR_UNALLOCATED);
    std::vector<Slot> fresh;
    int32_t hr = DS_OK;
    for (int i = 0; i < count; ++i) {
        EffectClass c{};
        if (i >= static_cast<int>(desc.size()) || !classByName(desc[i].guidDSFXClass, c)) {
            results[i] = DSFXR_UNKNOWN;
            hr = REGDB_E_CLASSNOTREG;
            continue;
        }
        results[i] = DSFXR_LOCSOFTWARE;
        fresh.push_back({next_++, defaultRecord(c)});
    }
    // One class that can't be made and the buffer ends up with no effects at all.
    if (hr != DS_OK) fresh.clear();
    slots_ = std::move(fresh);
    chainChanged();
    return hr;
}

EffectObject EffectBook::GetObjectInPath(const std::string& classGuid, int index, const std::string& iid) {
    EffectClass c{};
    if (!classByName(classGuid, c) || iid != interfaceNameOf(c) || index < 0) return 0;
    int seen = 0;
    for (const Slot& s : slots_)
        if (static_cast<EffectClass>(s.record.index()) == c && seen++ == index) return s.object;
    return 0;
}

int EffectBook::slotOf(EffectObject fx) const {
    for (size_t i = 0; i < slots_.size(); ++i)
        if (fx != 0 && slots_[i].object == fx) return static_cast<int>(i);
    return -1;
}

bool EffectBook::GetAllParameters(EffectObject fx, EffectRecord& out) {
    const int slot = slotOf(fx);
    if (slot < 0) return false;
    out = slots_[slot].record;
    return true;
}

bool EffectBook::SetAllParameters(EffectObject fx, const EffectRecord& in) {
    const int slot = slotOf(fx);
    if (slot < 0 || in.index() != slots_[slot].record.index()) return false;
    slots_[slot].record = in;
    recordChanged(slot);
    return true;
}

std::vector<EffectClass> EffectBook::chain() const {
    std::vector<EffectClass> out;
    for (const Slot& s : slots_) out.push_back(static_cast<EffectClass>(s.record.index()));
    return out;
}

}  // namespace velaro::platform
