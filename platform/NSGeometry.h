#pragma once

/// A rectangle in a view's own coordinates, in device-independent pixels.
struct NSRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};
