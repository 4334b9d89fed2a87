#include "command_line/history_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "files/output_file.h"
#include "files/target_path.h"
#include "platform.h"
#include "portable/repeated_call.h"

namespace mirolta::host {
namespace {

constexpr size_t kMostLines = 1000;
constexpr size_t kMostBytes = size_t{1} << 20;

// Creates the folder of a file, and those above it, for the user only.
bool MakeFolderOf(const std::string& path) {
  for (size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1)) {
    if (mkdir(path.substr(0, at).c_str(), S_IRWXU) != 0 && errno != EEXIST) return false;
  }
  return true;
}

// Reads up to kMostBytes from `from` on.
bool ReadFrom(int file, off_t from, std::string* bytes) {
  bytes->resize(kMostBytes);
  size_t size = 0;
  while (size < kMostBytes) {
    char* const place = bytes->data() + size;
    const off_t at = from + static_cast<off_t>(size);
    const ssize_t got = Repeated([&] { return pread(file, place, kMostBytes - size, at); });
    if (got < 0) return false;
    if (got == 0) break;
    size += static_cast<size_t>(got);
  }
  bytes->resize(size);
  return true;
}

// Reads the last bytes of a file; none if it does not exist or is no regular file.
bool ReadEnd(const std::string& path, std::string* bytes) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  const int file = Repeated([&] { return open(path.c_str(), kFlags); });
  if (file < 0) return errno == ENOENT;
  struct stat facts = {};
  bool is_read = fstat(file, &facts) == 0;
  if (is_read && S_ISREG(facts.st_mode)) {
    const auto most = static_cast<off_t>(kMostBytes);
    is_read = ReadFrom(file, facts.st_size > most ? facts.st_size - most : 0, bytes);
  }
  close(file);
  return is_read;
}

HRESULT WriteAll(IStream* stream, const std::string& bytes) {
  ULONG written = 0;
  const HRESULT status = stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
  return SUCCEEDED(status) && written != bytes.size() ? STG_E_MEDIUMFULL : status;
}

}  // namespace

std::string HistoryPath() {
  if (const char* chosen = getenv("MIROLTA_HISTORY")) return chosen;
  const char* state = getenv("XDG_STATE_HOME");
  if (state != nullptr && state[0] == '/') return std::string(state) + "/mirolta/history";
  const char* home = getenv("HOME");
  if (home == nullptr || home[0] != '/') return "";
  return std::string(home) + "/.local/state/mirolta/history";
}

bool ReadHistory(const std::string& path, std::vector<std::string>* lines) {
  std::string bytes;
  if (!ReadEnd(path, &bytes)) return false;
  for (size_t at = 0; at < bytes.size();) {
    const size_t end = bytes.find('\n', at);
    if (end == std::string::npos) break;
    if (end > at) lines->push_back(bytes.substr(at, end - at));
    at = end + 1;
  }
  if (lines->size() > kMostLines) {
    lines->erase(lines->begin(), lines->end() - static_cast<ptrdiff_t>(kMostLines));
  }
  return true;
}

bool AddToHistory(const std::string& path, const std::vector<std::string>& added) {
  if (!MakeFolderOf(path)) return false;
  Target target;
  if (FindTarget(path, &target) != 0 || target.kind == TargetKind::kOther) return false;
  std::vector<std::string> lines;
  // A history that cannot be read would be lost by a new one.
  if (!ReadHistory(path, &lines)) return false;
  const size_t count = lines.size();
  for (const std::string& line : added) {
    if (lines.empty() || lines.back() != line) lines.push_back(line);
  }
  if (lines.size() == count) return true;
  std::string bytes;
  const size_t first = lines.size() > kMostLines ? lines.size() - kMostLines : 0;
  for (size_t i = first; i < lines.size(); ++i) bytes += lines[i] + '\n';

  OutputOptions options;
  options.is_private = true;
  OwnedReference<IStream> stream;
  std::shared_ptr<OutputFile> output;
  if (FAILED(OutputFile::Open(target, path, options, &stream, &output))) return false;
  const HRESULT status = WriteAll(stream.Get(), bytes);
  if (FAILED(status)) output->NoteFailure(status);
  return SUCCEEDED(output->Finish());
}

}  // namespace mirolta::host
