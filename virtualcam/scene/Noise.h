#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "virtualcam/scene/PictureState.h"

namespace virtualcam {

/// The sensor's noise: one part that stays in its place, and one that is new in every picture.
/// 2D reduction works on both, 3D reduction on what changes from picture to picture.
class Noise {
  public:
    /// No noise is stronger than this, in steps of light (255 is white).
    static constexpr int most = 64;

    Noise();

    /// Fills `line`, at most 1024 values, with the noise of row `y` of picture `index`, in steps
    /// of light.
    void row(const PictureState& state, std::uint64_t index, int y, std::span<int> line) const;

  private:
    std::vector<float> normal_;  // a long run of numbers, mean 0, deviation 1
};

}  // namespace virtualcam
