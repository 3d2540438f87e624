#pragma once

#include <memory>

/// The root of objects that others may refer to without owning them.
class NSObject {
  public:
    NSObject() = default;
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject() = default;

    /// Expires when the object is destroyed.
    std::weak_ptr<const void> lifetime() const { return lifetime_; }

  private:
    std::shared_ptr<const void> lifetime_ = std::make_shared<char>();
};
