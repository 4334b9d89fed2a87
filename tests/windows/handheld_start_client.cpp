// The start of the handheld's module, built here under other names: the order of attaching and
// detaching, the guards of local statics, and the generator that all threads share.
#include <algorithm>
#include <vector>

#include "guard_checks.h"
#include "seam/entropy_generator.h"
#include "seam/system_source.h"

extern "C" {
BOOL WINAPI TestedStart(HINSTANCE instance, DWORD reason, LPVOID reserved);
BOOL WINAPI TestedDllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);
}

namespace {

constexpr UINT_PTR kInstance = 0x10000;
constexpr int kThreads = 4;
constexpr int kDraws = 2000;

DWORD called = 99;
BOOL answer = TRUE;
uint32_t entropy = 0;
std::vector<uint32_t> drawn[kThreads];

DWORD WINAPI Draw(void* numbers) {
  std::vector<uint32_t>& mine = *static_cast<std::vector<uint32_t>*>(numbers);
  mine.reserve(kDraws);
  for (int i = 0; i < kDraws; ++i) mine.push_back(mirolta::kSystemSource.next());
  return 0;
}

// All threads together get the numbers of one generator, each once.
void CheckGenerator() {
  entropy = 0;
  mirolta::EntropyGenerator one;
  CHECK(one.Seed(7));
  std::vector<uint32_t> expected;
  for (int i = 0; i < kThreads * kDraws; ++i) expected.push_back(one.Next());

  entropy = 0;
  CHECK(mirolta::kSystemSource.seed(7));
  HANDLE threads[kThreads];
  for (int i = 0; i < kThreads; ++i) {
    threads[i] = CreateThread(nullptr, 0, Draw, &drawn[i], 0, nullptr);
  }
  CHECK(WaitForMultipleObjects(kThreads, threads, TRUE, 60000) == WAIT_OBJECT_0);
  std::vector<uint32_t> all;
  for (const std::vector<uint32_t>& numbers : drawn) {
    all.insert(all.end(), numbers.begin(), numbers.end());
  }
  std::sort(all.begin(), all.end());
  std::sort(expected.begin(), expected.end());
  CHECK(all == expected);
}

}  // namespace

namespace mirolta {

bool SystemEntropy(uint8_t* bytes, uint32_t count) noexcept {
  for (uint32_t i = 0; i < count; ++i) {
    // Others run while the pool is being filled.
    if (i == count / 2) Sleep(1);
    entropy = entropy * 1664525u + 1013904223u;
    bytes[i] = static_cast<uint8_t>(entropy >> 24);
  }
  return true;
}

bool WatchForks() noexcept {
  return true;
}

uint32_t ForkCount() noexcept {
  return 0;
}

}  // namespace mirolta

// The module initialises locals while it attaches and detaches: both are within the life of the lock.
BOOL WINAPI TestedDllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  CHECK(instance == reinterpret_cast<HINSTANCE>(kInstance));
  called = reason;
  LONG volatile guard = 0;
  CHECK(TestedGuardAcquire(&guard) == 1);
  LONG volatile inner = 0;
  CHECK(TestedGuardAcquire(&inner) == 1);
  TestedGuardRelease(&inner);
  TestedGuardRelease(&guard);
  return answer;
}

int main() {
  const HINSTANCE instance = reinterpret_cast<HINSTANCE>(kInstance);
  CHECK(TestedStart(instance, DLL_PROCESS_ATTACH, nullptr) == TRUE);
  CHECK(called == DLL_PROCESS_ATTACH);
  client::CheckGuards();
  CheckGenerator();
  answer = FALSE;
  CHECK(TestedStart(instance, DLL_PROCESS_DETACH, nullptr) == FALSE);
  CHECK(called == DLL_PROCESS_DETACH);
  return client::Finish();
}
