// A temporary file that is renamed to its target, or removed: when its owner ends, and when the
// process is terminated by SIGINT, SIGTERM, SIGHUP, SIGQUIT or SIGALRM, which keep their effect.
// SIGKILL leaves the file.
#pragma once

#include <string>

#include "platform.h"

namespace mirolta::host {

class TemporaryFile {
 public:
  TemporaryFile() = default;
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { Remove(); }

  // Create creates an empty file with a new name and mode 0600, and opens it. Call once.
  // Shapes: `folder` ends with a slash or is ""; `mode` is STGM_WRITE or STGM_READWRITE.
  // Errors: the system's status; std::bad_alloc.
  [[nodiscard]] HRESULT Create(const std::string& folder, DWORD mode,
                               OwnedReference<IStream>* stream);

  // MoveTo renames the file to `target` and replaces that.
  // Errors: errno of the failure, EEXIST if `must_be_new` is set and the target exists; 0 if there
  //         is none.
  [[nodiscard]] int MoveTo(const std::string& target, bool must_be_new);

  void Remove();
  const std::string& Path() const { return path_; }

 private:
  friend void RemoveTemporaryFiles();
  // The list of files that a signal removes.
  void Enlist();
  void Delist();

  std::string path_;  // "" if there is no file
  TemporaryFile* next_ = nullptr;
};

// RemoveTemporaryFiles removes the files of all TemporaryFile objects, for a signal handler that
// ends the process. Async-signal-safe if the handler's signal is SIGINT, SIGTERM, SIGHUP, SIGQUIT
// or SIGALRM, which are blocked while the list of files changes.
void RemoveTemporaryFiles();

}  // namespace mirolta::host
