#pragma once
// A small JSON writer: objects, arrays, strings (UTF-8 in, escaped out) and
// numbers in their shortest exact form.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velaro::cli {

class JsonWriter {
public:
    // Spaced: ", " and ": " between items, as the commands whose output is
    // written that way print it; otherwise nothing between them.
    explicit JsonWriter(bool spaced = false) : spaced_(spaced) {}
    JsonWriter& beginObject();
    JsonWriter& endObject();
    JsonWriter& beginArray();
    JsonWriter& endArray();
    JsonWriter& key(std::string_view k);
    JsonWriter& value(std::string_view s);
    JsonWriter& value(const char* s) { return value(std::string_view(s)); }
    JsonWriter& value(double v);
    JsonWriter& value(float v);
    JsonWriter& value(int64_t v);
    JsonWriter& value(int v) { return value(static_cast<int64_t>(v)); }
    JsonWriter& value(bool v);
    const std::string& str() const { return out_; }

private:
    void separate();
    std::string out_;
    std::vector<bool> first_;
    bool afterKey_ = false;
    bool spaced_ = false;
};

std::string jsonEscape(std::string_view utf8);

}  // namespace velaro::cli
