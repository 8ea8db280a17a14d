// Runs a fuzz target over its seed corpus and the inputs that once crashed
// it, so every build keeps them passing. usage: replay DIR...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    int count = 0;
    for (int a = 1; a < argc; ++a) {
        std::error_code ec;
        if (!fs::is_directory(argv[a], ec)) continue;
        std::vector<fs::path> files;
        for (const auto& e : fs::directory_iterator(argv[a])) if (e.is_regular_file()) files.push_back(e.path());
        std::sort(files.begin(), files.end());
        for (const auto& f : files) {
            std::ifstream in(f, std::ios::binary);
            const std::string bytes((std::istreambuf_iterator<char>(in)), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++count;
        }
    }
    // Nothing at all is a run of no use: the corpus went missing.
    std::printf("%d inputs replayed\n", count);
    return count > 0 ? 0 : 1;
}
