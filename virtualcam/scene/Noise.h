#pragma once

#include <cstdint>
#include <vector>

#include "virtualcam/scene/PictureState.h"

namespace virtualcam {

/// The sensor's noise: one part that stays in its place, and one that is new in every picture.
/// 2D reduction works on both, 3D reduction on what changes from picture to picture.
class Noise {
  public:
    Noise();

    /// Sets the strength that `state` gives.
    void configure(const PictureState& state);

    /// Adds the noise of row `y` of picture `index` to `line`, `width` values in steps of light.
    void row(std::uint64_t index, int y, int width, std::int16_t* line) const;

  private:
    using Table = std::vector<std::int16_t>;

    void scale(Table& table, double sigma) const;

    std::vector<float> normal_;  // a long run of numbers, mean 0, deviation 1
    Table still_;                // the same, as strong as each part
    Table moving_;
    double stillSigma_ = -1;
    double movingSigma_ = -1;
};

}  // namespace virtualcam
