#pragma once
// The old runtime's delimited records (Write # / Input #): fields separated
// by commas, texts in double quotes, numbers in plain decimal, Booleans as
// #TRUE# / #FALSE#, each record ended by CR LF.

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velaro {

struct RecordField {
    enum class Kind { Text, Number, Boolean } kind = Kind::Text;
    std::string text;  // the text, or the number as written
    double number = 0;
    bool boolean = false;

    static RecordField Text(std::string t) { return {Kind::Text, std::move(t), 0, false}; }
    static RecordField Number(double v);
    static RecordField Boolean(bool b) { return {Kind::Boolean, {}, 0, b}; }
};

// One record as Write # puts it, CR LF included.
std::string writeRecord(const std::vector<RecordField>& fields);

// Reads fields as Input # does: a quoted text runs to the next quote, an
// unquoted field to the next comma or line end (spaces around it dropped).
// Reading stops at the end of the bytes; fields past it are not there.
std::vector<RecordField> readRecords(std::string_view bytes);

// Input # into typed fields: an unquoted field read as text keeps its
// characters, as a number it must parse ("#TRUE#" gives -1, "#FALSE#" 0).
double fieldNumber(const RecordField& f);   // throws VbError (type mismatch)
bool fieldBoolean(const RecordField& f);    // throws VbError (type mismatch)
std::string fieldText(const RecordField& f);

}  // namespace velaro
