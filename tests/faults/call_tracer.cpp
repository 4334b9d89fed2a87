// call_tracer LIST [FAULT NUMBER[+]] -- PROGRAM ARGUMENTS...
// Runs a program and counts its system calls from its entry point on, when the loader has done its work. LIST receives
// a line for each with its name and file; with a fault only for the calls that get it. That is call NUMBER, with + also
// each later call of the same kind:
//   ERRNO          the call is not made and fails with that number
//   done:ERRNO     the call is made, and reports that number
//   short:COUNT    the call gets COUNT as its number of bytes, if that is less
//   kill           the program is killed when the call has been made
// The exit status is the program's; 128 and the signal's number if a signal ended it; 255 for a failure of the tracer,
// 254 where tracing is not allowed, 253 if the program was killed because it repeated calls that fail without end.
#include <elf.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace {

constexpr int kFailed = 255;
constexpr int kNotAllowed = 254;
constexpr int kRepeats = 253;
// Calls with the fault, in one run; a script engine that looks for memory makes a few hundred.
constexpr long kMostFaultyCalls = 10000;
constexpr int kCallStop = SIGTRAP | 0x80;
constexpr int kArguments = 3;  // those that are looked at

// What the first argument, or the second, of a call is.
enum class Names { kNothing, kPath, kPathInFolder, kDescriptor };

struct CallRow {
  long number;
  const char* name;
  Names names = Names::kNothing;
  int count = 0;  // the argument with the number of bytes, 0 if there is none
};
constexpr CallRow kCalls[] = {
    {SYS_read, "read", Names::kDescriptor, 2},
    {SYS_pread64, "pread64", Names::kDescriptor, 2},
    {SYS_readv, "readv", Names::kDescriptor},
    {SYS_write, "write", Names::kDescriptor, 2},
    {SYS_pwrite64, "pwrite64", Names::kDescriptor, 2},
    {SYS_writev, "writev", Names::kDescriptor},
    {SYS_open, "open", Names::kPath},
    {SYS_openat, "openat", Names::kPathInFolder},
    {SYS_close, "close", Names::kDescriptor},
    {SYS_dup, "dup", Names::kDescriptor},
    {SYS_stat, "stat", Names::kPath},
    {SYS_lstat, "lstat", Names::kPath},
    {SYS_fstat, "fstat", Names::kDescriptor},
    {SYS_newfstatat, "newfstatat", Names::kPathInFolder},
    {SYS_statx, "statx", Names::kPathInFolder},
    {SYS_statfs, "statfs", Names::kPath},
    {SYS_access, "access", Names::kPath},
    {SYS_faccessat, "faccessat", Names::kPathInFolder},
    {SYS_faccessat2, "faccessat2", Names::kPathInFolder},
    {SYS_readlink, "readlink", Names::kPath},
    {SYS_readlinkat, "readlinkat", Names::kPathInFolder},
    {SYS_getdents64, "getdents64", Names::kDescriptor},
    {SYS_lseek, "lseek", Names::kDescriptor},
    {SYS_ftruncate, "ftruncate", Names::kDescriptor},
    {SYS_fsync, "fsync", Names::kDescriptor},
    {SYS_fdatasync, "fdatasync", Names::kDescriptor},
    {SYS_flock, "flock", Names::kDescriptor},
    {SYS_fcntl, "fcntl", Names::kDescriptor},
    {SYS_ioctl, "ioctl", Names::kDescriptor},
    {SYS_fchmod, "fchmod", Names::kDescriptor},
    {SYS_fchown, "fchown", Names::kDescriptor},
    {SYS_chmod, "chmod", Names::kPath},
    {SYS_mkdir, "mkdir", Names::kPath},
    {SYS_rmdir, "rmdir", Names::kPath},
    {SYS_link, "link", Names::kPath},
    {SYS_symlink, "symlink", Names::kPath},
    {SYS_unlink, "unlink", Names::kPath},
    {SYS_unlinkat, "unlinkat", Names::kPathInFolder},
    {SYS_rename, "rename", Names::kPath},
    {SYS_renameat, "renameat", Names::kPathInFolder},
    {SYS_renameat2, "renameat2", Names::kPathInFolder},
    {SYS_utimensat, "utimensat", Names::kDescriptor},
    {SYS_getcwd, "getcwd"},
    {SYS_chdir, "chdir", Names::kPath},
    {SYS_umask, "umask"},
    {SYS_getpid, "getpid"},
    {SYS_geteuid, "geteuid"},
    {SYS_getuid, "getuid"},
    {SYS_gettid, "gettid"},
    {SYS_getrandom, "getrandom", Names::kNothing, 1},
    {SYS_brk, "brk"},
    {SYS_mmap, "mmap"},
    {SYS_mremap, "mremap"},
    {SYS_munmap, "munmap"},
    {SYS_mprotect, "mprotect"},
    {SYS_madvise, "madvise"},
    {SYS_futex, "futex"},
    {SYS_rt_sigaction, "rt_sigaction"},
    {SYS_rt_sigprocmask, "rt_sigprocmask"},
    {SYS_poll, "poll"},
    {SYS_ppoll, "ppoll"},
    {SYS_alarm, "alarm"},
    {SYS_exit_group, "exit_group"},
};

const CallRow* RowOf(long number) {
  for (const CallRow& row : kCalls) {
    if (row.number == number) return &row;
  }
  return nullptr;
}

bool TakesMemory(long number) {
  return number == SYS_brk || number == SYS_mmap || number == SYS_mremap;
}

struct ErrorRow {
  const char* name;
  int error;
};
constexpr ErrorRow kErrors[] = {
    {"EACCES", EACCES}, {"EAGAIN", EAGAIN}, {"EINTR", EINTR},   {"EIO", EIO},
    {"EMFILE", EMFILE}, {"ENFILE", ENFILE}, {"ENOLCK", ENOLCK}, {"ENOMEM", ENOMEM},
    {"ENOSPC", ENOSPC}, {"ENOSYS", ENOSYS}, {"EPERM", EPERM},   {"EROFS", EROFS},
};

int ErrorOf(const std::string& name) {
  for (const ErrorRow& row : kErrors) {
    if (name == row.name) return row.error;
  }
  return 0;
}

struct Fault {
  enum class Kind { kNone, kError, kDoneError, kShort, kKill } kind = Kind::kNone;
  int error = 0;
  unsigned long long count = 0;
  long at = 0;
  bool goes_on = false;
};

bool ParseFault(const std::string& text, const std::string& number, Fault* fault) {
  const size_t colon = text.find(':');
  const std::string head = text.substr(0, colon);
  const std::string tail = colon == std::string::npos ? "" : text.substr(colon + 1);
  if (text == "kill") {
    fault->kind = Fault::Kind::kKill;
  } else if (head == "short") {
    fault->kind = Fault::Kind::kShort;
    fault->count = strtoull(tail.c_str(), nullptr, 10);
  } else {
    fault->kind = head == "done" ? Fault::Kind::kDoneError : Fault::Kind::kError;
    fault->error = ErrorOf(head == "done" ? tail : head);
    if (fault->error == 0) return false;
  }
  fault->at = atol(number.c_str());
  fault->goes_on = number.ends_with('+');
  return fault->at > 0;
}

[[noreturn]] void End(const char* reason) {
  fprintf(stderr, "call_tracer: %s: %s\n", reason, strerror(errno));
  exit(kFailed);
}

// The system's registers, whose types the debugger's interface takes as pointers.
struct Registers {
  explicit Registers(pid_t program) : program_(program) {
    if (ptrace(PTRACE_GETREGS, program, nullptr, &values) != 0) End("registers");
  }
  void Write() {
    if (ptrace(PTRACE_SETREGS, program_, nullptr, &values) != 0) End("registers");
  }
  unsigned long long& Argument(int index) {
    switch (index) {
      case 0:
        return values.rdi;
      case 1:
        return values.rsi;
      default:
        return values.rdx;
    }
  }
  user_regs_struct values = {};

 private:
  pid_t program_;
};

// Waits for the next stop; returns false when the program has ended.
bool Wait(pid_t program, int* status) {
  while (waitpid(program, status, 0) != program) {
    if (errno != EINTR) End("wait");
  }
  return !WIFEXITED(*status) && !WIFSIGNALED(*status);
}

std::string LinkOf(const std::string& path) {
  char text[PATH_MAX];
  const ssize_t size = readlink(path.c_str(), text, sizeof text);
  return size < 0 ? "" : std::string(text, static_cast<size_t>(size));
}

std::string TextAt(pid_t program, unsigned long long address) {
  std::string text;
  while (text.size() < PATH_MAX) {
    errno = 0;
    const long word = ptrace(PTRACE_PEEKDATA, program, address + text.size(), nullptr);
    if (errno != 0) break;
    char bytes[sizeof word];
    memcpy(bytes, &word, sizeof word);
    const size_t size = strnlen(bytes, sizeof bytes);
    text.append(bytes, size);
    if (size < sizeof bytes) break;
  }
  return text;
}

std::string DescriptorName(pid_t program, int file) {
  if (file <= STDERR_FILENO) return "descriptor " + std::to_string(file);
  return LinkOf("/proc/" + std::to_string(program) + "/fd/" + std::to_string(file));
}

std::string FileOf(pid_t program, const CallRow* row, Registers* registers) {
  const auto first = static_cast<int>(registers->Argument(0));
  std::string path;
  switch (row == nullptr ? Names::kNothing : row->names) {
    case Names::kNothing:
      return "-";
    case Names::kDescriptor:
      path = DescriptorName(program, first);
      break;
    case Names::kPath:
      path = TextAt(program, registers->Argument(0));
      break;
    case Names::kPathInFolder:
      path = TextAt(program, registers->Argument(1));
      if (first >= 0 && !path.starts_with('/')) {
        path = DescriptorName(program, first) + (path.empty() ? "" : "/" + path);
      }
      break;
  }
  return path.empty() ? "-" : path;
}

// The address where the loader hands over to the program.
unsigned long long EntryOf(pid_t program) {
  std::ifstream file("/proc/" + std::to_string(program) + "/auxv", std::ios::binary);
  Elf64_auxv_t entry = {};
  while (file.read(reinterpret_cast<char*>(&entry), sizeof entry)) {
    if (entry.a_type == AT_ENTRY) return entry.a_un.a_val;
  }
  End("no entry point");
}

// Runs the program up to its entry point; returns false if it ends before.
bool RunToEntry(pid_t program, int* status) {
  const unsigned long long entry = EntryOf(program);
  errno = 0;
  const long code = ptrace(PTRACE_PEEKTEXT, program, entry, nullptr);
  constexpr long kBreakpoint = 0xCC;
  if (errno != 0 || ptrace(PTRACE_POKETEXT, program, entry, (code & ~0xFFL) | kBreakpoint) != 0)
    End("breakpoint");
  if (ptrace(PTRACE_CONT, program, nullptr, nullptr) != 0) End("start");
  if (!Wait(program, status)) return false;
  if (WSTOPSIG(*status) != SIGTRAP || ptrace(PTRACE_POKETEXT, program, entry, code) != 0)
    End("breakpoint");
  Registers registers(program);
  registers.values.rip = entry;
  registers.Write();
  return true;
}

// One run of the program between its entry point and its end.
class Trace {
 public:
  Trace(pid_t program, const Fault& fault, const char* list) : program_(program), fault_(fault) {
    list_ = fopen(list, "we");
    if (list_ == nullptr) End(list);
  }

  void Run(int* status) {
    int signal = 0;
    for (bool is_entry = true;;) {
      const auto request = is_over_ ? PTRACE_CONT : PTRACE_SYSCALL;
      if (ptrace(request, program_, nullptr, static_cast<long>(signal)) != 0 && errno != ESRCH)
        End("continue");
      if (!Wait(program_, status)) break;
      signal = 0;
      if (WSTOPSIG(*status) != kCallStop) {
        signal = WSTOPSIG(*status);
        continue;
      }
      if (is_entry) {
        Enter();
      } else {
        Leave();
      }
      is_entry = !is_entry;
    }
    fclose(list_);
  }
  bool Repeats() const { return faulty_calls_ > kMostFaultyCalls; }

 private:
  void Enter() {
    Registers registers(program_);
    number_ = static_cast<long>(registers.values.orig_rax);
    ++calls_;
    if (calls_ == fault_.at) {
      faulty_ = number_;
      first_ = registers.Argument(0);
    }
    is_faulty_ =
        calls_ == fault_.at || (fault_.goes_on && calls_ > fault_.at && IsSameKind(&registers));
    const CallRow* const row = RowOf(number_);
    if (is_faulty_ || fault_.kind == Fault::Kind::kNone) {
      fprintf(list_, "%s\t%s\n", row != nullptr ? row->name : std::to_string(number_).c_str(),
              FileOf(program_, row, &registers).c_str());
    }
    if (!is_faulty_) return;
    if (++faulty_calls_ > kMostFaultyCalls) {
      kill(program_, SIGKILL);
      return;
    }
    // A program may rely on finding them as it left them.
    for (int i = 0; i < kArguments; ++i) arguments_[i] = registers.Argument(i);
    if (fault_.kind == Fault::Kind::kError) {
      if (number_ == SYS_brk) {
        registers.Argument(0) = 0;  // fails by returning the end of the heap as it is
      } else {
        registers.values.orig_rax = static_cast<unsigned long long>(-1);
      }
    }
    if (fault_.kind == Fault::Kind::kShort && row != nullptr && row->count != 0) {
      unsigned long long& count = registers.Argument(row->count);
      if (count > fault_.count) count = fault_.count;
    }
    registers.Write();
  }

  void Leave() {
    if (!is_faulty_) return;
    Registers registers(program_);
    for (int i = 0; i < kArguments; ++i) registers.Argument(i) = arguments_[i];
    if (fault_.error != 0 && number_ != SYS_brk) {
      registers.values.rax = static_cast<unsigned long long>(-static_cast<long long>(fault_.error));
    }
    registers.Write();
    if (fault_.kind == Fault::Kind::kKill) kill(program_, SIGKILL);
    is_over_ = !fault_.goes_on;
  }

  // A full disk fails each write to the file, but not to others.
  bool IsSameKind(Registers* registers) const {
    if (TakesMemory(number_) && TakesMemory(faulty_)) return true;
    return number_ == faulty_ && (number_ != SYS_write || registers->Argument(0) == first_);
  }

  const pid_t program_;
  const Fault fault_;
  FILE* list_ = nullptr;
  long calls_ = 0;
  long faulty_calls_ = 0;
  long number_ = 0;
  long faulty_ = -1;  // the number of the call with the fault, and its first argument
  unsigned long long first_ = 0;
  unsigned long long arguments_[kArguments] = {};
  bool is_faulty_ = false;
  bool is_over_ = false;  // no more calls get the fault
};

int Run(const char* list, const Fault& fault, char** words) {
  const pid_t program = fork();
  if (program < 0) End("fork");
  if (program == 0) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(kNotAllowed);
    execv(words[0], words);
    _exit(kFailed);
  }
  int status = 0;
  if (Wait(program, &status)) {
    constexpr long kOptions = PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL;
    if (ptrace(PTRACE_SETOPTIONS, program, nullptr, kOptions) != 0) End("options");
    if (RunToEntry(program, &status)) {
      Trace trace(program, fault, list);
      trace.Run(&status);
      if (trace.Repeats()) return kRepeats;
    }
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

int main(int count, char** words) {
  Fault fault;
  int next = 2;
  if (count > 4 && strcmp(words[2], "--") != 0) {
    if (!ParseFault(words[2], words[3], &fault)) next = count;
    next += 2;
  }
  if (next + 1 >= count || strcmp(words[next], "--") != 0) {
    fputs("call_tracer LIST [FAULT NUMBER[+]] -- PROGRAM ARGUMENTS...\n", stderr);
    return kFailed;
  }
  return Run(words[1], fault, words + next + 1);
}
