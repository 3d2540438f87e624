#include "virtualcam/camera/VirtualCamera.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <numbers>
#include <thread>
#include <utility>

namespace virtualcam {
namespace {

constexpr std::size_t kRecordsKept = 4096;
constexpr double kScenePeriod = 240;  // pictures until the light of the scene repeats

constexpr ControlId kH264Switch{extensionUnitID, XU_H264_SWITCH};
constexpr ControlId kAudioSwitch{extensionUnitID, XU_AUDIO_SWITCH};

/// Copies an answer to where the host has room for it; more than the room is not sent.
void reply(IOUSBDevRequest& request, std::span<const std::uint8_t> answer) {
    const std::size_t count = std::min<std::size_t>(answer.size(), request.wLength);
    if (count > 0)
        std::copy_n(answer.begin(), count, static_cast<std::uint8_t*>(request.pData));
    request.wLenDone = static_cast<std::uint32_t>(count);
}

/// Which requests beside GET_INFO a control of the kind takes (UVC 1.1, 4.2.2).
bool takes(const ControlRow& row, std::uint8_t request) {
    switch (request) {
        case SET_CUR:
            return (row.info & kInfoSet) != 0;
        case GET_CUR:
            return (row.info & kInfoGet) != 0;
        case GET_MIN:
        case GET_MAX:
            return row.kind == ControlKind::number;
        case GET_RES:
            return row.kind == ControlKind::number || row.kind == ControlKind::bitmap;
        case GET_DEF:
            return row.kind != ControlKind::text && row.kind != ControlKind::trigger;
        case GET_LEN:
            return row.id.unit == extensionUnitID;  // the lengths of the others are standard
        case GET_INFO:
            return true;
        default:
            return false;
    }
}

bool isLegal(const Limits& limits, std::int32_t value) {
    return value >= limits.minimum && value <= limits.maximum &&
           (std::int64_t{value} - limits.minimum) % limits.resolution == 0;
}

bool isLegal(const ControlRow& row, const std::array<std::int32_t, 2>& value) {
    switch (row.kind) {
        case ControlKind::bitmap: {
            const auto bits = static_cast<std::uint32_t>(value[0]);
            const auto supported = static_cast<std::uint32_t>(row.limits.resolution);
            return bits != 0 && (bits & (bits - 1)) == 0 && (bits & ~supported) == 0;
        }
        case ControlKind::trigger:
            return value[0] == 1;
        default:
            return isLegal(row.limits, value[0]) &&
                   (!row.secondLimits || isLegal(*row.secondLimits, value[1]));
    }
}

/// The same field of both integers' limits.
std::array<std::int32_t, 2> limit(const ControlRow& row, std::int32_t Limits::*field) {
    return {row.limits.*field, row.secondLimits ? (*row.secondLimits).*field : 0};
}

/// Appends one integer in `count` bytes, little-endian, widened with its sign.
void append(std::vector<std::uint8_t>& bytes, std::int64_t value, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> std::min<std::size_t>(8 * i, 63)));
}

std::int32_t integer(std::span<const std::uint8_t> bytes, bool isSigned) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size() && i < sizeof(value); ++i)
        value |= std::uint64_t{bytes[i]} << (8 * i);
    const std::size_t bits = 8 * std::min(bytes.size(), sizeof(value));
    if (isSigned && bits > 0 && bits < 64 && (value >> (bits - 1)) != 0)
        value |= ~std::uint64_t{0} << bits;
    const auto wide = static_cast<std::int64_t>(value);
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(wide, INT32_MIN, INT32_MAX));
}

}  // namespace

VirtualCamera::VirtualCamera(CameraModel model)
    : model_(std::move(model)),
      wait_([](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); }) {
    for (const ControlRow& row : model_.controls)
        values_.push_back(limit(row, &Limits::standard));
    powerOn();
}

IOReturn VirtualCamera::controlRequest(IOUSBDevRequest& request) {
    request.wLenDone = 0;
    if (vanishNow())
        return ENODEV;
    std::function<void(std::chrono::milliseconds)> wait;
    std::chrono::milliseconds delay{0};
    {
        const std::lock_guard lock(mutex_);
        wait = wait_;
        delay = std::min(faults_.delay, kControlTimeout);
    }
    if (delay.count() > 0)
        wait(delay);

    const std::lock_guard lock(mutex_);
    IOReturn result = kIOReturnSuccess;
    if (gone_) {
        result = ENODEV;
    } else if (delay >= kControlTimeout) {
        result = ETIMEDOUT;
    } else if (request.bmRequestType == requestFromInterface && request.wIndex == kInterfaceUnit) {
        result = answerErrorCode(request) == RequestError::none ? kIOReturnSuccess : EPIPE;
    } else {
        lastError_ = answer(request);
        result = lastError_ == RequestError::none ? kIOReturnSuccess : EPIPE;
    }
    requests_.push_back(recordOf(request, result));
    if (requests_.size() > kRecordsKept)
        requests_.pop_front();
    return result;
}

/// Counts down to the camera's fall off the bus; true from then on.
bool VirtualCamera::vanishNow() {
    std::function<void()> tell;
    {
        const std::lock_guard lock(mutex_);
        if (gone_)
            return true;
        if (!faults_.vanishesAfter)
            return false;
        if (*faults_.vanishesAfter > 0) {
            --*faults_.vanishesAfter;
            return false;
        }
        gone_ = true;
        tell = vanished_;
    }
    if (tell)
        tell();
    return true;
}

RequestError VirtualCamera::answer(IOUSBDevRequest& request) {
    const bool read = request.bmRequestType == requestFromInterface;
    if (!read && request.bmRequestType != requestToInterface)
        return RequestError::invalidRequest;
    if ((request.wIndex & 0xFFU) != 0 || (request.wValue & 0xFFU) != 0)
        return RequestError::invalidRequest;  // the controls belong to interface 0
    const ControlId id{static_cast<std::uint8_t>(request.wIndex >> 8),
                       static_cast<std::uint8_t>(request.wValue >> 8)};
    const auto& rows = model_.controls;
    if (std::ranges::none_of(rows, [&](const ControlRow& row) { return row.id.unit == id.unit; }))
        return RequestError::invalidUnit;
    const auto row = std::ranges::find(rows, id, &ControlRow::id);
    if (row == rows.end())
        return RequestError::invalidControl;
    if (faults_.stalled.contains(id))
        return RequestError::unknown;
    if (!takes(*row, request.bRequest) || (request.bRequest == SET_CUR) == read)
        return RequestError::invalidRequest;
    const auto index = static_cast<std::size_t>(row - rows.begin());
    return read ? this->read(*row, index, request) : write(*row, index, request);
}

/// The interface tells why it stalled last; asking does not change the answer.
RequestError VirtualCamera::answerErrorCode(IOUSBDevRequest& request) {
    if (request.wValue != VC_REQUEST_ERROR_CODE_CONTROL << 8 || request.wLength < 1)
        return lastError_ = RequestError::invalidControl;
    std::uint8_t answer = kInfoGet;
    if (request.bRequest == GET_CUR)
        answer = static_cast<std::uint8_t>(lastError_);
    else if (request.bRequest != GET_INFO)
        return lastError_ = RequestError::invalidRequest;
    reply(request, {&answer, 1});
    return RequestError::none;
}

RequestError VirtualCamera::read(const ControlRow& row, std::size_t index,
                                 IOUSBDevRequest& request) {
    std::vector<std::uint8_t> bytes;
    switch (request.bRequest) {
        case GET_LEN:
            append(bytes, lengthOf(row), 2);
            break;
        case GET_INFO:
            append(bytes, row.info | (isHeld(row) ? kInfoDisabled : 0), 1);
            break;
        case GET_MIN:
            bytes = encode(row, limit(row, &Limits::minimum));
            break;
        case GET_MAX:
            bytes = encode(row, limit(row, &Limits::maximum));
            break;
        case GET_RES:
            bytes = encode(row, limit(row, &Limits::resolution));
            break;
        case GET_DEF:
            bytes = encode(row, limit(row, &Limits::standard));
            break;
        default:
            bytes = encode(row, values_[index]);
    }
    if (request.wLength < bytes.size())
        return RequestError::invalidRequest;  // a value is never sent in part
    const auto cut = faults_.shortReads.find(row.id);
    if (request.bRequest == GET_CUR && cut != faults_.shortReads.end())
        bytes.resize(std::min<std::size_t>(bytes.size(), cut->second));
    reply(request, bytes);
    return RequestError::none;
}

RequestError VirtualCamera::write(const ControlRow& row, std::size_t index,
                                  const IOUSBDevRequest& request) {
    if (request.wLength != lengthOf(row) || request.wLength == 0 || request.pData == nullptr)
        return RequestError::invalidRequest;
    const Value value =
        decode(row, {static_cast<const std::uint8_t*>(request.pData), request.wLength});
    if (isHeld(row))
        return RequestError::wrongState;
    if (!isLegal(row, value))
        return RequestError::outOfRange;
    if (row.kind == ControlKind::trigger)
        restoreVendorDefaults();
    else
        values_[index] = value;
    return RequestError::none;
}

void VirtualCamera::restoreVendorDefaults() {
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const ControlRow& row = model_.controls[i];
        values_[i] = limit(row, &Limits::standard);
        if (row.vendorDefault)
            values_[i][0] = *row.vendorDefault;
    }
}

std::vector<RequestRecord> VirtualCamera::requests() const {
    const std::lock_guard lock(mutex_);
    return {requests_.begin(), requests_.end()};
}

void VirtualCamera::clearRequests() {
    const std::lock_guard lock(mutex_);
    requests_.clear();
}

void VirtualCamera::setFaults(Faults faults) {
    const std::lock_guard lock(mutex_);
    faults_ = std::move(faults);
}

Faults VirtualCamera::faults() const {
    const std::lock_guard lock(mutex_);
    return faults_;
}

void VirtualCamera::setWait(std::function<void(std::chrono::milliseconds)> wait) {
    const std::lock_guard lock(mutex_);
    wait_ = std::move(wait);
}

void VirtualCamera::setVanished(std::function<void()> vanished) {
    const std::lock_guard lock(mutex_);
    vanished_ = std::move(vanished);
}

void VirtualCamera::powerOn() {
    const std::lock_guard lock(mutex_);
    if (std::exchange(gone_, false))
        faults_.vanishesAfter.reset();
    lastError_ = RequestError::none;
    pictures_ = 0;
    streams_ = {isSet(kH264Switch), isSet(kAudioSwitch)};
}

VirtualCamera::Streams VirtualCamera::streams() const {
    const std::lock_guard lock(mutex_);
    return streams_;
}

PictureState VirtualCamera::nextPicture() {
    const std::lock_guard lock(mutex_);
    ++pictures_;
    for (std::size_t i = 0; i < values_.size(); ++i)
        if (isHeld(model_.controls[i]))
            follow(model_.controls[i], values_[i]);
    return pictureOfControls();
}

PictureState VirtualCamera::picture() const {
    const std::lock_guard lock(mutex_);
    return pictureOfControls();
}

/// Moves a held value towards what the automatic mode wants for the scene of this picture.
void VirtualCamera::follow(const ControlRow& row, Value& value) const {
    const Automatic& automatic = *row.automatic;
    const double phase = 2 * std::numbers::pi * static_cast<double>(pictures_) / kScenePeriod;
    const auto wanted = static_cast<std::int32_t>(
        std::lround(automatic.target + automatic.swing * std::sin(phase)));
    value[0] += std::clamp(wanted - value[0], -automatic.stepPerFrame, automatic.stepPerFrame);
}

const VirtualCamera::Value* VirtualCamera::find(ControlId id) const {
    const auto row = std::ranges::find(model_.controls, id, &ControlRow::id);
    return row == model_.controls.end()
               ? nullptr
               : &values_[static_cast<std::size_t>(row - model_.controls.begin())];
}

bool VirtualCamera::isSet(ControlId id) const {
    const Value* value = find(id);
    return value != nullptr && (*value)[0] != 0;
}

bool VirtualCamera::isHeld(const ControlRow& row) const {
    if (!row.automatic)
        return false;
    const Value* mode = find(row.automatic->mode);
    return mode != nullptr && (*mode)[0] == row.automatic->modeValue;
}

std::uint16_t VirtualCamera::lengthOf(const ControlRow& row) const {
    const auto replaced = faults_.lengths.find(row.id);
    return replaced == faults_.lengths.end() ? row.length : replaced->second;
}

std::vector<std::uint8_t> VirtualCamera::encode(const ControlRow& row, const Value& value) const {
    const std::size_t length = lengthOf(row);
    std::vector<std::uint8_t> bytes;
    if (row.kind == ControlKind::text) {
        bytes.assign(model_.version.begin(), model_.version.end());
        bytes.resize(length);
        return bytes;
    }
    append(bytes, value[0], row.secondLimits ? length / 2 : length);
    if (row.secondLimits)
        append(bytes, value[1], length / 2);
    return bytes;
}

VirtualCamera::Value VirtualCamera::decode(const ControlRow& row,
                                           std::span<const std::uint8_t> bytes) const {
    if (!row.secondLimits)
        return {integer(bytes, row.isSigned()), 0};
    const std::size_t half = bytes.size() / 2;
    return {integer(bytes.first(half), row.isSigned()),
            integer(bytes.subspan(half), row.secondLimits->minimum < 0)};
}

PictureState VirtualCamera::pictureOfControls() const {
    PictureState state;
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const ControlRow& row = model_.controls[i];
        if (row.picture != nullptr)
            state.*row.picture = values_[i][0];
        if (row.secondPicture != nullptr)
            state.*row.secondPicture = values_[i][1];
    }
    return state;
}

}  // namespace virtualcam
