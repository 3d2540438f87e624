#pragma once

#include <memory>
#include <utility>
#include <vector>

/// The root of objects that may have notifications sent to them.
class NSObject {
  public:
    NSObject() = default;
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject() = default;

    /// Owns `thing` as well, until this object is destroyed.
    void keep(std::shared_ptr<const void> thing) { kept_.push_back(std::move(thing)); }

  private:
    std::vector<std::shared_ptr<const void>> kept_;
};
