// The heap that operator new and the runtime use: the number of blocks in use, and what freed blocks
// still contain.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mirolta::test {

// The number of blocks allocated and not yet freed.
long BlocksInUse();

// Any eight consecutive bytes of a secret are found, so that half a block of it is enough. The
// reference copy is not on the heap.
void WatchForSecret(const void* bytes, size_t size);  // size 8..512, at most 128 secrets
// The watch begins when all secrets are known: temporaries that held them have been freed by then.
void StartWatchingForSecrets();
void StopWatchingForSecrets();
// FindSecret returns the index of a secret of which block[size] holds any eight consecutive bytes,
// or `size` of them, or -1.
int FindSecret(const void* block, size_t size, size_t window = 8);
// Freed blocks with a secret in them since the watch began, and the index of the last one's secret.
long SecretsFreed();
int LastSecretFreed();
// Freed blocks searched since the watch began.
long BlocksSearched();

}  // namespace mirolta::test
