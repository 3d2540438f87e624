#pragma once

namespace virtualcam {

/// What the camera's controls ask of the picture, in the units of the controls. The values here
/// give the plain picture: what a camera shows that lacks the control.
struct PictureState {
    int brightness = 7;               ///< -255 to 255, half of white either way
    int contrast = 7;                 ///< 0 to 255, the factor about mid-grey: 1 to 1.9
    int hue = 7;                      ///< -180 to 180, degrees
    int saturation = 100;             ///< 0 to 255, per cent
    int sharpness = 9;                ///< 0 (soft) to 255
    int gamma = 238;                  ///< 1 to 500, hundredths of the display gamma
    int whiteBalance = 5200;          ///< kelvin that the camera takes for white
    int autoWhiteBalance = 1;         ///< 1: the picture is neutral, 0: `whiteBalance` tints it
    int backlight = 0;                ///< 0 (off) to 10
    int gain = 6;                     ///< 0 to 255, step of 1/100 stop
    int powerLine = 2;                ///< 0 off, 1 for 50 Hz, 2 for 60 Hz
    int zoom = 0;                     ///< 0 (wide) to 1000 (three times)
    int focus = 160;                  ///< lens position, 0 to 1023
    int exposureTime = 167;           ///< units of 100 microseconds
    int pan = 0;                      ///< arc seconds, to the right positive
    int tilt = 0;                     ///< arc seconds, upwards positive
    int noiseReduction2D = 3;         ///< 0 (off) to 6
    int noiseReduction3D = 4;         ///< 0 (off) to 8
    int exposureCompensationOff = 1;  ///< 0: compensation acts
    int exposureCompensation = 0;     ///< -7 to 7, step of 1/5 stop
    int dynamicRange = 0;             ///< compression, 0 (off) to 8
    int style = 0;                    ///< preset 0 to 6
    int blueGain = 0;                 ///< -10 to 10, step of 4 %
    int redGain = 0;                  ///< -10 to 10, step of 4 %
    int flipVertical = 0;             ///< 1: upside down
    int flipHorizontal = 0;           ///< 1: mirrored

    bool operator==(const PictureState&) const = default;
};

}  // namespace virtualcam
