#include "delimited_record.h"

#include <cmath>
#include <cstdlib>

#include "vb_error.h"
#include "vb_number.h"

namespace velaro {

RecordField RecordField::Number(double v) {
    RecordField f{Kind::Number, numberText(v), v, false};
    return f;
}

std::string writeRecord(const std::vector<RecordField>& fields) {
    std::string out;
    for (size_t i = 0; i < fields.size(); ++i) {
        if (i) out += ',';
        const RecordField& f = fields[i];
        switch (f.kind) {
            case RecordField::Kind::Text: out += '"' + f.text + '"'; break;
            case RecordField::Kind::Number: out += numberText(f.number); break;
            case RecordField::Kind::Boolean: out += f.boolean ? "#TRUE#" : "#FALSE#"; break;
        }
    }
    return out + "\r\n";
}

std::vector<RecordField> readRecords(std::string_view s) {
    std::vector<RecordField> out;
    size_t i = 0;
    auto skipSpaces = [&] {
        while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) ++i;
    };
    while (i < s.size()) {
        skipSpaces();
        // Line ends between records are separators too.
        while (i < s.size() && (s[i] == '\r' || s[i] == '\n')) {
            ++i;
            skipSpaces();
        }
        if (i >= s.size()) break;
        RecordField f;
        if (s[i] == '"') {
            size_t end = s.find('"', i + 1);
            if (end == std::string_view::npos) end = s.size();
            f = RecordField::Text(std::string(s.substr(i + 1, end - i - 1)));
            i = end + 1;
            skipSpaces();
        } else {
            size_t end = i;
            while (end < s.size() && s[end] != ',' && s[end] != '\r' && s[end] != '\n') ++end;
            std::string raw(s.substr(i, end - i));
            while (!raw.empty() && (raw.back() == ' ' || raw.back() == '\t')) raw.pop_back();
            i = end;
            if (raw == "#TRUE#" || raw == "#FALSE#") {
                f = RecordField::Boolean(raw == "#TRUE#");
                f.text = raw;
            } else {
                f.kind = RecordField::Kind::Number;
                f.text = raw;
                char* stop = nullptr;
                f.number = raw.empty() ? 0 : std::strtod(raw.c_str(), &stop);
                if (!raw.empty() && (!stop || *stop != '\0')) f.kind = RecordField::Kind::Text;
            }
        }
        if (i < s.size() && s[i] == ',') ++i;
        out.push_back(std::move(f));
    }
    return out;
}

double fieldNumber(const RecordField& f) {
    switch (f.kind) {
        case RecordField::Kind::Number: return f.number;
        case RecordField::Kind::Boolean: return f.boolean ? -1 : 0;
        case RecordField::Kind::Text: {
            if (f.text.empty()) return 0;
            char* stop = nullptr;
            double v = std::strtod(f.text.c_str(), &stop);
            if (!stop || *stop != '\0') throw VbError(VbErr::TypeMismatch, "Type mismatch");
            return v;
        }
    }
    return 0;
}

bool fieldBoolean(const RecordField& f) {
    if (f.kind == RecordField::Kind::Boolean) return f.boolean;
    if (f.text == "True" || f.text == "true") return true;
    if (f.text == "False" || f.text == "false") return false;
    return fieldNumber(f) != 0;
}

std::string fieldText(const RecordField& f) {
    if (f.kind == RecordField::Kind::Boolean) return f.boolean ? "#TRUE#" : "#FALSE#";
    return f.text;
}

}  // namespace velaro
