#include "config_vlr.h"

#include <vector>

#include "../base/delimited_record.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"

namespace velaro::shell {

std::string writeConfig(const ConfigVlr& c) {
    using F = RecordField;
    return writeRecord({F::Text(c.configMark), F::Number(c.chosenInput), F::Number(c.colorUnsung),
                        F::Number(c.colorSung), F::Number(c.fontSize), F::Text(c.fontName),
                        F::Text(c.normalizePercent), F::Boolean(c.normalizeAfterSave), F::Boolean(c.meterEnabled),
                        F::Boolean(c.programChangeOn), F::Boolean(c.soundBankOn), F::Number(c.meterDeviceId)});
}

int readConfig(std::string_view bytes, ConfigVlr& c) {
    const std::vector<RecordField> f = readRecords(bytes);
    int taken = 0;
    auto text = [&](std::string& out) {
        out = fieldText(f.at(taken));
        ++taken;
    };
    auto number = [&](int32_t& out, double lo, double hi) {
        const double v = roundHalfEven(fieldNumber(f.at(taken)));
        if (v < lo || v > hi) throw VbError(VbErr::Overflow);
        out = static_cast<int32_t>(v);
        ++taken;
    };
    auto boolean = [&](bool& out) {
        out = fieldBoolean(f.at(taken));
        ++taken;
    };
    try {
        text(c.configMark);
        number(c.chosenInput, -2147483648.0, 2147483647.0);
        number(c.colorUnsung, -2147483648.0, 2147483647.0);
        number(c.colorSung, -2147483648.0, 2147483647.0);
        number(c.fontSize, 0, 255);
        text(c.fontName);
        text(c.normalizePercent);
        boolean(c.normalizeAfterSave);
        boolean(c.meterEnabled);
        boolean(c.programChangeOn);
        boolean(c.soundBankOn);
        number(c.meterDeviceId, -32768, 32767);
    } catch (const std::exception&) {
        // Input past the end or a field of the wrong kind: the rest stay.
    }
    return taken;
}

}  // namespace velaro::shell
