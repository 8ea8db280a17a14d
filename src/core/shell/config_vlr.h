#pragma once
// config.vlr: one delimited record of twelve fields in the application folder.

#include <cstdint>
#include <string>
#include <string_view>

namespace velaro::shell {

struct ConfigVlr {
    std::string configMark;           // "OK" when the file is to be used
    int32_t chosenInput = 0;          // recording input
    int32_t colorUnsung = 0x8080;
    int32_t colorSung = 0xFF8080;
    int32_t fontSize = 18;
    std::string fontName = "tahoma";  // " " means none was chosen
    std::string normalizePercent;
    bool normalizeAfterSave = false;
    bool meterEnabled = false;
    bool programChangeOn = false;
    bool soundBankOn = false;
    int32_t meterDeviceId = 0;
};

// The record as written: twelve fields, CR LF.
std::string writeConfig(const ConfigVlr& c);
// Reads fields in order into `c` as one Input # statement does: a field that
// cannot be read stops the reading there, and the fields after it keep their
// values. Returns how many fields were taken.
int readConfig(std::string_view bytes, ConfigVlr& c);

}  // namespace velaro::shell
