#include "seam/system_source.h"

#include "seam/entropy_generator.h"

namespace mirolta {

namespace {

thread_local EntropyGenerator generator;

bool Seed(uint32_t seed) {
  return generator.Seed(seed);
}

uint32_t Next() {
  return generator.Next();
}

}  // namespace

constinit const RandomSource kSystemSource = {Seed, Next};

}  // namespace mirolta
