// Loaded into a program beside its libraries, tells at the program's end what that could still do.

#include <cstdio>

#include "tests/sandbox/Attempts.h"

namespace {

const struct Teller {
    ~Teller() { std::fprintf(stderr, "probe: could do %s\n", whatCanBeDone().c_str()); }
} teller;

}  // namespace
