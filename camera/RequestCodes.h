#pragma once

#include <cstdint>

/// UVC class request codes (UVC 1.1, table A-8), as far as the system sends them.
enum RequestCode : std::int32_t {
    SET_CUR = 0x01,
    GET_CUR = 0x81,
    GET_MIN = 0x82,
    GET_MAX = 0x83,
    GET_LEN = 0x85,
};
