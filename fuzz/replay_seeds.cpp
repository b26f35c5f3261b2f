// Runs a fuzz target over all files of a folder, as an ordinary test.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size);

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    std::vector<std::filesystem::path> seeds;
    for (const auto &entry : std::filesystem::directory_iterator(argv[1]))
        seeds.push_back(entry.path());
    std::sort(seeds.begin(), seeds.end());
    for (const auto &seed : seeds) {
        std::printf("%s\n", seed.filename().c_str());
        std::fflush(stdout);
        std::ifstream file(seed, std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    }
    std::printf("%zu seeds\n", seeds.size());
    return seeds.empty() ? 1 : 0;
}
