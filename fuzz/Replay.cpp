// Runs a fuzz target once on each input of a folder, with any compiler.

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "fuzz/Input.h"

// NOLINTNEXTLINE(bugprone-exception-escape): what escapes is a finding
int main(int /*argc*/, char** argv) {
    int status = 1;  // an empty folder proves nothing
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<std::uint8_t> bytes(std::istreambuf_iterator<char>(file), {});
        std::fprintf(stderr, "%s\n", entry.path().c_str());
        status = LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    return status;
}
