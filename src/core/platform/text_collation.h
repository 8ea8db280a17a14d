#pragma once
// Text comparison as the system's collation does it, ignoring case: the
// playlist's sorts order titles, artists and paths through it.

#include <string>
#include <string_view>

namespace velaro::platform {

class TextCollation {
public:
    virtual ~TextCollation() = default;
    // Below, at or above zero as `a` sorts before, with or after `b`; both are Windows-1252 bytes.
    virtual int compare(std::string_view a, std::string_view b) const = 0;
    // Bytes whose plain byte order is compare's order: two keys are equal exactly
    // when their texts compare equal, so sorting by key gives the same outcome.
    virtual std::string sortKey(std::string_view a) const = 0;
};

// Without a collation library: Windows-1252 letters folded to lower case,
// then byte order. Good enough for tests that do not care about accents.
class PlainTextCollation : public TextCollation {
public:
    int compare(std::string_view a, std::string_view b) const override {
        const std::string ka = sortKey(a), kb = sortKey(b);
        return ka < kb ? -1 : (kb < ka ? 1 : 0);
    }
    std::string sortKey(std::string_view a) const override {
        std::string k(a);
        for (char& c : k) {
            const auto u = static_cast<unsigned char>(c);
            if ((u >= 'A' && u <= 'Z') || (u >= 0xC0 && u <= 0xDE && u != 0xD7)) c = static_cast<char>(u + 32);
            else if (u == 0x8A || u == 0x8C || u == 0x8E) c = static_cast<char>(u + 16);  // Š Œ Ž
            else if (u == 0x9F) c = static_cast<char>(0xFF);                               // Ÿ
        }
        return k;
    }
};

}  // namespace velaro::platform
