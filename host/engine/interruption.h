// Interruption of scripts: the time limit of a script, and Ctrl-C at the prompt.
//
// Ctrl-C needs nothing of this in a script that runs without the prompt: SIGINT ends the process at
// once, whatever it does, and removes temporary files (temporary_file.h).
//
// The prompt is to go on. The engine has no hook in loops: it can stop a command only where it
// allocates memory, calls a native function, sleeps or waits for input. A command that does none of
// these, and a long call of an automation object, run on; the user is told so after a second, and
// the next Ctrl-C ends the process.
#pragma once

#include <signal.h>

#include <string>

namespace mirolta::host {

// LimitTime ends the process with status 1 and `message` on standard error when it has run for
// `seconds` more, whatever it does; 0 removes the limit. Temporary files are removed.
// Errors: std::bad_alloc.
void LimitTime(unsigned seconds, const std::string& message);

// CatchInterrupts keeps SIGINT from ending the process, for the prompt. The signal is blocked
// outside commands and reads of the terminal.
void CatchInterrupts();

// An interruptible command. Its end forgets an interruption.
class InterruptibleCommand {
 public:
  InterruptibleCommand();
  InterruptibleCommand(const InterruptibleCommand&) = delete;
  InterruptibleCommand& operator=(const InterruptibleCommand&) = delete;
  ~InterruptibleCommand();
};

extern volatile sig_atomic_t interruption_requested;
// IsInterrupted returns true while a command is to end. Native functions then throw E_ABORT.
inline bool IsInterrupted() {
  return interruption_requested != 0;
}

// WaitForInput waits until a read of `file` does not block; false if SIGINT came first, which is
// then forgotten.
bool WaitForInput(int file);

}  // namespace mirolta::host
