// Runs one fuzzer over the files of a folder, so that the suite covers what was found once.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz.h"

int main(int argc, char* argv[]) {
    tavfuzz::expect(argc == 2, "a folder is named");
    tavfuzz::expect(LLVMFuzzerInitialize == nullptr || LLVMFuzzerInitialize(&argc, &argv) == 0,
                    "the fuzzer starts");
    int count = 0;
    for (const auto& seed : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(seed.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        std::fprintf(stderr, "%s\n", seed.path().c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++count;
    }
    tavfuzz::expect(count > 0, "there are seeds");
    return 0;
}
