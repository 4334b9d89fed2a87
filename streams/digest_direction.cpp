#include "digest_direction.h"

#include "hash_algorithms.h"

namespace mirolta {

bool DigestDirection::SetAlgorithm(BSTR name) {
  engine_.reset();
  HashEngine* engine = nullptr;
  if (CreateHashEngine(name, SysStringLen(name), &engine) < 0) return false;
  engine_.reset(engine);
  enabled_ = 1;
  return true;
}

}  // namespace mirolta
