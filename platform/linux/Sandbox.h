#pragma once

#include <string>
#include <vector>

namespace platform {

/// Gives up, for good, every right of this process that the program does not need once a camera
/// speaks to it: all that a camera says is untrusted, and so are the pictures that libraries
/// decode. What is left of files and of system calls stands in the .cpp file.
///
/// A thread gives up its own rights, which those that it starts have never had: to be called first
/// of all, before the toolkit has threads. Files that are open by then stay open.
///
/// Returns a sentence for each part that this kernel lets nobody give up, with the reason; the
/// process keeps that part and runs as well.
std::vector<std::string> enterSandbox();

}  // namespace platform
