// Child processes of tests.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

namespace mirolta::test {

// Fork runs work in a child, whose exit status is 0 if work returns true.
template <typename Work>
pid_t Fork(Work work) {
  const pid_t child = fork();
  if (child == 0) _exit(work() ? 0 : 1);
  return child;
}

// Waits for the end of a child; its status as waitpid reports it.
inline int StatusOf(pid_t child) {
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}
inline bool Succeeds(pid_t child) {
  return StatusOf(child) == 0;
}

}  // namespace mirolta::test
