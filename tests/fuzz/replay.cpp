// Stands for libFuzzer where there is none: feeds every file of the folders on the command line to the target, and each
// of its beginnings, since a cut is what breaks decoders most.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void Replay(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    constexpr std::size_t longestCut = 512;
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        if (size > longestCut && size != bytes.size()) continue;
        // A block of its own, so that a read beyond the end is seen.
        const std::vector<std::uint8_t> input(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t files = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            Replay(entry.path());
            ++files;
        }
    }
    std::printf("%zu files replayed\n", files);
    return files == 0 ? 1 : 0;
}
