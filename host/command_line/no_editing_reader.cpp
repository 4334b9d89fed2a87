// A host that is built without libedit.
#include "command_line/line_reader.h"

namespace mirolta::host {

std::unique_ptr<LineReader> MakeEditingReader(Completer) {
  return nullptr;
}

bool CanEditLines() {
  return false;
}

}  // namespace mirolta::host
