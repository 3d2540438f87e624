#pragma once

#include <string>

/// Tries, on the calling thread, what a program might that a camera has taken over: with the files
/// of this folder's home, with other programs, the network and the kernel. Leaves all as it was.
/// Returns what was not refused, or "nothing", or "everything".
std::string whatCanBeDone();
