// Loaded into a program beside its libraries, tells at the program's end what that could still do.

#include <cstdio>

#include "tests/sandbox/Attempts.h"

[[gnu::destructor]] static void tell() {
    std::fprintf(stderr, "probe: could do %s\n", whatCanBeDone().c_str());
}
