#include "engine/time_limit.h"

namespace mirolta::host {

void SetTimeLimit(ScriptContext* context, unsigned seconds) {
  context->time_limit = seconds;
}

}  // namespace mirolta::host
