// velaro: the command line of VELARO DECK.

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "commands.h"

namespace {

const char* kUsage =
    "usage: velaro COMMAND [ARGS]\n"
    "\n"
    "commands:\n"
    "  info FILE [--json]   read a song file (.mid, .kar) and print its model:\n"
    "                       tempo, channel rows, words and lines\n"
    "  help                 this text\n";

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) {
        std::cerr << kUsage;
        return 2;
    }
    const std::string cmd = args.front();
    args.erase(args.begin());
    if (cmd == "--help" || cmd == "-h" || cmd == "help") {
        std::cout << kUsage;
        return 0;
    }
    try {
        if (cmd == "info") return velaro::cli::runInfo(args);
    } catch (const std::exception& e) {
        std::cerr << "velaro " << cmd << ": " << e.what() << '\n';
        return 1;
    }
    std::cerr << "velaro: unknown command '" << cmd << "'\n" << kUsage;
    return 2;
}
