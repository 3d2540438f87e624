#include "virtualcam/camera/RequestRecord.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string_view>

#include "virtualcam/camera/Controls.h"

namespace virtualcam {
namespace {

struct RequestName {
    std::uint8_t code;
    std::string_view name;
};

constexpr std::array<RequestName, 8> kRequestNames{{{SET_CUR, "SET_CUR"},
                                                    {GET_CUR, "GET_CUR"},
                                                    {GET_MIN, "GET_MIN"},
                                                    {GET_MAX, "GET_MAX"},
                                                    {GET_RES, "GET_RES"},
                                                    {GET_LEN, "GET_LEN"},
                                                    {GET_INFO, "GET_INFO"},
                                                    {GET_DEF, "GET_DEF"}}};

std::string_view nameOf(std::uint8_t code) {
    const auto* found = std::ranges::find(kRequestNames, code, &RequestName::code);
    return found == kRequestNames.end() ? "unknown request" : found->name;
}

}  // namespace

RequestRecord recordOf(const IOUSBDevRequest& request, IOReturn result) {
    RequestRecord record{request.bmRequestType,
                         request.bRequest,
                         request.wValue,
                         request.wIndex,
                         request.wLength,
                         {},
                         result};
    const bool read = (request.bmRequestType & 0x80U) != 0;
    const std::uint32_t count = read ? request.wLenDone : request.wLength;
    if (const auto* bytes = static_cast<const std::uint8_t*>(request.pData))
        record.data.assign(bytes, bytes + count);
    return record;
}

std::ostream& operator<<(std::ostream& out, const RequestRecord& record) {
    std::ostringstream text;
    text << nameOf(record.bRequest) << " unit " << (record.wIndex >> 8) << " selector "
         << (record.wValue >> 8) << " length " << record.wLength << ':' << std::hex
         << std::setfill('0');
    for (const unsigned byte : record.data)
        text << ' ' << std::setw(2) << byte;
    text << std::dec << " -> " << record.result;
    text << std::hex << " (type 0x" << std::setw(2) << unsigned{record.bmRequestType}
         << ", request 0x" << std::setw(2) << unsigned{record.bRequest} << ", value 0x"
         << std::setw(4) << record.wValue << ", index 0x" << std::setw(4) << record.wIndex << ')';
    return out << text.str();
}

}  // namespace virtualcam
