#include "platform/linux/preview/JpegPicture.h"

// The library's header needs these two before it.
#include <cstddef>
#include <cstdio>

#include <jpeglib.h>

#include <algorithm>
#include <csetjmp>
#include <memory>
#include <utility>

namespace platform {
namespace {

/// The library's error handler, and the place to which it jumps.
struct Errors : jpeg_error_mgr {
    std::jmp_buf toCaller;
};

/// Decodes one image. Each has a decoder of its own, as a broken one's tables would spoil those
/// that follow. The library reports errors by `longjmp`, which runs no destructors: a function that
/// calls `setjmp` has no objects that need one.
class Decoder {
  public:
    Decoder() {
        info_.err = jpeg_std_error(&errors_);
        errors_.error_exit = [](j_common_ptr info) {
            std::longjmp(static_cast<Errors*>(info->err)->toCaller, 1);
        };
        // No warnings: many cameras send a stray byte with each picture, which does no harm.
        errors_.emit_message = [](j_common_ptr /*info*/, int /*level*/) {};
    }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder() { jpeg_destroy_decompress(&info_); }

    /// Reads what the image says of itself; returns whether it can be a picture within `limits`.
    bool open(std::span<const std::uint8_t> image, const VideoLimits& limits) {
        if (setjmp(errors_.toCaller) != 0)
            return false;
        readHeader(image);
        return jpeg_has_multiple_scans(&info_) == 0 && fitInto(limits);
    }

    /// The size that the image states, if it is one; instead of `open`.
    std::optional<VideoLimits> statedSize(std::span<const std::uint8_t> image) {
        if (setjmp(errors_.toCaller) != 0)
            return std::nullopt;
        readHeader(image);
        return VideoLimits{static_cast<int>(info_.image_width),
                           static_cast<int>(info_.image_height)};
    }

    int width() const { return static_cast<int>(info_.output_width); }
    int height() const { return static_cast<int>(info_.output_height); }

    /// Writes the picture that was opened. Where the image is damaged, it is grey, odd or black.
    void write(std::byte* pixels, int bytesPerLine) {
        constexpr std::uint32_t black = 0xFF000000;
        if (setjmp(errors_.toCaller) == 0)
            return decode(pixels, bytesPerLine);
        for (JDIMENSION row = info_.output_scanline; row < info_.output_height; ++row)
            std::fill_n(reinterpret_cast<std::uint32_t*>(lineAt(pixels, bytesPerLine, row)),
                        width(), black);
    }

  private:
    void readHeader(std::span<const std::uint8_t> image) {
        jpeg_create_decompress(&info_);
        jpeg_mem_src(&info_, image.data(), image.size());
        jpeg_read_header(&info_, TRUE);
    }

    /// Chooses the largest scale, in eighths, at which the picture is within the limits.
    bool fitInto(const VideoLimits& limits) {
        info_.scale_denom = 8;
        for (info_.scale_num = 8; info_.scale_num >= 4; --info_.scale_num) {
            jpeg_calc_output_dimensions(&info_);
            if (width() <= limits.width && height() <= limits.height)
                return true;
        }
        return false;
    }

    static std::byte* lineAt(std::byte* pixels, int bytesPerLine, JDIMENSION row) {
        return pixels + std::ptrdiff_t{bytesPerLine} * row;
    }

    void decode(std::byte* pixels, int bytesPerLine) {
        info_.out_color_space = JCS_EXT_BGRA;
        // Quick rather than exact: the difference can't be seen at this size.
        info_.do_fancy_upsampling = FALSE;
        info_.dct_method = JDCT_IFAST;
        jpeg_start_decompress(&info_);
        while (info_.output_scanline < info_.output_height) {
            // Rows mostly share their colour samples in pairs, so that two at once are cheaper.
            JSAMPROW lines[2];
            JDIMENSION count = 0;
            for (JDIMENSION row = info_.output_scanline; row < info_.output_height && count < 2;
                 ++row)
                lines[count++] = reinterpret_cast<JSAMPROW>(lineAt(pixels, bytesPerLine, row));
            jpeg_read_scanlines(&info_, lines, count);
        }
    }

    Errors errors_{};
    jpeg_decompress_struct info_{};
};

}  // namespace

VideoFrame makeJpegPicture(std::vector<std::uint8_t> image, const VideoLimits& announced) {
    Decoder decoder;
    if (!decoder.open(image, announced))
        return {};
    const auto kept = std::make_shared<const std::vector<std::uint8_t>>(std::move(image));
    return {decoder.width(), decoder.height(),
            [kept, announced](std::byte* pixels, int bytesPerLine) {
                Decoder again;
                if (again.open(*kept, announced))
                    again.write(pixels, bytesPerLine);
            }};
}

std::optional<VideoLimits> statedJpegSize(std::span<const std::uint8_t> image) {
    return Decoder().statedSize(image);
}

}  // namespace platform
