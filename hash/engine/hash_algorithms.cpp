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

int FindHashAlgorithm(const OLECHAR* name) noexcept {
  return FindName(kHashAlgorithms, name);
}

int CreateHashEngine(const OLECHAR* name, HashEngine** engine) noexcept {
  *engine = nullptr;
  const int algorithm = FindHashAlgorithm(name);
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
