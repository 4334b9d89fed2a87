// All memory of the program, operator new's and the runtime's alike, at the C library's own door:
// how many blocks are in use, and what is left in them when they are freed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mirolta::test {

// The number of blocks allocated and not yet freed.
long BlocksInUse();

// A secret is found by any eight of its bytes that stand together, so that half a block of it is
// enough. The copy that is compared with is not on the heap.
void WatchForSecret(const void* bytes, size_t size);  // size 8..512, at most 128 secrets
// The watch begins when all secrets are known: what told of them has been freed by then.
void StartWatchingForSecrets();
void StopWatchingForSecrets();
// FindSecret returns the index of a secret of which block[size] holds any eight bytes that stand
// together, or that many, or -1.
int FindSecret(const void* block, size_t size, size_t window = 8);
// Freed blocks with a secret in them since the watch began, and the index of the last one's secret.
long SecretsFreed();
int LastSecretFreed();
// Freed blocks looked at since the watch began.
long BlocksSearched();

}  // namespace mirolta::test
