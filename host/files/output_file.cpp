#include "files/output_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "engine/status_text.h"
#include "files/full_path.h"
#include "portable/repeated_call.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

using Outputs = std::vector<std::shared_ptr<OutputFile>>;

Outputs& OpenOutputs() {
  static Outputs& outputs = *new Outputs;  // never destroyed: streams may outlive statics
  return outputs;
}

struct StatusRow {
  int error;
  HRESULT status;
};
constexpr StatusRow kStatuses[] = {
    {EEXIST, STG_E_FILEALREADYEXISTS}, {EACCES, STG_E_ACCESSDENIED},  {EPERM, STG_E_ACCESSDENIED},
    {EBUSY, STG_E_ACCESSDENIED},       {EROFS, STG_E_ACCESSDENIED},   {EISDIR, STG_E_ACCESSDENIED},
    {ENOENT, STG_E_FILENOTFOUND},      {ENOTDIR, STG_E_FILENOTFOUND}, {ENOSPC, STG_E_MEDIUMFULL},
    {EDQUOT, STG_E_MEDIUMFULL},        {EFBIG, STG_E_MEDIUMFULL},
};

HRESULT StatusOf(int error) {
  for (const StatusRow& row : kStatuses) {
    if (row.error == error) return row.status;
  }
  return STG_E_WRITEFAULT;
}

mode_t NewFileMode() {
  // Files that other threads make meanwhile are private.
  const mode_t mask = umask(S_IRWXG | S_IRWXO);
  umask(mask);
  return (S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH) & ~mask;
}

bool GiveTo(int file, uid_t user, gid_t group) {
  return fchown(file, user, group) == 0;
}

// Sets the permissions of the new file and, if the process may, its owner.
int TakeOver(int file, const Target& target, bool is_private) {
  mode_t mode = NewFileMode();
  if (target.kind == TargetKind::kRegular) {
    mode = target.facts.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
    constexpr auto kSameUser = static_cast<uid_t>(-1);
    if (!GiveTo(file, target.facts.st_uid, target.facts.st_gid) &&
        !GiveTo(file, kSameUser, target.facts.st_gid)) {
      // The old group's permissions must not go to another group.
      mode &= static_cast<mode_t>(S_IRWXU | S_IRWXO);
    }
  }
  if (is_private) mode &= static_cast<mode_t>(S_IRWXU);
  return fchmod(file, mode) == 0 ? 0 : errno;
}

int SyncFolder(const std::string& folder) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  const char* const name = folder.empty() ? "." : folder.c_str();
  const int file = Repeated([&] { return open(name, kFlags); });
  if (file < 0) return errno;
  const int error = Repeated([&] { return fsync(file); }) == 0 ? 0 : errno;
  close(file);
  return error;
}

}  // namespace

HRESULT OutputFile::Open(const Target& target, const std::string& name,
                         const OutputOptions& options, OwnedReference<IStream>* stream,
                         std::shared_ptr<OutputFile>* output) {
  if (target.kind == TargetKind::kRegular) {
    // A file that the process may not write must not be replaced either.
    const HRESULT status = SHCreateStreamOnFileEx(UnitsFromSystem(target.path).c_str(), STGM_WRITE,
                                                  0, FALSE, nullptr, stream->Put());
    if (FAILED(status)) return status;
  }
  auto made = std::make_shared<OutputFile>();
  made->target_ = target;
  // The script may change the current folder before the file is finished.
  made->target_.path = RootedPath(target.path);
  made->name_ = name;
  made->options_ = options;
  const HRESULT status =
      made->temporary_.Create(FolderOf(made->target_.path), options.mode, stream);
  if (FAILED(status)) return status;
  OpenOutputs().push_back(made);
  *output = std::move(made);
  return S_OK;
}

void OutputFile::Leave() {
  is_open_ = false;
  Outputs& outputs = OpenOutputs();
  outputs.erase(std::remove_if(outputs.begin(), outputs.end(),
                               [this](const auto& other) { return other.get() == this; }),
                outputs.end());
}

int OutputFile::Replace() {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW;
  const int file = Repeated([&] { return open(temporary_.Path().c_str(), kFlags); });
  if (file < 0) return errno;
  int error = TakeOver(file, target_, options_.is_private);
  // Synced before it is renamed: after a crash the target is the old file or the new one.
  if (error == 0 && Repeated([&] { return fsync(file); }) != 0) error = errno;
  close(file);
  if (error == 0) error = temporary_.MoveTo(target_.path, options_.must_be_new);
  if (error != 0) return error;
  // The file is complete and in place; failing to sync the folder is no failure of the script.
  static_cast<void>(SyncFolder(FolderOf(target_.path)));
  return 0;
}

HRESULT OutputFile::Finish() {
  if (!is_open_) return S_OK;
  Leave();
  if (SUCCEEDED(failure_)) {
    const int error = Replace();
    if (error != 0) failure_ = StatusOf(error);
  }
  temporary_.Remove();
  return failure_;
}

void OutputFile::Discard() {
  if (!is_open_) return;
  temporary_.Remove();
  Leave();
}

bool FinishOutputs() {
  bool finished = true;
  const Outputs outputs = std::move(OpenOutputs());
  OpenOutputs().clear();
  for (const auto& output : outputs) {
    const HRESULT status = output->Finish();
    if (SUCCEEDED(status)) continue;
    finished = false;
    fprintf(stderr, "mirolta-host: %s: %s\n",
            SystemFromUnits(UnitsFromEngine(output->Name())).c_str(),
            StandardText(status, "cannot be written"));
  }
  return finished;
}

void DiscardOutputs() {
  const Outputs outputs = std::move(OpenOutputs());
  OpenOutputs().clear();
  for (const auto& output : outputs) output->Discard();
}

}  // namespace mirolta::host
