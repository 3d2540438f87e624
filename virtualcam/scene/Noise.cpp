#include "virtualcam/scene/Noise.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace virtualcam {
namespace {

constexpr std::size_t runLength = 1U << 16U;
constexpr std::size_t widestRow = 1024;

/// Where in the run a row begins: scattered, and the same for the same row.
std::size_t startOf(std::uint64_t key) {
    std::uint64_t x = key * 0x9E3779B97F4A7C15U;
    x ^= x >> 31;
    x *= 0xBF58476D1CE4E5B9U;
    return (x >> 40) % (runLength - widestRow);
}

}  // namespace

Noise::Noise() : normal_(runLength) {
    std::minstd_rand random(1);  // NOLINT(bugprone-random-generator-seed): the same every time
    std::normal_distribution<float> distribution;
    std::ranges::generate(normal_, [&] { return distribution(random); });
}

void Noise::row(const PictureState& state, std::uint64_t index, int y, std::span<int> line) const {
    const double strength = 2.6 * std::exp2((state.gain - 6) / 80.0);
    const double spatial = state.noiseReduction2D / 6.0;
    const double temporal = state.noiseReduction3D / 8.0;
    const auto still = static_cast<float>(strength * (1 - 0.95 * spatial));
    const auto moving = static_cast<float>(strength * (1 - 0.4 * spatial) * (1 - 0.95 * temporal));
    const auto rowKey = static_cast<std::uint64_t>(y) + 1;
    const float* stillRun = normal_.data() + startOf(rowKey);
    const float* movingRun = normal_.data() + startOf(rowKey + (index + 1) * 8192);
    for (std::size_t x = 0; x < line.size(); ++x) {
        const float noise = still * stillRun[x] + moving * movingRun[x];
        constexpr float limit = most - 1;
        constexpr float zero = most + 0.5F;
        // A conversion cuts off towards zero: it rounds as long as nothing is below that.
        line[x] = static_cast<int>(std::min(std::max(noise, -limit), limit) + zero) - most;
    }
}

}  // namespace virtualcam
