#pragma once
// An option's value: the word after it, or a usage error naming the option.

#include <string>
#include <vector>

namespace velaro::cli {

inline bool takeValue(const std::vector<std::string>& args, size_t& i, std::string& out, std::string& error) {
    if (i + 1 >= args.size()) {
        error = args[i] + " needs a value";
        return false;
    }
    out = args[++i];
    return true;
}

}  // namespace velaro::cli
