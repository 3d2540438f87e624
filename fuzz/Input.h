#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// The bytes of one run, from which everything is taken that the world outside the program says.
/// Behind their end there are zeros, which every target reads as a world that behaves.
inline struct Input {
    std::span<const std::uint8_t> rest;

    bool atEnd() const { return rest.empty(); }
    std::uint8_t byte() { return atEnd() ? 0 : std::exchange(rest, rest.subspan(1)).front(); }
    void fill(std::span<std::uint8_t> to) {
        std::ranges::generate(to, [this] { return byte(); });
    }
    std::string text() {
        std::vector<std::uint8_t> bytes(byte() % 91);
        fill(bytes);
        return {bytes.begin(), bytes.end()};
    }
    bool seldom() { return byte() == 0xFF; }
    auto& oneOf(auto&& list) { return *std::next(std::begin(list), byte() % std::ssize(list)); }
} input;

/// Ends the run as a finding unless the condition holds: nobody catches this.
inline void require(bool holds, const char* what) {
    if (!holds)
        throw std::logic_error(what);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
