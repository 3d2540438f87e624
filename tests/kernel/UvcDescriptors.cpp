#include "tests/kernel/UvcDescriptors.h"

#include <QString>
#include <algorithm>
#include <initializer_list>
#include <iterator>

namespace usbip {
namespace {

using virtualcam::CameraModel;

enum StringIndex : std::uint8_t { kNoString, kManufacturer, kProduct };

/// Appends little-endian fields.
class Writer {
  public:
    Writer& u8(std::initializer_list<unsigned> values) {
        for (const unsigned value : values)
            bytes_.push_back(static_cast<std::uint8_t>(value));
        return *this;
    }
    Writer& u16(unsigned value) { return u8({value & 0xFF, value >> 8 & 0xFF}); }
    Writer& u32(std::uint32_t value) { return u16(value & 0xFFFF).u16(value >> 16); }
    Writer& append(const Bytes& bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    Bytes take() { return std::move(bytes_); }

  private:
    Bytes bytes_;
};

/// Puts the length byte, which counts itself, before `rest`.
Bytes descriptor(Writer& rest) {
    const Bytes bytes = rest.take();
    return Writer().u8({static_cast<unsigned>(bytes.size()) + 1}).append(bytes).take();
}

/// Which bit of its unit's bmControls announces a control (UVC 1.1, tables 3-6 and 3-8).
struct ControlBit {
    std::uint8_t unit;
    std::uint8_t selector;
    unsigned bit;
};

constexpr std::array kControlBits{
    ControlBit{virtualcam::kCameraTerminal, virtualcam::CT_AE_MODE_CONTROL, 1},
    ControlBit{virtualcam::kCameraTerminal, virtualcam::CT_EXPOSURE_TIME_ABSOLUTE_CONTROL, 3},
    ControlBit{virtualcam::kCameraTerminal, virtualcam::CT_FOCUS_ABSOLUTE_CONTROL, 5},
    ControlBit{virtualcam::kCameraTerminal, virtualcam::CT_ZOOM_ABSOLUTE_CONTROL, 9},
    ControlBit{virtualcam::kCameraTerminal, virtualcam::CT_PANTILT_ABSOLUTE_CONTROL, 11},
    ControlBit{virtualcam::kCameraTerminal, virtualcam::CT_FOCUS_AUTO_CONTROL, 17},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_BRIGHTNESS_CONTROL, 0},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_CONTRAST_CONTROL, 1},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_HUE_CONTROL, 2},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_SATURATION_CONTROL, 3},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_SHARPNESS_CONTROL, 4},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_GAMMA_CONTROL, 5},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_WHITE_BALANCE_TEMPERATURE_CONTROL, 6},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_BACKLIGHT_COMPENSATION_CONTROL, 8},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_GAIN_CONTROL, 9},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_POWER_LINE_FREQUENCY_CONTROL, 10},
    ControlBit{virtualcam::kProcessingUnit, virtualcam::PU_WHITE_BALANCE_TEMPERATURE_AUTO_CONTROL,
               12},
};

/// The bmControls of `unit`. An extension unit announces selector n by bit n - 1.
std::uint32_t controlBits(const CameraModel& model, std::uint8_t unit) {
    std::uint32_t bits = 0;
    for (const auto& row : model.controls) {
        if (row.id.unit != unit)
            continue;
        const auto found =
            std::find_if(kControlBits.begin(), kControlBits.end(), [&](const ControlBit& known) {
                return known.unit == unit && known.selector == row.id.selector;
            });
        if (unit == virtualcam::kVendorUnit)
            bits |= 1U << (row.id.selector - 1);
        else if (found != kControlBits.end())
            bits |= 1U << found->bit;
    }
    return bits;
}

constexpr unsigned kCsInterface = 0x24;
constexpr unsigned kOutputTerminal = 4;

Bytes vendorUnitDescriptor(const CameraModel& model) {
    // A GUID of the camera's own, so that the host's driver adds no mappings of another vendor's.
    static constexpr std::initializer_list<unsigned> guid{0x7A, 0x21, 0x5E, 0x0C, 0x93, 0xD4,
                                                          0x4B, 0x68, 0x8F, 0x30, 0xA6, 0x5D,
                                                          0x1B, 0xE7, 0x42, 0x99};
    const std::uint32_t bits = controlBits(model, virtualcam::kVendorUnit);
    Writer writer;
    writer.u8({kCsInterface, 0x06, virtualcam::kVendorUnit}).u8(guid);
    writer.u8({static_cast<unsigned>(__builtin_popcount(bits)), 1, virtualcam::kProcessingUnit, 4});
    return descriptor(writer.u32(bits).u8({kNoString}));
}

/// The class-specific descriptors of the video-control interface, without their header.
Bytes unitDescriptors(const CameraModel& model) {
    const std::uint32_t lens = controlBits(model, virtualcam::kCameraTerminal);
    const std::uint32_t picture = controlBits(model, virtualcam::kProcessingUnit);
    Writer camera;
    camera.u8({kCsInterface, 0x02, virtualcam::kCameraTerminal}).u16(0x0201).u8({0, kNoString});
    camera.u16(0).u16(0).u16(0).u8({3}).u16(lens & 0xFFFF).u8({lens >> 16});
    Writer processing;
    processing.u8({kCsInterface, 0x05, virtualcam::kProcessingUnit, virtualcam::kCameraTerminal});
    processing.u16(0).u8({2}).u16(picture).u8({kNoString, 0});
    Writer output;
    output.u8({kCsInterface, 0x03, kOutputTerminal}).u16(0x0101);
    output.u8({0, virtualcam::kVendorUnit, kNoString});
    return Writer()
        .append(descriptor(camera))
        .append(descriptor(processing))
        .append(vendorUnitDescriptor(model))
        .append(descriptor(output))
        .take();
}

Bytes controlInterface(const CameraModel& model) {
    const Bytes units = unitDescriptors(model);
    constexpr unsigned headerLength = 13;
    constexpr std::uint32_t clockFrequency = 48'000'000;
    Writer interface;
    interface.u8({0x04, kControlInterface, 0, 0, 0x0E, 0x01, 0x00, kNoString});
    Writer header;
    header.u8({kCsInterface, 0x01}).u16(0x0110);
    header.u16(headerLength + static_cast<unsigned>(units.size())).u32(clockFrequency);
    header.u8({1, kStreamingInterface});
    return Writer().append(descriptor(interface)).append(descriptor(header)).append(units).take();
}

/// The format YUY2 with all its sizes, and its colours.
Bytes formatDescriptors() {
    static constexpr std::initializer_list<unsigned> yuy2{
        'Y', 'U', 'Y', '2', 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
    Writer format;
    format.u8({kCsInterface, 0x04, 1, kStreamSizes.size()}).u8(yuy2).u8({16, 1, 0, 0, 0, 0});
    Writer all;
    all.append(descriptor(format));
    unsigned index = 0;
    for (const auto& size : kStreamSizes) {
        const std::uint32_t bitRate = size.bytes() * 8 * (10'000'000 / kFrameInterval);
        Writer frame;
        frame.u8({kCsInterface, 0x05, ++index, 0}).u16(size.width).u16(size.height);
        frame.u32(bitRate).u32(bitRate).u32(size.bytes());
        frame.u32(kFrameInterval).u8({1}).u32(kFrameInterval);
        all.append(descriptor(frame));
    }
    Writer colours;
    colours.u8({kCsInterface, 0x0D, 1, 1, 4});
    return all.append(descriptor(colours)).take();
}

Bytes streamingInterface() {
    const Bytes formats = formatDescriptors();
    constexpr unsigned headerLength = 14;
    Writer interface;
    interface.u8({0x04, kStreamingInterface, 0, 1, 0x0E, 0x02, 0x00, kNoString});
    Writer header;
    header.u8({kCsInterface, 0x01, 1}).u16(headerLength + static_cast<unsigned>(formats.size()));
    header.u8({kStreamingEndpoint, 0, kOutputTerminal, 0, 0, 0, 1, 0});
    Writer endpoint;
    endpoint.u8({0x05, kStreamingEndpoint, 0x02}).u16(512).u8({0});
    return Writer()
        .append(descriptor(interface))
        .append(descriptor(header))
        .append(formats)
        .append(descriptor(endpoint))
        .take();
}

}  // namespace

Bytes deviceDescriptor(const CameraModel& model) {
    Writer device;
    device.u8({0x01}).u16(0x0200).u8({0xEF, 0x02, 0x01, 64});
    device.u16(model.vendorID).u16(model.productID).u16(0x0100);
    return descriptor(device.u8({kManufacturer, kProduct, kNoString, 1}));
}

Bytes configurationDescriptor(const CameraModel& model) {
    constexpr unsigned ownLength = 9;
    Writer association;
    association.u8({0x0B, kControlInterface, 2, 0x0E, 0x03, 0x00, kNoString});
    const Bytes interfaces = Writer()
                                 .append(descriptor(association))
                                 .append(controlInterface(model))
                                 .append(streamingInterface())
                                 .take();
    Writer configuration;
    configuration.u8({0x02}).u16(ownLength + static_cast<unsigned>(interfaces.size()));
    configuration.u8({2, 1, kNoString, 0x80, 250});
    return Writer().append(descriptor(configuration)).append(interfaces).take();
}

Bytes stringDescriptor(const CameraModel& model, std::uint8_t index) {
    constexpr unsigned americanEnglish = 0x0409;
    Writer text;
    text.u8({0x03});
    if (index == 0) {
        text.u16(americanEnglish);
    } else if (index == kManufacturer || index == kProduct) {
        const std::string content = index == kProduct ? model.name : "Virtual cameras";
        for (const QChar unit : QString::fromStdString(content))
            text.u16(unit.unicode());
    } else {
        return {};
    }
    return descriptor(text);
}

}  // namespace usbip
