#include "files/temporary_file.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM};

// The list of files to remove; changed only while the signals are blocked.
TemporaryFile* volatile first_file = nullptr;

class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : kSignals) sigaddset(&blocked, signal);
    sigprocmask(SIG_BLOCK, &blocked, &before_);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

// Files that are created meanwhile are their owner's only.
class PrivateFiles {
 public:
  PrivateFiles() = default;
  PrivateFiles(const PrivateFiles&) = delete;
  PrivateFiles& operator=(const PrivateFiles&) = delete;
  ~PrivateFiles() { umask(before_); }

 private:
  const mode_t before_ = umask(S_IRWXG | S_IRWXO);
};

}  // namespace

void RemoveTemporaryFiles() {
  for (const TemporaryFile* file = first_file; file != nullptr; file = file->next_) {
    unlink(file->path_.c_str());
  }
}

namespace {

void RemoveOnSignal(int signal) {
  RemoveTemporaryFiles();
  // SA_RESETHAND restored the default action; the signal stays pending until this handler returns.
  raise(signal);
}

// A signal that the process ignores, as under nohup, stays ignored.
void CatchSignals() {
  static bool is_done = false;
  if (is_done) return;
  is_done = true;
  for (const int signal : kSignals) {
    struct sigaction now = {};
    if (sigaction(signal, nullptr, &now) != 0 || now.sa_handler != SIG_DFL) continue;
    struct sigaction action = {};
    action.sa_handler = RemoveOnSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigfillset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
  }
}

}  // namespace

void TemporaryFile::Enlist() {
  next_ = first_file;
  first_file = this;
}

void TemporaryFile::Delist() {
  if (first_file == this) {
    first_file = next_;
    return;
  }
  for (TemporaryFile* file = first_file; file != nullptr; file = file->next_) {
    if (file->next_ == this) file->next_ = next_;
  }
}

HRESULT TemporaryFile::Create(const std::string& folder, DWORD mode,
                              OwnedReference<IStream>* stream) {
  static unsigned last_number;
  CatchSignals();
  const SignalsBlocked blocked;
  const PrivateFiles is_private;
  HRESULT status = STG_E_FILEALREADYEXISTS;
  for (int tries = 0; status == STG_E_FILEALREADYEXISTS && tries < 1000; ++tries) {
    path_ = folder + ".mirolta-" + std::to_string(getpid()) + "-" + std::to_string(++last_number);
    status = SHCreateStreamOnFileEx(UnitsFromSystem(path_).c_str(), mode, 0, TRUE, nullptr,
                                    stream->Put());
  }
  if (FAILED(status)) {
    path_.clear();
  } else {
    Enlist();
  }
  return status;
}

int TemporaryFile::MoveTo(const std::string& target, bool must_be_new) {
  const SignalsBlocked blocked;
  if (must_be_new) {
    // Without hard links there is a race: a file created between lstat and rename is lost.
    struct stat facts = {};
    if (link(path_.c_str(), target.c_str()) == 0) {
      unlink(path_.c_str());
    } else if (errno == EEXIST || lstat(target.c_str(), &facts) == 0) {
      return EEXIST;
    } else if (rename(path_.c_str(), target.c_str()) != 0) {
      return errno;
    }
  } else if (rename(path_.c_str(), target.c_str()) != 0) {
    return errno;
  }
  Delist();
  path_.clear();
  return 0;
}

void TemporaryFile::Remove() {
  if (path_.empty()) return;
  const SignalsBlocked blocked;
  unlink(path_.c_str());
  Delist();
  path_.clear();
}

}  // namespace mirolta::host
