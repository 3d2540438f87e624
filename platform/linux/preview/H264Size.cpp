#include "platform/linux/preview/H264Size.h"

#include <algorithm>
#include <array>
#include <vector>

namespace platform {
namespace {

using Stream = std::span<const std::uint8_t>;

/// Reads the fields of a parameter set, one after the other; zeros behind its end.
class Fields {
  public:
    explicit Fields(Stream coded) {
        // Three, after two zeros, is put in to keep start codes out (7.4.1).
        for (std::size_t i = 0; i < coded.size(); ++i)
            if (i < 2 || coded[i] != 3 || coded[i - 1] != 0 || coded[i - 2] != 0)
                bytes_.push_back(coded[i]);
    }

    std::uint32_t bits(unsigned count) {
        std::uint32_t value = 0;
        for (; count > 0; --count, ++next_)
            value = value << 1U | (next_ / 8 < bytes_.size()
                                       ? std::uint32_t{bytes_[next_ / 8]} >> (7 - next_ % 8) & 1U
                                       : 0U);
        return value;
    }

    /// A number in Exp-Golomb code (9.1). A signed one takes as many bits.
    std::uint32_t number() {
        unsigned zeros = 0;
        while (zeros < 31 && bits(1) == 0)
            ++zeros;
        bits(zeros == 31 ? 1 : 0);  // the one that ends them
        return (1U << zeros) - 1 + bits(zeros);
    }

  private:
    std::vector<std::uint8_t> bytes_;
    std::size_t next_ = 0;  // bit
};

/// Skips the scaling matrices (7.3.2.1.1.1): lists of differences, each of which can end early.
void skipScaling(Fields& fields, unsigned lists) {
    for (unsigned list = 0; list < lists; ++list) {
        if (fields.bits(1) == 0)
            continue;
        std::uint32_t last = 8;
        for (unsigned i = 0, next = 8; i < (list < 6 ? 16U : 64U); ++i) {
            if (next != 0) {
                const std::uint32_t coded = fields.number();
                next = (last + (coded % 2 == 1 ? (coded + 1) / 2 : 0U - coded / 2)) % 256;
            }
            last = next == 0 ? last : next;
        }
    }
}

/// Skips what only profiles with chroma information have: those in which the decoder expects it,
/// as it must find no other size than is found here. 144 is a profile of older editions.
void skipChroma(Fields& fields, std::uint32_t profile) {
    constexpr std::array<std::uint32_t, 11> with{100, 110, 122, 244, 44, 83,
                                                 86,  118, 128, 138, 144};
    if (std::ranges::find(with, profile) == with.end())
        return;
    const bool isFull = fields.number() == 3;  // 4:4:4, whose planes may be separate
    fields.bits(isFull ? 1 : 0);
    fields.number();  // depth of luma
    fields.number();  // and of chroma
    fields.bits(1);
    if (fields.bits(1) == 1)
        skipScaling(fields, isFull ? 12 : 8);
}

/// The size in a sequence parameter set (7.3.2.1.1), which starts behind its header.
VideoLimits sizeIn(Stream parameters) {
    Fields fields(parameters);
    const std::uint32_t profile = fields.bits(8);
    fields.bits(16);  // constraints and level
    fields.number();  // id
    skipChroma(fields, profile);
    fields.number();  // bits of a frame's number
    const std::uint32_t order = fields.number();
    if (order == 0) {
        fields.number();
    } else if (order == 1) {
        fields.bits(1);
        fields.number();
        fields.number();
        for (std::uint32_t left = std::min(fields.number(), 255U); left > 0; --left)
            fields.number();
    }
    fields.number();  // reference frames
    fields.bits(1);
    const auto side = [&] {
        constexpr std::uint32_t most = 1U << 16U;  // macroblocks; far beyond any picture
        return 16 * static_cast<int>(std::min(fields.number(), most) + 1);
    };
    const int width = side();
    const int height = side();
    return {width, height * (fields.bits(1) == 1 ? 1 : 2)};  // of frames, or of their fields
}

}  // namespace

std::optional<VideoLimits> statedH264Size(Stream stream) {
    constexpr std::array<std::uint8_t, 3> startCode{0, 0, 1};
    constexpr std::uint8_t sequenceParameters = 7;  // table 7-1
    const auto nextStart = [&](Stream::iterator from) {
        return std::search(from, stream.end(), startCode.begin(), startCode.end());
    };
    std::optional<VideoLimits> stated;
    for (auto start = nextStart(stream.begin()); start != stream.end();) {
        const auto unit = start + startCode.size();
        start = nextStart(unit);
        if (unit == start || (*unit & 0x1F) != sequenceParameters)
            continue;
        const VideoLimits size = sizeIn({unit + 1, start});
        const VideoLimits before = stated.value_or(VideoLimits{});
        stated = {std::max(size.width, before.width), std::max(size.height, before.height)};
    }
    return stated;
}

}  // namespace platform
