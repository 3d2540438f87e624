#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "virtualcam/scene/PictureState.h"

namespace virtualcam {

/// Pictures are made for so many frames a second.
inline constexpr int framesPerSecond = 30;

/// The size of a picture, in pixels.
struct PictureSize {
    int width = 640;
    int height = 480;
};

/// Makes a camera's pictures. Used from one thread at a time.
class FrameGenerator {
  public:
    virtual ~FrameGenerator() = default;

    /// Draws picture number `index` as `state` asks into `pixels`, row by row without gaps, each
    /// pixel 0x00RRGGBB. Equal arguments give equal pictures.
    virtual void generate(const PictureState& state, std::uint64_t index,
                          std::span<std::uint32_t> pixels) = 0;
};

/// Returns a generator of a scene in which every control can be seen to work.
std::unique_ptr<FrameGenerator> makeSceneGenerator(PictureSize size);

}  // namespace virtualcam
