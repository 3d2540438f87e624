#include "tests/kernel/UvcFunction.h"

#include <algorithm>
#include <cerrno>

namespace usbip {
namespace {

using End = ControlReply::End;

/// Standard requests (USB 2.0, table 9-4).
enum Standard : std::uint8_t {
    kGetStatus = 0,
    kClearFeature = 1,
    kGetDescriptor = 6,
    kSetConfiguration = 9,
    kSetInterface = 11,
};

constexpr std::uint8_t kTypeMask = 0x60;
constexpr std::uint8_t kTypeStandard = 0x00;
constexpr std::uint8_t kTypeClass = 0x20;
constexpr std::uint8_t kDirectionIn = 0x80;

/// Selectors of a streaming interface (UVC 1.1, table A-15), and how long their value is.
constexpr unsigned kProbe = 1;
constexpr unsigned kCommit = 2;
constexpr std::size_t kNegotiationLength = 34;

/// The bits of a payload's header (UVC 1.1, 2.4.3.3).
constexpr unsigned kFrameToggle = 0x01;
constexpr unsigned kEndOfFrame = 0x02;
constexpr unsigned kEndOfHeader = 0x80;
constexpr std::size_t kPayloadHeader = 2;

std::uint8_t clamped(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

/// Appends two pixels as Y0 U Y1 V, in the studio range of BT.601.
void appendPair(Bytes& out, std::uint32_t left, std::uint32_t right) {
    const auto red = [](std::uint32_t pixel) { return static_cast<int>(pixel >> 16 & 0xFF); };
    const auto green = [](std::uint32_t pixel) { return static_cast<int>(pixel >> 8 & 0xFF); };
    const auto blue = [](std::uint32_t pixel) { return static_cast<int>(pixel & 0xFF); };
    const auto luma = [&](std::uint32_t pixel) {
        return clamped(((66 * red(pixel) + 129 * green(pixel) + 25 * blue(pixel) + 128) >> 8) + 16);
    };
    const int r = (red(left) + red(right)) / 2;
    const int g = (green(left) + green(right)) / 2;
    const int b = (blue(left) + blue(right)) / 2;
    out.push_back(luma(left));
    out.push_back(clamped(((-38 * r - 74 * g + 112 * b + 128) >> 8) + 128));
    out.push_back(luma(right));
    out.push_back(clamped(((112 * r - 94 * g - 18 * b + 128) >> 8) + 128));
}

/// A ramp from dark to bright that wanders a little, and turns round with the horizontal flip. The
/// virtual camera's own scene takes an emulated machine longer than the host waits for an answer.
class RampGenerator : public virtualcam::FrameGenerator {
  public:
    void configure(virtualcam::PictureSize size) override { size_ = size; }
    void generate(const virtualcam::PictureState& state, std::uint64_t index,
                  std::span<std::uint32_t> pixels) override {
        const auto width = static_cast<std::size_t>(size_.width);
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const std::size_t x = i % width;
            const std::size_t along = state.flipHorizontal != 0 ? width - 1 - x : x;
            const auto grey = static_cast<std::uint32_t>(along * 200 / width + index % 50);
            pixels[i] = grey << 16 | grey << 8 | grey;
        }
    }

  private:
    virtualcam::PictureSize size_;
};

void put32(Bytes& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

ControlReply answer(Bytes data, std::size_t room) {
    data.resize(std::min(data.size(), room));
    return {End::answered, std::move(data)};
}

constexpr Clock::duration kPicturePeriod = std::chrono::nanoseconds{kFrameInterval * 100LL};

}  // namespace

UvcFunction::UvcFunction(std::shared_ptr<virtualcam::VirtualCamera> camera)
    : camera_(std::move(camera)), generator_(std::make_unique<RampGenerator>()) {
    restartPictures();
}

ControlReply UvcFunction::control(const Setup& setup, std::span<const std::uint8_t> data) {
    const std::uint8_t type = setup.bmRequestType & kTypeMask;
    if (type == kTypeStandard)
        return standardRequest(setup);
    if (type != kTypeClass)
        return {End::stalled};
    return (setup.wIndex & 0xFF) == kStreamingInterface ? streamRequest(setup, data)
                                                        : unitRequest(setup, data);
}

ControlReply UvcFunction::standardRequest(const Setup& setup) {
    switch (setup.bRequest) {
        case kGetStatus:
            return answer({0, 0}, setup.wLength);
        case kGetDescriptor:
            return descriptor(setup);
        case kClearFeature:
            // The end of a stream, as the host tells a bulk endpoint of it.
            restartPictures();
            return {};
        case kSetConfiguration:
        case kSetInterface:
            return {};
        default:
            return {End::stalled};
    }
}

ControlReply UvcFunction::descriptor(const Setup& setup) const {
    constexpr unsigned device = 1;
    constexpr unsigned configuration = 2;
    constexpr unsigned string = 3;
    const auto index = static_cast<std::uint8_t>(setup.wValue & 0xFF);
    Bytes bytes;
    if (setup.wValue >> 8 == device)
        bytes = deviceDescriptor(camera_->model());
    else if (setup.wValue >> 8 == configuration)
        bytes = configurationDescriptor(camera_->model());
    else if (setup.wValue >> 8 == string)
        bytes = stringDescriptor(camera_->model(), index);
    return bytes.empty() ? ControlReply{End::stalled} : answer(std::move(bytes), setup.wLength);
}

ControlReply UvcFunction::unitRequest(const Setup& setup, std::span<const std::uint8_t> data) {
    Bytes buffer(data.begin(), data.end());
    buffer.resize(setup.wLength);
    IOUSBDevRequest request{setup.bmRequestType,
                            setup.bRequest,
                            setup.wValue,
                            setup.wIndex,
                            setup.wLength,
                            buffer.data(),
                            0};
    switch (camera_->controlRequest(request)) {
        case 0:
            return answer(setup.bmRequestType & kDirectionIn ? std::move(buffer) : Bytes{},
                          request.wLenDone);
        case ENODEV:
            return {End::gone};
        case ETIMEDOUT:
            return {End::unanswered};
        default:
            return {End::stalled};
    }
}

ControlReply UvcFunction::streamRequest(const Setup& setup, std::span<const std::uint8_t> data) {
    const unsigned selector = setup.wValue >> 8;
    if (selector != kProbe && selector != kCommit)
        return {End::stalled};
    switch (setup.bRequest) {
        case virtualcam::SET_CUR:
            if (data.size() > 3 && data[3] >= 1 && data[3] <= kStreamSizes.size())
                frameIndex_ = data[3];
            if (selector == kCommit)
                restartPictures();
            return {};
        case virtualcam::GET_LEN:
            return answer({kNegotiationLength, 0}, setup.wLength);
        case virtualcam::GET_INFO:
            return answer({virtualcam::kInfoGet | virtualcam::kInfoSet}, setup.wLength);
        case virtualcam::GET_CUR:
        case virtualcam::GET_MIN:
        case virtualcam::GET_MAX:
        case virtualcam::GET_DEF:
            return answer(negotiated(), setup.wLength);
        default:
            return {End::stalled};
    }
}

/// The camera offers one way to stream each size, so every limit equals the current value.
Bytes UvcFunction::negotiated() const {
    Bytes bytes(kNegotiationLength);
    bytes[2] = 1;  // bFormatIndex
    bytes[3] = frameIndex_;
    put32(bytes, 4, kFrameInterval);
    put32(bytes, 18, kStreamSizes.at(frameIndex_ - 1U).bytes());
    put32(bytes, 22, kMaxPayload);
    return bytes;
}

void UvcFunction::restartPictures() {
    const StreamSize& size = kStreamSizes.at(frameIndex_ - 1U);
    generator_->configure({size.width, size.height});
    picture_.clear();
    sent_ = 0;
    due_ = Clock::now();
}

void UvcFunction::drawPicture() {
    const StreamSize& size = kStreamSizes.at(frameIndex_ - 1U);
    std::vector<std::uint32_t> pixels(std::size_t{size.width} * size.height);
    generator_->generate(camera_->nextPicture(), pictures_++, pixels);
    picture_.clear();
    picture_.reserve(size.bytes());
    for (std::size_t i = 0; i < pixels.size(); i += 2)
        appendPair(picture_, pixels[i], pixels[i + 1]);
    sent_ = 0;
    due_ = std::max(due_ + kPicturePeriod, Clock::now());
}

Bytes UvcFunction::payload(std::size_t room) {
    if (Clock::now() < due())
        return {};
    if (sent_ == picture_.size())
        drawPicture();
    const std::size_t count = std::min(picture_.size() - sent_,
                                       std::min<std::size_t>(room, kMaxPayload) - kPayloadHeader);
    const auto toggle = static_cast<unsigned>(pictures_ % 2) * kFrameToggle;
    const unsigned end = sent_ + count == picture_.size() ? kEndOfFrame : 0;
    Bytes bytes{kPayloadHeader, static_cast<std::uint8_t>(kEndOfHeader | end | toggle)};
    const auto from = picture_.begin() + static_cast<std::ptrdiff_t>(sent_);
    bytes.insert(bytes.end(), from, from + static_cast<std::ptrdiff_t>(count));
    sent_ += count;
    return bytes;
}

/// A picture that is begun goes on at once.
Clock::time_point UvcFunction::due() const {
    return sent_ < picture_.size() ? Clock::time_point{} : due_;
}

}  // namespace usbip
