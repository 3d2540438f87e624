#pragma once

/// A colour in the form that layers take: components from 0 to 1.
struct CGColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;
};

/// A colour for views.
class NSColor {
  public:
    static NSColor colorWithRed(double red, double green, double blue, double alpha) {
        return NSColor({red, green, blue, alpha});
    }

    ::CGColor CGColor() const { return color_; }

  private:
    explicit NSColor(::CGColor color) : color_(color) {}

    ::CGColor color_;
};
