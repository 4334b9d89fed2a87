#include "source/script_source.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>
#include <utility>

#include "files/full_path.h"
#include "portable/repeated_call.h"
#include "source/call_assignment.h"
#include "source/eval_calls.h"
#include "source/script_encoding.h"
#include "source/script_kind.h"

namespace mirolta::host {
namespace {

constexpr size_t kLargestScript = size_t{256} << 20;

bool ReadAll(int file, std::string* bytes) {
  char part[65536];
  for (;;) {
    const ssize_t got = Repeated([&] { return read(file, part, sizeof part); });
    if (got <= 0) return got == 0;
    bytes->append(part, static_cast<size_t>(got));
    if (bytes->size() > kLargestScript) {
      errno = EFBIG;
      return false;
    }
  }
}

}  // namespace

bool ScriptFromBytes(const std::string& name, std::string_view bytes, const SourceOptions& options,
                     ScriptText* script, std::string* problem) {
  if (bytes.size() > kLargestScript) {
    *problem = "cannot read the script " + name + ": " + strerror(EFBIG);
    return false;
  }
  std::string plain;
  if (!DecodeScript(name, bytes, options.charset, &plain, problem)) return false;
  // A comment of the same length: places do not change.
  if (plain.starts_with("#!")) plain.replace(0, 2, "//");
  script->name = name;
  script->text = RewriteEvalCalls(RewriteCallAssignments(plain));
  script->original.clear();
  if (script->text != plain) script->original = std::move(plain);
  return true;
}

bool ScriptFromDescriptor(const std::string& name, int file, const SourceOptions& options,
                          ScriptText* script, std::string* problem) {
  std::string bytes;
  if (!ReadAll(file, &bytes)) {
    *problem = "cannot read the script from " + name + ": " + strerror(errno);
    return false;
  }
  return ScriptFromBytes(name, bytes, options, script, problem);
}

bool LoadScript(const std::string& path, const SourceOptions& options, ScriptText* script,
                std::string* problem) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY;
  const int file = Repeated([&] { return open(path.c_str(), kFlags); });
  std::string bytes;
  const bool is_read = file >= 0 && ReadAll(file, &bytes);
  if (!is_read) *problem = "cannot read the script " + path + ": " + strerror(errno);
  if (file >= 0) close(file);
  if (!is_read) return false;
  const std::string refusal = RefusalOf(path, bytes);
  if (!refusal.empty()) {
    *problem = "cannot run " + path + ": " + refusal;
    return false;
  }
  if (!ScriptFromBytes(path, bytes, options, script, problem)) return false;
  const std::string full = FullPath(path);
  script->full_path = full.empty() ? path : full;
  return true;
}

}  // namespace mirolta::host
