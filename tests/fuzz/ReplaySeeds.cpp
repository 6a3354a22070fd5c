// Stands in for the fuzzer where there is none: runs every seed, whole and cut.
//
// NAME FOLDER: exits with 1 when the folder holds no seed.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count);

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2)
        return 2;
    size_t seeds = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
        std::vector<uint8_t> bytes(content.begin(), content.end());
        const size_t step = std::max<size_t>(1, bytes.size() / 64);
        for (size_t count = bytes.size() % step; count <= bytes.size(); count += step)
            if (LLVMFuzzerTestOneInput(bytes.data(), count) != 0) {
                std::fprintf(stderr, "%s: not run\n", entry.path().c_str());
                return 1;
            }
        ++seeds;
    }
    std::printf("%zu seeds\n", seeds);
    return seeds > 0 ? 0 : 1;
}
