// Files that a script writes anew. Everything goes to a temporary file beside the target; Finish
// puts it in the target's place, and until then the target is as it was.
#pragma once

#include <memory>
#include <string>

#include "files/target_path.h"
#include "files/temporary_file.h"
#include "platform.h"
#include "values/scoped_values.h"

namespace mirolta::host {

struct OutputOptions {
  DWORD mode = STGM_WRITE;   // or STGM_READWRITE
  bool must_be_new = false;  // fails if the file is there
  bool is_private = false;   // readable and writable by the owner only
};

class OutputFile {
 public:
  // Open makes the temporary file. The output then waits for Finish, Discard, or FinishOutputs or
  // DiscardOutputs. `target` is a new or a regular file, which fails Finish if the file must be
  // new; `name` is what messages call it.
  [[nodiscard]] static HRESULT Open(const Target& target, const std::string& name,
                                    const OutputOptions& options, Reference<IStream>* stream,
                                    std::shared_ptr<OutputFile>* output);

  // Finish puts the file on the disk and then in the target's place, with the target's permissions
  // and, as far as the process may, its owner; a symbolic link stays and the file it leads to is
  // replaced. After a failure, also a write's that came before, the target is as it was. Does
  // nothing for an output that is no longer open.
  [[nodiscard]] HRESULT Finish();
  void Discard();
  bool is_open() const { return is_open_; }

  // What was written is not complete: Finish will fail with `status`.
  void NoteFailure(HRESULT status) {
    if (SUCCEEDED(failure_)) failure_ = status;
  }
  const std::string& name() const { return name_; }

 private:
  void Leave();  // the outputs that wait
  [[nodiscard]] int Replace();

  TemporaryFile temporary_;
  Target target_;
  OutputOptions options_;
  std::string name_;
  HRESULT failure_ = S_OK;
  bool is_open_ = true;
};

// FinishOutputs finishes what a script left open; it names what fails on standard error and returns
// false then. DiscardOutputs drops it.
[[nodiscard]] bool FinishOutputs();
void DiscardOutputs();

}  // namespace mirolta::host
