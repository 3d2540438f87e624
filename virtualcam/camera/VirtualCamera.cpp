#include "virtualcam/camera/VirtualCamera.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <numbers>
#include <thread>
#include <utility>

#include "platform/ByteOrder.h"

namespace virtualcam {
namespace {

constexpr std::size_t recordsKept = 4096;
constexpr double scenePeriod = 240;  // pictures until the light of the scene repeats

void reply(IOUSBDevRequest& request, std::span<const std::uint8_t> answer) {
    std::ranges::copy(answer, static_cast<std::uint8_t*>(request.pData));
    request.wLenDone = static_cast<std::uint32_t>(answer.size());
}

RequestRecord recordOf(const IOUSBDevRequest& request, IOReturn result) {
    const bool read = (request.bmRequestType & 0x80U) != 0;
    const std::uint32_t count = read ? request.wLenDone : request.wLength;
    const auto* bytes = static_cast<const std::uint8_t*>(request.pData);
    return {request.bmRequestType,
            request.bRequest,
            request.wValue,
            request.wIndex,
            request.wLength,
            std::vector<std::uint8_t>(bytes, bytes + count),
            result};
}

/// Whether a control takes a request, which depends on what kind of control it is (UVC 1.1, 4.2.2).
bool takes(const ControlRow& row, std::uint8_t request) {
    switch (request) {
        case SET_CUR:
            return (row.info & infoSet) != 0;
        case GET_CUR:
            return (row.info & infoGet) != 0;
        case GET_MIN:
        case GET_MAX:
            return row.kind == ControlKind::number;
        case GET_RES:
            return row.kind == ControlKind::number || row.kind == ControlKind::bitmap;
        case GET_DEF:
            return row.kind != ControlKind::text && row.kind != ControlKind::trigger;
        case GET_LEN:
            return row.id.unit == extensionUnitID;  // the lengths of the others are standard
        default:
            return request == GET_INFO;
    }
}

bool isLegal(const Limits& limits, std::int64_t value) {
    return value >= limits.minimum && value <= limits.maximum &&
           (value - limits.minimum) % limits.resolution == 0;
}

bool isLegal(const ControlRow& row, const std::array<std::int64_t, 2>& value) {
    switch (row.kind) {
        case ControlKind::bitmap:
            return std::has_single_bit(static_cast<std::uint64_t>(value[0])) &&
                   (value[0] & ~row.limits.resolution) == 0;
        case ControlKind::trigger:
            return value[0] == 1;
        default:
            return isLegal(row.limits, value[0]) &&
                   isLegal(row.secondLimits.value_or(Limits{}), value[1]);
    }
}

/// One of the limits, for both integers of a control.
std::array<std::int64_t, 2> limit(const ControlRow& row, std::int32_t Limits::*field) {
    return {row.limits.*field, row.secondLimits.value_or(Limits{}).*field};
}

/// How many of `size` bytes the first integer of a control takes.
std::size_t firstPart(const ControlRow& row, std::size_t size) {
    return row.secondLimits ? size / 2 : size;
}

std::int64_t decode(std::span<const std::uint8_t> bytes, const Limits& limits) {
    const auto value = static_cast<std::int64_t>(littleEndian(bytes));
    return limits.minimum < 0 ? signedLittleEndian(bytes) : value;
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
    std::unique_lock lock(mutex_);
    const auto delay = std::min(faults_.delay, controlTimeout);
    if (delay.count() > 0) {
        const auto wait = wait_;
        lock.unlock();
        wait(delay);
        lock.lock();
    }
    IOReturn result = ETIMEDOUT;
    if (delay < controlTimeout) {
        const bool asksWhy =
            request.bmRequestType == requestFromInterface && request.wIndex == interfaceUnit;
        const RequestError error = asksWhy ? answerErrorCode(request) : answer(request);
        if (!asksWhy || error != RequestError::none)
            lastError_ = error;  // to ask why does not change the answer
        result = error == RequestError::none ? kIOReturnSuccess : EPIPE;
    }
    requests_.push_back(recordOf(request, result));
    if (requests_.size() > recordsKept)
        requests_.pop_front();
    return result;
}

/// Counts down to the camera's fall off the bus; true from then on.
bool VirtualCamera::vanishNow() {
    std::unique_lock lock(mutex_);
    if (gone_ || !faults_.vanishesAfter || (*faults_.vanishesAfter)-- > 0)
        return gone_;
    gone_ = true;
    const auto tell = vanished_;
    lock.unlock();
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
    Value& value = values_[static_cast<std::size_t>(row - rows.begin())];
    return read ? this->read(*row, value, request) : write(*row, value, request);
}

/// The interface tells why it stalled last.
RequestError VirtualCamera::answerErrorCode(IOUSBDevRequest& request) const {
    if (request.wValue != VC_REQUEST_ERROR_CODE_CONTROL << 8 || request.wLength < 1)
        return RequestError::invalidControl;
    if (request.bRequest != GET_CUR && request.bRequest != GET_INFO)
        return RequestError::invalidRequest;
    std::uint8_t answer = infoGet;
    if (request.bRequest == GET_CUR)
        answer = static_cast<std::uint8_t>(lastError_);
    reply(request, {&answer, 1});
    return RequestError::none;
}

RequestError VirtualCamera::read(const ControlRow& row, const Value& value,
                                 IOUSBDevRequest& request) const {
    Bytes bytes = replyTo(request.bRequest, row, value);
    if (request.wLength < bytes.size())
        return RequestError::invalidRequest;  // a value is never sent in part
    const auto cut = faults_.shortReads.find(row.id);
    if (request.bRequest == GET_CUR && cut != faults_.shortReads.end())
        bytes.resize(std::min<std::size_t>(bytes.size(), cut->second));
    reply(request, bytes);
    return RequestError::none;
}

VirtualCamera::Bytes VirtualCamera::replyTo(std::uint8_t request, const ControlRow& row,
                                            const Value& value) const {
    const auto limits = [&](std::int32_t Limits::*field) { return encode(row, limit(row, field)); };
    Bytes length(lengthReplySize);
    switch (request) {
        case GET_LEN:
            putLittleEndian(lengthOf(row), length);
            return length;
        case GET_INFO:
            return {static_cast<std::uint8_t>(row.info | (isHeld(row) ? infoDisabled : 0))};
        case GET_MIN:
            return limits(&Limits::minimum);
        case GET_MAX:
            return limits(&Limits::maximum);
        case GET_RES:
            return limits(&Limits::resolution);
        case GET_DEF:
            return limits(&Limits::standard);
        default:
            return encode(row, value);
    }
}

RequestError VirtualCamera::write(const ControlRow& row, Value& value,
                                  const IOUSBDevRequest& request) {
    const std::size_t length = request.wLength;
    if (length != lengthOf(row) || length == 0 || length > sizeof(std::uint64_t))
        return RequestError::invalidRequest;
    if (isHeld(row))
        return RequestError::wrongState;
    const std::span bytes(static_cast<const std::uint8_t*>(request.pData), length);
    const std::size_t first = firstPart(row, length);
    const Value wanted{decode(bytes.first(first), row.limits),
                       decode(bytes.subspan(first), row.secondLimits.value_or(Limits{}))};
    if (!isLegal(row, wanted))
        return RequestError::outOfRange;
    if (row.kind == ControlKind::trigger)
        restoreVendorDefaults();
    else
        value = wanted;
    return RequestError::none;
}

void VirtualCamera::restoreVendorDefaults() {
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const ControlRow& row = model_.controls[i];
        values_[i] = limit(row, &Limits::standard);
        values_[i][0] = row.vendorDefault.value_or(row.limits.standard);
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
    hasAudio_ = has({extensionUnitID, XU_AUDIO_SWITCH}, 1);
}

bool VirtualCamera::hasAudio() const {
    const std::lock_guard lock(mutex_);
    return hasAudio_;
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
    const double phase = 2 * std::numbers::pi * static_cast<double>(pictures_) / scenePeriod;
    const std::int64_t wanted = std::lround(automatic.target + automatic.swing * std::sin(phase));
    const std::int64_t step = automatic.stepPerFrame;
    value[0] += std::clamp(wanted - value[0], -step, step);
}

/// Whether the camera has a control, and it has this value.
bool VirtualCamera::has(ControlId id, std::int64_t value) const {
    const auto row = std::ranges::find(model_.controls, id, &ControlRow::id);
    return row != model_.controls.end() &&
           values_[static_cast<std::size_t>(row - model_.controls.begin())][0] == value;
}

bool VirtualCamera::isHeld(const ControlRow& row) const {
    return row.automatic && has(row.automatic->mode, row.automatic->modeValue);
}

std::uint16_t VirtualCamera::lengthOf(const ControlRow& row) const {
    const auto replaced = faults_.lengths.find(row.id);
    return replaced == faults_.lengths.end() ? row.length : replaced->second;
}

VirtualCamera::Bytes VirtualCamera::encode(const ControlRow& row, const Value& value) const {
    Bytes bytes(lengthOf(row));
    if (row.kind == ControlKind::text) {
        std::copy_n(model_.version.begin(), std::min(model_.version.size(), bytes.size()),
                    bytes.begin());
        return bytes;
    }
    const std::span all(bytes);
    const std::size_t first = firstPart(row, bytes.size());
    putLittleEndian(static_cast<std::uint64_t>(value[0]), all.first(first));
    putLittleEndian(static_cast<std::uint64_t>(value[1]), all.subspan(first));
    return bytes;
}

PictureState VirtualCamera::pictureOfControls() const {
    PictureState state;
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const ControlRow& row = model_.controls[i];
        if (row.picture != nullptr)
            state.*row.picture = static_cast<int>(values_[i][0]);
        if (row.secondPicture != nullptr)
            state.*row.secondPicture = static_cast<int>(values_[i][1]);
    }
    return state;
}

}  // namespace virtualcam
