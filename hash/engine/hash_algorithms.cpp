#include "hash_algorithms.h"

#include <new>

#include "md5_engine.h"
#include "sha1_engine.h"
#include "sha256_engine.h"

namespace mirolta {

const NameSlot kHashAlgorithms[kHashAlgorithmCount + 1] = {
    OLESTR("MD5"),     // kHashMd5
    OLESTR("SHA1"),    // kHashSha1
    OLESTR("SHA256"),  // kHashSha256
    OLESTR(""),
};

int FindHashAlgorithm(const OLECHAR* name, uint32_t length) noexcept {
  return FindName(kHashAlgorithms, name, length);
}

int CreateHashEngine(const OLECHAR* name, uint32_t length, HashEngine** engine) noexcept {
  *engine = nullptr;
  const int algorithm = FindHashAlgorithm(name, length);
  switch (algorithm) {
    case kHashMd5:
      *engine = new (std::nothrow) Md5Engine;
      break;
    case kHashSha1:
      *engine = new (std::nothrow) Sha1Engine;
      break;
    case kHashSha256:
      *engine = new (std::nothrow) Sha256Engine;
      break;
    default:
      break;
  }
  return algorithm;
}

}  // namespace mirolta
