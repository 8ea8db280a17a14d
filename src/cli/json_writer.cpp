#include "json_writer.h"

#include <cstdio>

#include "core/base/vb_number.h"

namespace velaro::cli {

std::string jsonEscape(std::string_view s) {
    std::string out = "\"";
    for (unsigned char c : s) {
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            case '\b': out += "\\b"; break;
            case '\f': out += "\\f"; break;
            default:
                if (c < 0x20 || c == 0x7F) {
                    char buf[8];
                    std::snprintf(buf, sizeof buf, "\\u%04x", c);
                    out += buf;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    out += '"';
    return out;
}

void JsonWriter::separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!first_.empty()) {
        if (!first_.back()) out_ += spaced_ ? ", " : ",";
        first_.back() = false;
    }
}

JsonWriter& JsonWriter::beginObject() {
    separate();
    out_ += '{';
    first_.push_back(true);
    return *this;
}

JsonWriter& JsonWriter::endObject() {
    first_.pop_back();
    out_ += '}';
    return *this;
}

JsonWriter& JsonWriter::beginArray() {
    separate();
    out_ += '[';
    first_.push_back(true);
    return *this;
}

JsonWriter& JsonWriter::endArray() {
    first_.pop_back();
    out_ += ']';
    return *this;
}

JsonWriter& JsonWriter::key(std::string_view k) {
    separate();
    out_ += jsonEscape(k);
    out_ += spaced_ ? ": " : ":";
    afterKey_ = true;
    return *this;
}

JsonWriter& JsonWriter::value(std::string_view s) {
    separate();
    out_ += jsonEscape(s);
    return *this;
}

JsonWriter& JsonWriter::value(double v) {
    separate();
    out_ += numberText(v);
    return *this;
}

JsonWriter& JsonWriter::value(float v) {
    separate();
    out_ += numberText(v);
    return *this;
}

JsonWriter& JsonWriter::value(int64_t v) {
    separate();
    out_ += std::to_string(v);
    return *this;
}

JsonWriter& JsonWriter::value(bool v) {
    separate();
    out_ += v ? "true" : "false";
    return *this;
}

}  // namespace velaro::cli
