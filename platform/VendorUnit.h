#pragma once

#include <cstdint>

/// Bytes of the longest vendor control, the firmware version's text; a shorter text ends in a 0.
inline constexpr std::int32_t versionSize = 24;

/// Selectors of the vendor's extension unit, the high byte of wValue. All values but the version
/// are one signed byte, whatever length the camera gives the control.
enum VendorSelector : std::uint8_t {
    XU_NR2D = 6,           ///< 2D noise reduction, 0 to 6
    XU_NR3D = 7,           ///< 3D noise reduction, 0 to 8
    XU_VERSION = 9,        ///< read only: firmware version text, `versionSize` bytes
    XU_COMP_SWITCH = 10,   ///< exposure compensation: 0 on, 1 off
    XU_COMP_VALUE = 11,    ///< exposure compensation, -7 to 7
    XU_DRC = 12,           ///< dynamic range compression, 0 to 8
    XU_STYLE = 13,         ///< picture style, 0 to 6
    XU_BGAIN = 14,         ///< blue gain: 0 to 10 under automatic white balance, else -10 to 10
    XU_RGAIN = 15,         ///< red gain, ranges as for blue
    XU_H264_SWITCH = 18,   ///< H.264 stream, 1 on; acts after the camera restarts
    XU_RESTORE = 23,       ///< write only: 1 restores the vendor defaults
    XU_FLIP_V = 24,        ///< vertical flip, 1 on
    XU_FLIP_H = 25,        ///< horizontal flip, 1 on
    XU_AUDIO_SWITCH = 26,  ///< audio, 1 on; acts after the camera restarts
};
