#include "command_line/terminal_modes.h"

#include <errno.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include "files/temporary_file.h"

namespace mirolta::host {
namespace {

termios first_modes = {};

// In the background the terminal has the modes of another process.
bool IsInForeground() {
  const pid_t group = tcgetpgrp(STDIN_FILENO);
  return group < 0 || group == getpgrp();
}

void EndWithFirstModes(int number) {
  RemoveTemporaryFiles();
  if (IsInForeground()) tcsetattr(STDIN_FILENO, TCSANOW, &first_modes);
  // SA_RESETHAND restored the default action; the signal stays pending until this handler returns.
  raise(number);
}

void StopWithFirstModes(int) {
  const int error = errno;
  termios modes = {};
  const bool is_known = tcgetattr(STDIN_FILENO, &modes) == 0;
  if (IsInForeground()) tcsetattr(STDIN_FILENO, TCSANOW, &first_modes);
  kill(getpid(), SIGSTOP);
  // Continued in the background, tcsetattr stops the process again, by SIGTTOU.
  sigset_t background;
  sigemptyset(&background);
  sigaddset(&background, SIGTTOU);
  sigprocmask(SIG_UNBLOCK, &background, nullptr);
  if (is_known) tcsetattr(STDIN_FILENO, TCSANOW, &modes);
  errno = error;
}

void Catch(int number, void (*handler)(int), int flags) {
  struct sigaction now = {};
  if (sigaction(number, nullptr, &now) != 0 || now.sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigfillset(&action.sa_mask);
  sigaction(number, &action, nullptr);
}

}  // namespace

void KeepTerminalModes() {
  if (tcgetattr(STDIN_FILENO, &first_modes) != 0) return;
  for (const int number : {SIGTERM, SIGHUP, SIGQUIT}) {
    Catch(number, EndWithFirstModes, static_cast<int>(SA_RESETHAND));
  }
  Catch(SIGTSTP, StopWithFirstModes, SA_RESTART);
}

}  // namespace mirolta::host
