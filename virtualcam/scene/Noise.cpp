#include "virtualcam/scene/Noise.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "virtualcam/scene/ColourProcess.h"

namespace virtualcam {
namespace {

constexpr std::size_t kRun = 1U << 16U;
constexpr std::size_t kWidest = 1024;

/// Where in the run a row begins: scattered, and the same for the same row.
std::size_t startOf(std::uint64_t key) {
    std::uint64_t x = key * 0x9E3779B97F4A7C15U;
    x ^= x >> 31;
    x *= 0xBF58476D1CE4E5B9U;
    return (x >> 40) % (kRun - kWidest);
}

}  // namespace

Noise::Noise() : normal_(kRun), still_(kRun), moving_(kRun) {
    std::minstd_rand random(1);  // NOLINT(bugprone-random-generator-seed): the same every time
    std::normal_distribution<float> distribution;
    std::ranges::generate(normal_, [&] { return distribution(random); });
}

void Noise::configure(const PictureState& state) {
    const double strength = 2.6 * std::exp2((state.gain - 6) / 80.0);
    const double spatial = state.noiseReduction2D / 6.0;
    const double temporal = state.noiseReduction3D / 8.0;
    const double still = strength * (1 - 0.95 * spatial);
    const double moving = strength * (1 - 0.4 * spatial) * (1 - 0.95 * temporal);
    if (still != stillSigma_)
        scale(still_, still);
    if (moving != movingSigma_)
        scale(moving_, moving);
    stillSigma_ = still;
    movingSigma_ = moving;
}

void Noise::scale(Table& table, double sigma) const {
    constexpr long kMost = ColourProcess::kMargin / 2;  // two parts add up
    std::ranges::transform(normal_, table.begin(), [&](float value) {
        return static_cast<std::int16_t>(
            std::clamp(std::lround(sigma * double{value}), -kMost, kMost));
    });
}

void Noise::row(std::uint64_t index, int y, int width, std::int16_t* line) const {
    const auto rowKey = static_cast<std::uint64_t>(y) + 1;
    const std::int16_t* still = still_.data() + startOf(rowKey);
    const std::int16_t* moving = moving_.data() + startOf(rowKey + (index + 1) * 8192);
    for (int x = 0; x < width; ++x)
        line[x] = static_cast<std::int16_t>(still[x] + moving[x]);
}

}  // namespace virtualcam
