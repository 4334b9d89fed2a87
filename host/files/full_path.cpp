#include "files/full_path.h"

#include <stdlib.h>

#include <filesystem>
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

std::string FullLinkPath(const std::string& path) {
  std::string followed = FullPath(path);
  const size_t slash = path.rfind('/');
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  if (followed.empty() || name.empty() || name == "." || name == "..") return followed;
  std::string folder = FullPath(slash == std::string::npos ? "." : path.substr(0, slash + 1));
  if (folder.empty()) return folder;
  if (folder != "/") folder += '/';
  return folder + name;
}

std::string RootedPath(const std::string& path) {
  if (path.starts_with('/')) return path;
  std::error_code failure;
  const std::filesystem::path folder = std::filesystem::current_path(failure);
  return failure ? path : folder.native() + "/" + path;
}

}  // namespace mirolta::host
