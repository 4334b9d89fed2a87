// A thread's first random number where the C library has no memory: what compilers keep for each thread
// would be allocated then, and end the process if it cannot be.
#include <gtest/gtest.h>

#include <atomic>

#include "import_patch.h"
#include "seam/random.h"
#include "test_thread.h"

namespace mirolta::test {
namespace {

// The thread that gets no memory.
std::atomic<DWORD> poor{0};

void* Malloc(size_t size);
void* Calloc(size_t count, size_t size);

void* (*system_malloc)(size_t) = nullptr;
void* (*system_calloc)(size_t, size_t) = nullptr;

void* Malloc(size_t size) {
  return poor == GetCurrentThreadId() ? nullptr : system_malloc(size);
}
void* Calloc(size_t count, size_t size) {
  return poor == GetCurrentThreadId() ? nullptr : system_calloc(count, size);
}

TEST(FirstRandomTest, AThreadsFirstNumberNeedsNoMemory) {
  system_malloc =
      reinterpret_cast<void* (*)(size_t)>(ReplaceImport("malloc", reinterpret_cast<void*>(Malloc)));
  system_calloc = reinterpret_cast<void* (*)(size_t, size_t)>(
      ReplaceImport("calloc", reinterpret_cast<void*>(Calloc)));
  uint32_t numbers[2] = {};
  bool refused = false;
  Thread thread([&] {
    poor = GetCurrentThreadId();
    void* const block = malloc(1);
    refused = block == nullptr;
    free(block);
    if (CurrentRandomSource().seed(1)) {
      for (uint32_t& number : numbers) number = CurrentRandomSource().next();
    }
    poor = 0;
  });
  thread.join();
  ReplaceImport("malloc", reinterpret_cast<void*>(system_malloc));
  ReplaceImport("calloc", reinterpret_cast<void*>(system_calloc));
  EXPECT_TRUE(refused);
  EXPECT_NE(numbers[0], numbers[1]);
}

}  // namespace
}  // namespace mirolta::test
