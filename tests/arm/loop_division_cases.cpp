// Divisions for loop_divisions_test.py: those in the functions named InLoop stand in a loop.
#include <cstddef>
#include <cstdint>

uint64_t Alone(uint64_t x, uint64_t y);
uint64_t BeforeLoop(uint64_t x, uint64_t y, const uint32_t* z, size_t n);
uint64_t NarrowInLoop(const uint32_t* z, size_t n, uint32_t y);
uint64_t InLoopCounted(const uint64_t* z, size_t n, uint64_t y);
int64_t InLoopSigned(int64_t x, int64_t y);
uint64_t InLoopNested(const uint64_t* z, size_t n, uint64_t y);
uint64_t InLoopAtTimes(const uint64_t* z, size_t n, uint64_t y);

uint64_t Alone(uint64_t x, uint64_t y) {
  return x / y;
}

uint64_t BeforeLoop(uint64_t x, uint64_t y, const uint32_t* z, size_t n) {
  uint64_t sum = x / y;
  for (size_t i = 0; i < n; ++i) sum += z[i] * sum;
  return sum % y;
}

// Divisions of 32 bits are not looked for.
uint64_t NarrowInLoop(const uint32_t* z, size_t n, uint32_t y) {
  uint64_t sum = 0;
  for (size_t i = 0; i < n; ++i) sum += z[i] / y;
  return sum;
}

uint64_t InLoopCounted(const uint64_t* z, size_t n, uint64_t y) {
  uint64_t sum = 0;
  for (size_t i = 0; i < n; ++i) sum += z[i] / y;
  return sum;
}

int64_t InLoopSigned(int64_t x, int64_t y) {
  while (x > y || x < -y) x = x / y - x % y;
  return x;
}

uint64_t InLoopNested(const uint64_t* z, size_t n, uint64_t y) {
  uint64_t sum = 0;
  for (size_t i = 0; i < n; ++i) {
    for (size_t j = 0; j < i; ++j) sum ^= z[j];
    sum %= y;
  }
  return sum;
}

// The compiler may lay such a path out behind the loop.
uint64_t InLoopAtTimes(const uint64_t* z, size_t n, uint64_t y) {
  uint64_t sum = 0;
  for (size_t i = 0; i < n; ++i) {
    if (__builtin_expect(z[i] == 0, 0)) sum /= y;
    sum += z[i];
  }
  return sum;
}
