#include "sound_bank.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace velaro::testing {

namespace {

std::string le(uint32_t v, int n) {
    std::string s;
    for (int i = 0; i < n; ++i) s += static_cast<char>((v >> (8 * i)) & 0xFF);
    return s;
}

std::string chunk(const std::string& id, const std::string& body) {
    std::string s = id + le(static_cast<uint32_t>(body.size()), 4) + body;
    if (body.size() % 2) s += '\0';
    return s;
}

std::string list(const std::string& type, const std::string& body) { return chunk("LIST", type + body); }

std::string name20(const std::string& n) {
    std::string s = n;
    s.resize(20, '\0');
    return s;
}

}  // namespace

std::string tinySf2() {
    // 100 samples per cycle at 44000 Hz: 440 Hz, so the loop closes cleanly.
    const int rate = 44000, cycles = 100, len = 100 * cycles;
    std::string smpl;
    for (int i = 0; i < len; ++i) {
        auto v = static_cast<int16_t>(std::lround(20000 * std::sin(2 * M_PI * i / 100.0)));
        smpl += le(static_cast<uint16_t>(v), 2);
    }
    smpl += std::string(46 * 2, '\0');  // the format wants 46 zero samples after each sample

    const std::string info = list("INFO", chunk("ifil", le(2, 2) + le(1, 2)) + chunk("isng", std::string("EMU8000\0", 8)) +
                                              chunk("INAM", std::string("Tiny\0\0", 6)));
    const std::string sdta = list("sdta", chunk("smpl", smpl));

    std::string phdr = name20("Sine") + le(0, 2) + le(0, 2) + le(0, 2) + le(0, 4) + le(0, 4) + le(0, 4);
    phdr += name20("EOP") + le(0, 2) + le(0, 2) + le(1, 2) + le(0, 4) + le(0, 4) + le(0, 4);
    const std::string pbag = le(0, 2) + le(0, 2) + le(1, 2) + le(0, 2);
    const std::string pmod(10, '\0');
    const std::string pgen = le(41, 2) + le(0, 2) + le(0, 4);  // instrument 0, then the terminal
    const std::string inst = name20("Sine") + le(0, 2) + name20("EOI") + le(1, 2);
    const std::string ibag = le(0, 2) + le(0, 2) + le(2, 2) + le(0, 2);
    const std::string imod(10, '\0');
    const std::string igen = le(54, 2) + le(1, 2) + le(53, 2) + le(0, 2) + le(0, 4);  // loop; sample 0
    std::string shdr = name20("Sine") + le(0, 4) + le(len, 4) + le(0, 4) + le(len, 4) + le(rate, 4) +
                       std::string(1, 69) + std::string(1, 0) + le(0, 2) + le(1, 2);
    shdr += name20("EOS") + std::string(26, '\0');
    const std::string pdta = list("pdta", chunk("phdr", phdr) + chunk("pbag", pbag) + chunk("pmod", pmod) +
                                              chunk("pgen", pgen) + chunk("inst", inst) + chunk("ibag", ibag) +
                                              chunk("imod", imod) + chunk("igen", igen) + chunk("shdr", shdr));
    return chunk("RIFF", "sfbk" + info + sdta + pdta);
}

std::string tinyDls() {
    const int rate = 44000, len = 100 * 100;
    std::string data;
    for (int i = 0; i < len; ++i) {
        auto v = static_cast<int16_t>(std::lround(20000 * std::sin(2 * M_PI * i / 100.0)));
        data += le(static_cast<uint16_t>(v), 2);
    }
    // One loop over the whole sine; unity note 69 (440 Hz).
    const std::string wsmp = chunk("wsmp", le(20, 4) + le(69, 2) + le(0, 2) + le(0, 4) + le(0, 4) + le(1, 4) +
                                               le(16, 4) + le(0, 4) + le(0, 4) + le(len, 4));
    const std::string rgnh = chunk("rgnh", le(0, 2) + le(127, 2) + le(0, 2) + le(127, 2) + le(0, 2) + le(0, 2));
    const std::string wlnk = chunk("wlnk", le(0, 2) + le(0, 2) + le(1, 4) + le(0, 4));
    const std::string ins = list("ins ", chunk("insh", le(1, 4) + le(0, 4) + le(0, 4)) +
                                             list("lrgn", list("rgn ", rgnh + wsmp + wlnk)));
    const std::string fmt = chunk("fmt ", le(1, 2) + le(1, 2) + le(rate, 4) + le(rate * 2, 4) + le(2, 2) + le(16, 2));
    const std::string wave = list("wave", fmt + wsmp + chunk("data", data));
    return chunk("RIFF", "DLS " + chunk("colh", le(1, 4)) + list("lins", ins) +
                             chunk("ptbl", le(8, 4) + le(1, 4) + le(0, 4)) + list("wvpl", wave));
}

double zeroCrossingFrequency(const float* s, size_t count, int stride, int sampleRate) {
    size_t first = 0, last = 0, crossings = 0;
    for (size_t i = 1; i < count; ++i) {
        if (s[(i - 1) * stride] < 0 && s[i * stride] >= 0) {
            if (crossings == 0) first = i;
            last = i;
            ++crossings;
        }
    }
    if (crossings < 2) return 0;
    return static_cast<double>(crossings - 1) * sampleRate / static_cast<double>(last - first);
}

}  // namespace velaro::testing
