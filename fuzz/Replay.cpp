// Runs a fuzz target once on each input of a folder, with any compiler.

#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/Input.h"

int main(int /*argc*/, char** argv) {
    int status = 1;  // an empty folder proves nothing
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        std::fprintf(stderr, "%s\n", entry.path().c_str());
        const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
        status = LLVMFuzzerTestOneInput(data, bytes.size());
    }
    return status;
}
