#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

/// The bytes of one run, from which everything is taken that the world outside the program says.
/// Behind their end there are zeros, which every target reads as a world that behaves.
struct Input {
    std::span<const std::uint8_t> rest;

    bool atEnd() const { return rest.empty(); }
    void fill(std::span<std::uint8_t> place) {
        const std::size_t count = std::min(place.size(), rest.size());
        std::ranges::fill(std::ranges::copy(rest.first(count), place.begin()).out, place.end(), 0);
        rest = rest.subspan(count);
    }
    template <class Number>
    Number number() {
        Number taken{};
        fill({reinterpret_cast<std::uint8_t*>(&taken), sizeof taken});
        return taken;
    }
    std::uint8_t byte() { return number<std::uint8_t>(); }
    bool seldom() { return byte() == 0xFF; }
    auto& oneOf(auto& list) { return *std::next(std::begin(list), byte() % std::ssize(list)); }
    std::string text() {
        std::string taken(byte() % 91, '\0');
        fill({reinterpret_cast<std::uint8_t*>(taken.data()), taken.size()});
        return taken;
    }
};

inline Input input;

/// Ends the run as a finding unless the condition holds.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "not so: %s\n", what);
        std::abort();
    }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
