// One generator for all threads, where a generator for each would need the compiler's runtime: where there is
// none, or its runtime allocates what it keeps for a thread and ends the process without memory. The handheld
// has few slots for data of threads, and tells a module only through further calls that a thread ends.
#include "seam/entropy_generator.h"
#include "seam/system_source.h"
#include "windows/module_start.h"

namespace mirolta {

namespace {

constinit EntropyGenerator generator;

// Under the lock each byte of entropy is still used once. Of two threads at a time neither has the
// sequence of its own seed, which nobody relies on.
bool Seed(uint32_t seed) {
  const SharedLock hold;
  return generator.Seed(seed);
}

uint32_t Next() {
  const SharedLock hold;
  return generator.Next();
}

}  // namespace

constinit const RandomSource kSystemSource = {Seed, Next};

}  // namespace mirolta
