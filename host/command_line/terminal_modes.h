// The modes of the terminal while lines are edited.
#pragma once

namespace mirolta::host {

// KeepTerminalModes has the present modes restored when SIGTERM, SIGHUP or SIGQUIT ends the process,
// which also removes temporary files, and while SIGTSTP stops it. Call it once, before a line is
// edited. Signals that the process ignores stay ignored.
void KeepTerminalModes();

}  // namespace mirolta::host
