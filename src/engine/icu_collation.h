#pragma once
// Text comparison over ICU: the root collation at secondary strength, so
// case is ignored and accents still count, as the desktop's text compare did.

#include <memory>

#include "core/platform/text_collation.h"

struct UCollator;

namespace velaro::engine {

class IcuCollation : public platform::TextCollation {
public:
    IcuCollation();
    ~IcuCollation() override;
    // False when ICU could not open its collator; compare then falls back to plain folding.
    bool ok() const { return collator_ != nullptr; }
    int compare(std::string_view a, std::string_view b) const override;
    std::string sortKey(std::string_view a) const override;

private:
    UCollator* collator_ = nullptr;
    platform::PlainTextCollation plain_;
};

}  // namespace velaro::engine
