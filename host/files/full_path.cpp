#include "files/full_path.h"

#include <stdlib.h>

#include <memory>

namespace mirolta::host {
namespace {

struct Freeing {
  void operator()(char* text) const { free(text); }
};

}  // namespace

std::string FullPath(const std::string& path) {
  const std::unique_ptr<char, Freeing> full(realpath(path.c_str(), nullptr));
  return full != nullptr ? full.get() : "";
}

}  // namespace mirolta::host
