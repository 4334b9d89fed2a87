#include "engine/interruption.h"

#include <errno.h>
#include <poll.h>
#include <unistd.h>

#include <string_view>

#include "files/temporary_file.h"

namespace mirolta::host {

volatile sig_atomic_t interruption_requested = 0;

namespace {

constexpr std::string_view kStillRunning =
    "mirolta-host: the command cannot be interrupted yet; Ctrl-C again ends mirolta-host\n";
constexpr unsigned kPatience = 1;  // seconds

volatile sig_atomic_t command_is_running = 0;

// The text of a time limit; the handler reads it.
const char* limit_message = "";
size_t limit_message_size = 0;

void WriteMessage(const char* text, size_t size) {
  // Nothing can be done about a failure.
  if (write(STDERR_FILENO, text, size) < 0) return;
}

[[noreturn]] void EndAtLimit(int) {
  RemoveTemporaryFiles();
  WriteMessage(limit_message, limit_message_size);
  _exit(1);
}

void TellStillRunning(int) {
  const int error = errno;
  if (command_is_running != 0 && interruption_requested != 0) {
    WriteMessage(kStillRunning.data(), kStillRunning.size());
  }
  errno = error;
}

void RequestInterruption(int number) {
  if (command_is_running != 0 && interruption_requested != 0) {
    RemoveTemporaryFiles();
    signal(number, SIG_DFL);
    // Pending until this handler returns.
    raise(number);
    return;
  }
  interruption_requested = 1;
  if (command_is_running != 0) alarm(kPatience);
}

void Catch(int number, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;  // without SA_RESTART: waiting calls return
  sigfillset(&action.sa_mask);
  sigaction(number, &action, nullptr);
}

void Block(int how, int number) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, number);
  sigprocmask(how, &set, nullptr);
}

}  // namespace

void LimitTime(unsigned seconds, const std::string& message) {
  static std::string& kept = *new std::string;  // never destroyed: the handler reads it
  alarm(0);
  if (seconds == 0) return;
  kept = message;
  limit_message = kept.data();
  limit_message_size = kept.size();
  Catch(SIGALRM, EndAtLimit);
  Block(SIG_UNBLOCK, SIGALRM);
  alarm(seconds);
}

void CatchInterrupts() {
  Block(SIG_BLOCK, SIGINT);
  Catch(SIGINT, RequestInterruption);
  Catch(SIGALRM, TellStillRunning);
  Block(SIG_UNBLOCK, SIGALRM);
}

InterruptibleCommand::InterruptibleCommand() {
  interruption_requested = 0;
  command_is_running = 1;
  Block(SIG_UNBLOCK, SIGINT);
}

InterruptibleCommand::~InterruptibleCommand() {
  Block(SIG_BLOCK, SIGINT);
  command_is_running = 0;
  interruption_requested = 0;
  alarm(0);
}

bool WaitForInput(int file) {
  // The signal is delivered during the call only: none is lost before it.
  sigset_t without;
  sigprocmask(SIG_SETMASK, nullptr, &without);
  sigdelset(&without, SIGINT);
  pollfd wanted = {};
  wanted.fd = file;
  wanted.events = POLLIN;
  for (;;) {
    const int ready = ppoll(&wanted, 1, nullptr, &without);
    if (interruption_requested != 0) {
      interruption_requested = 0;
      return false;
    }
    if (ready >= 0 || errno != EINTR) return true;
  }
}

}  // namespace mirolta::host
