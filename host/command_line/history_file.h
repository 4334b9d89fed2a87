// The file that keeps what was typed at the prompt.
#pragma once

#include <string>
#include <vector>

namespace mirolta::host {

// HistoryPath returns the path of the file: $MIROLTA_HISTORY, else mirolta/history in
// $XDG_STATE_HOME or ~/.local/state; "" if there is to be none.
std::string HistoryPath();

// ReadHistory reads the last lines of the file, oldest first; none if it does not exist or is no
// regular file.
// Errors: false if the file cannot be read; std::bad_alloc.
bool ReadHistory(const std::string& path, std::vector<std::string>* lines);

// AddToHistory adds lines to the file, which only its owner may read; a line that repeats the one
// before it is left out. Lines that other processes added stay; the file is replaced as a whole and
// never half written.
// Errors: false if the file cannot be read or written, which leaves it as it was; std::bad_alloc.
bool AddToHistory(const std::string& path, const std::vector<std::string>& added);

}  // namespace mirolta::host
