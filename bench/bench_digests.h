// Hash engines for rows.
#pragma once

#include <memory>

#include "hash_algorithms.h"
#include "hash_engine.h"

namespace mirolta::bench {

inline std::shared_ptr<HashEngine> MakeHashEngine(const OLECHAR* name) {
  HashEngine* engine = nullptr;
  CreateHashEngine(name, &engine);
  return std::shared_ptr<HashEngine>(engine);
}

}  // namespace mirolta::bench
