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

// Returns the last bytes of a regular file.
std::string ReadEnd(const std::string& path) {
  std::string bytes;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (file < 0) return bytes;
  struct stat facts = {};
  if (fstat(file, &facts) == 0 && S_ISREG(facts.st_mode)) {
    const auto most = static_cast<off_t>(kMostBytes);
    const off_t from = facts.st_size > most ? facts.st_size - most : 0;
    bytes.resize(kMostBytes);
    const ssize_t got = pread(file, bytes.data(), bytes.size(), from);
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
  }
  close(file);
  return bytes;
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

std::vector<std::string> ReadHistory(const std::string& path) {
  std::vector<std::string> lines;
  const std::string bytes = ReadEnd(path);
  for (size_t at = 0; at < bytes.size();) {
    const size_t end = bytes.find('\n', at);
    if (end == std::string::npos) break;
    if (end > at) lines.push_back(bytes.substr(at, end - at));
    at = end + 1;
  }
  if (lines.size() > kMostLines) {
    lines.erase(lines.begin(), lines.end() - static_cast<ptrdiff_t>(kMostLines));
  }
  return lines;
}

bool AddToHistory(const std::string& path, const std::vector<std::string>& added) {
  if (!MakeFolderOf(path)) return false;
  Target target;
  if (FindTarget(path, &target) != 0 || target.kind == TargetKind::kOther) return false;
  std::vector<std::string> lines = ReadHistory(path);
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
