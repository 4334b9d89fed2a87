// Files that a script creates or replaces. Data goes to a temporary file beside the target; Finish
// moves it into place, and until then the target is unchanged.
#pragma once

#include <memory>
#include <string>

#include "files/target_path.h"
#include "files/temporary_file.h"
#include "platform.h"

namespace mirolta::host {

struct OutputOptions {
  DWORD mode = STGM_WRITE;   // or STGM_READWRITE
  bool must_be_new = false;  // fails if the file exists
  bool is_private = false;   // readable and writable by the owner only
};

class OutputFile {
 public:
  // Open creates the temporary file. The output stays open until Finish, Discard, FinishOutputs or
  // DiscardOutputs. `target` is new or a regular file; messages call it `name`.
  // Errors: the system's status; STG_E_ACCESSDENIED if the process may not write an existing
  //         target.
  [[nodiscard]] static HRESULT Open(const Target& target, const std::string& name,
                                    const OutputOptions& options, OwnedReference<IStream>* stream,
                                    std::shared_ptr<OutputFile>* output);

  // Finish syncs the file to the disk and renames it to the target, with the target's permissions
  // and, if the process may set it, its owner. Does nothing for an output that is not open.
  // Errors: the status of the first failed write, else of replacing the target; the target is
  //         unchanged.
  [[nodiscard]] HRESULT Finish();
  // Discard removes the temporary file. Does nothing for an output that is not open.
  void Discard();
  bool IsOpen() const { return is_open_; }

  // NoteFailure records that a write failed: Finish then fails with `status`, the first one.
  void NoteFailure(HRESULT status) {
    if (SUCCEEDED(failure_)) failure_ = status;
  }
  const std::string& Name() const { return name_; }

 private:
  void Leave();  // the list of open outputs
  [[nodiscard]] int Replace();

  TemporaryFile temporary_;
  Target target_;
  OutputOptions options_;
  std::string name_;
  HRESULT failure_ = S_OK;
  bool is_open_ = true;
};

// FinishOutputs finishes all open outputs in the order of their opening; it reports each failure on
// standard error and returns false then. DiscardOutputs discards them.
[[nodiscard]] bool FinishOutputs();
void DiscardOutputs();

}  // namespace mirolta::host
