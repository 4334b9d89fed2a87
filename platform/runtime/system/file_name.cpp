#include "system/file_name.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "system/opened_file.h"

namespace mirolta::runtime {
namespace {

constexpr int kMostLinks = 40;

}  // namespace

bool JoinFileName(RuntimeArray<char>* out, const char* first, const char* second) {
  return out->Append(first, std::strlen(first)) && out->Append(second, std::strlen(second) + 1);
}

LONG FollowLinks(const char* file, RuntimeArray<char>* target) {
  if (!JoinFileName(target, file, "")) return ERROR_OUTOFMEMORY;
  char link[PATH_MAX];
  for (int links = 0;; ++links) {
    const ssize_t length = readlink(target->Data(), link, sizeof(link));
    if (length < 0) {
      // Not a link, or no file. A link that cannot be read must not be replaced.
      const bool is_target = errno == EINVAL || errno == ENOENT;
      return is_target ? ERROR_SUCCESS : ErrorOfErrno(errno, ERROR_CANTWRITE);
    }
    if (length == sizeof(link) || links == kMostLinks) return ERROR_CANTWRITE;
    // A relative link starts at the folder of the link.
    const char* const slash = std::strrchr(target->Data(), '/');
    const bool relative = link[0] != '/' && slash != nullptr;
    target->Shorten(relative ? static_cast<size_t>(slash - target->Data()) + 1 : 0);
    if (!target->Append(link, static_cast<size_t>(length)) || !target->Append('\0')) {
      return ERROR_OUTOFMEMORY;
    }
  }
}

}  // namespace mirolta::runtime
