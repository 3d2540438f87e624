// The Linux back end on a kernel and a udev that say anything.

#include <sstream>

#include "fuzz/Input.h"
#include "platform/linux/preview/H264Size.h"
#include "platform/linux/preview/JpegPicture.h"
#include "tests/linux/Session.h"
#include "tests/support/Pixels.h"

using namespace platform;

namespace {

/// Any machine, events and requests, as in the scripts of the tests.
void followScript() {
    std::istringstream text({input.rest.begin(), input.rest.end()});
    Lines script;
    for (std::string line; std::getline(text, line);) {
        std::erase(line, '\0');
        // A call that is interrupted for ever never ends.
        if (line.find("error=EINTR") == line.npos && line.find("ioctl=EINTR") == line.npos)
            script.push_back(line);
    }
    saidIn(script);
}

void readAnySize() {
    for (const auto& size : {statedH264Size(input.rest), statedJpegSize(input.rest)})
        require(!size || (size->width >= 0 && size->height >= 0), "a size is no less than nothing");
}

void showAnyImage() {
    const VideoLimits announced{input.byte(), input.byte()};
    const auto picture = makeJpegPicture({input.rest.begin(), input.rest.end()}, announced);
    if (!picture.write)
        return;
    require(picture.width <= announced.width && picture.height <= announced.height, "it fits");
    for (const std::uint32_t pixel : pixelsOf(picture))
        require(pixel >> 24U == 0xFF, "it is opaque");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static constexpr void (*parts[])() = {followScript, showAnyImage, readAnySize};
    static int arguments = 0;
    static const QCoreApplication application(arguments, nullptr);
    input.rest = {data, size};
    input.oneOf(parts)();
    return 0;
}
