#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/linux/devices/VideoNode.h"

namespace platform {

/// The video node that control requests go through. It stays open between two of them: it shuts
/// nobody out, and to look it up again takes many times as long as a request. Main thread only.
class KeptNode {
  public:
    /// Keeps `node`, which was opened at `path`, and closes the one before. What is returned
    /// expires when the node is closed.
    std::weak_ptr<VideoNode> keep(std::unique_ptr<VideoNode> node, std::string path) {
        node_ = std::move(node);
        path_ = std::move(path);
        return node_;
    }

    void close() { node_.reset(); }

    /// Closes the node if it is the one at `path`, whose camera has left: until then the kernel
    /// keeps the node's number, and the next camera gets another.
    void closeAt(const std::string& path) {
        if (path == path_)
            close();
    }

  private:
    std::shared_ptr<VideoNode> node_;
    std::string path_;
};

}  // namespace platform
