#pragma once

#include <malloc.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <ostream>

// The sanitizers have an allocator of their own.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

/// What the process holds: what a cycle that gives everything back leaves as it was.
struct Footprint {
    std::size_t bytes = 0;
    std::ptrdiff_t files = 0;
    std::ptrdiff_t threads = 0;

    static Footprint now() {
        const auto entries = [](const char* folder) {
            return std::distance(std::filesystem::directory_iterator(folder), {});
        };
        const struct mallinfo2 heap = mallinfo2();
        const std::size_t bytes = __sanitizer_get_current_allocated_bytes != nullptr
                                      ? __sanitizer_get_current_allocated_bytes()
                                      : heap.uordblks + heap.hblkhd;
        return {bytes, entries("/proc/self/fd"), entries("/proc/self/task")};
    }

    /// Whether this is no more than `before`, but for `slack` bytes.
    bool isBackAt(const Footprint& before, std::size_t slack) const {
        return bytes <= before.bytes + slack && files <= before.files && threads <= before.threads;
    }

    friend std::ostream& operator<<(std::ostream& out, const Footprint& footprint) {
        return out << footprint.bytes << " bytes, " << footprint.files << " files, "
                   << footprint.threads << " threads";
    }
};
