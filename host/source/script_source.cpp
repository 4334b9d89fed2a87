#include "source/script_source.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "source/call_assignment.h"

namespace mirolta::host {
namespace {

constexpr off_t kLargestScript = 256 << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool ReadAll(int file, std::string* bytes) {
  char part[65536];
  for (;;) {
    const ssize_t got = read(file, part, sizeof part);
    if (got == 0) return true;
    if (got < 0 && errno != EINTR) return false;
    if (got > 0) bytes->append(part, static_cast<size_t>(got));
    if (static_cast<off_t>(bytes->size()) > kLargestScript) {
      errno = EFBIG;
      return false;
    }
  }
}

}  // namespace

bool LoadScript(const std::string& path, std::string* script, std::string* problem) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  std::string bytes;
  const bool is_read = file >= 0 && ReadAll(file, &bytes);
  if (!is_read) *problem = strerror(errno);
  if (file >= 0) close(file);
  if (!is_read) return false;

  std::string_view text = bytes;
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  // The line break stays, so that line numbers do not change.
  if (text.starts_with("#!")) text.remove_prefix(std::min(text.find('\n'), text.size()));
  *script = RewriteCallAssignments(text);
  return true;
}

}  // namespace mirolta::host
