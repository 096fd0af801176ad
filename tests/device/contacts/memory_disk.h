#pragma once

#include <unistd.h>

#include <cstdlib>

namespace kelpin::test {

// Puts the scratch folders of the tests that include this in memory, where that can be: a real disk
// takes milliseconds for each of the thousands of syncs.
inline const bool kInMemory =
    access("/dev/shm", W_OK | X_OK) == 0 && setenv("TMPDIR", "/dev/shm", 0) == 0;

}  // namespace kelpin::test
