#pragma once

#include <optional>
#include <string>
#include <string_view>

/// A picture of the application's resources.
class NSImage {
  public:
    /// Returns the resource image called `name`, such as "button_on.png", or nothing when there is
    /// none. Implemented by the toolkit's back end.
    static std::optional<NSImage> imageNamed(std::string_view name);

    const std::string& name() const { return name_; }

  private:
    explicit NSImage(std::string_view name) : name_(name) {}

    std::string name_;
};
