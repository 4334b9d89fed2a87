#include "trust_heap.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "heap_watch.h"
#include "searched_memory.h"

namespace mirolta::test {
namespace {

constexpr size_t kWindow = 8;
constexpr size_t kMostSecrets = 128;
constexpr size_t kLargestSecret = 512;

std::atomic<long> in_use{0};
std::atomic<bool> watching{false};
std::atomic<long> found{0};
std::atomic<long> searched{0};
std::atomic<int> last_found{-1};

unsigned char secrets[kMostSecrets][kLargestSecret];
size_t secret_sizes[kMostSecrets];
size_t secret_count = 0;

// Whether windows that start with these two bytes are part of the secret.
bool starts[kMostSecrets][65536];

// Bytes that are mostly zero, such as a small number, occur anywhere by chance.
bool IsTelling(const unsigned char* window) {
  size_t zeros = 0;
  for (size_t i = 0; i < kWindow; ++i) zeros += window[i] == 0 ? 1 : 0;
  return zeros <= kWindow / 2;
}

bool Holds(const unsigned char* block, size_t size, size_t secret, size_t window = kWindow) {
  for (size_t at = 0; at + window <= size; ++at) {
    // Long runs of zeros are common and no secret.
    uint64_t eight = 0;
    std::memcpy(&eight, block + at, sizeof eight);
    if (eight == 0 || !starts[secret][block[at] << 8 | block[at + 1]]) continue;
    if (!IsTelling(block + at)) continue;
    for (size_t i = 0; i + window <= secret_sizes[secret]; ++i) {
      if (std::memcmp(block + at, secrets[secret] + i, window) == 0) return true;
    }
  }
  return false;
}

void Search(const void* block, size_t size) {
  TakeAsWritten(block, size);
  ++searched;
  for (size_t i = 0; i < secret_count; ++i) {
    if (!Holds(static_cast<const unsigned char*>(block), size, i)) continue;
    ++found;
    last_found = static_cast<int>(i);
  }
}

}  // namespace

void SeeAllocated() {
  ++in_use;
}

void SeeFreed(void* block, size_t size) {
  --in_use;
  if (watching) Search(block, size);
}

long BlocksInUse() {
  return in_use;
}

void WatchForSecret(const void* bytes, size_t size) {
  if (secret_count == kMostSecrets || size < kWindow || size > kLargestSecret) std::abort();
  std::memcpy(secrets[secret_count], bytes, size);
  secret_sizes[secret_count++] = size;
  for (size_t i = 0; i + kWindow <= size; ++i) {
    const unsigned char* const at = static_cast<const unsigned char*>(bytes) + i;
    starts[secret_count - 1][at[0] << 8 | at[1]] = true;
  }
}

void StartWatchingForSecrets() {
  watching = true;
}

void StopWatchingForSecrets() {
  watching = false;
  std::memset(secrets, 0, secret_count * sizeof secrets[0]);
  std::memset(starts, 0, secret_count * sizeof starts[0]);
  secret_count = 0;
  found = 0;
  searched = 0;
  last_found = -1;
}

int FindSecret(const void* block, size_t size, size_t window) {
  for (size_t i = 0; i < secret_count; ++i) {
    if (Holds(static_cast<const unsigned char*>(block), size, i, window))
      return static_cast<int>(i);
  }
  return -1;
}

long SecretsFreed() {
  return found;
}
int LastSecretFreed() {
  return last_found;
}
long BlocksSearched() {
  return searched;
}

}  // namespace mirolta::test
