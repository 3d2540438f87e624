#include "platform/backend/Backends.h"

#include <utility>

namespace platform {
namespace {

Backends current;

}  // namespace

const Backends& backends() {
    return current;
}

Backends installBackends(const Backends& chosen) {
    return std::exchange(current, chosen);
}

}  // namespace platform
