// A file under a name of its own until it takes the place of another. It is removed if that does
// not happen: when its owner ends, and when the process is interrupted (SIGINT, SIGTERM, SIGHUP,
// SIGQUIT), which then still ends the process. SIGKILL leaves it.
#pragma once

#include <string>

#include "platform.h"
#include "values/scoped_values.h"

namespace mirolta::host {

class TemporaryFile {
 public:
  TemporaryFile() = default;
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { Remove(); }

  // Create makes an empty file in `folder` (with its slash, or "") that only the owner may read or
  // write, and opens it: STGM_WRITE or STGM_READWRITE. Call once.
  [[nodiscard]] HRESULT Create(const std::string& folder, DWORD mode, Reference<IStream>* stream);

  // MoveTo gives the file the name `target`, whose file it replaces. With `must_be_new` it fails
  // with EEXIST if there is one.
  // Errors: the system's error number, 0 if there is none.
  [[nodiscard]] int MoveTo(const std::string& target, bool must_be_new);

  void Remove();
  const std::string& path() const { return path_; }

 private:
  friend void RemoveOnSignal(int signal);
  void Enlist();
  void Delist();

  std::string path_;  // empty if there is no file
  TemporaryFile* next_ = nullptr;
};

}  // namespace mirolta::host
