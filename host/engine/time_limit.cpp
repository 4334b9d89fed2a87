#include "engine/time_limit.h"

#include <stdio.h>

#include <string>

#include "engine/interruption.h"

namespace mirolta::host {

HRESULT SetTimeLimit(ScriptContext* context, unsigned seconds) {
  if (context->is_interactive) return E_NOTIMPL;
  const std::string message = "mirolta-host: " + context->script_path +
                              " was ended: it ran longer than " + std::to_string(seconds) +
                              (seconds == 1 ? " second\n" : " seconds\n");
  if (seconds != 0 && context->time_limit == 0) {
    // What the script prints before the limit is not lost.
    static_cast<void>(fflush(stdout));
    static_cast<void>(setvbuf(stdout, nullptr, _IONBF, 0));
  }
  LimitTime(seconds, context->is_batch ? "" : message);
  context->time_limit = seconds;
  return S_OK;
}

}  // namespace mirolta::host
