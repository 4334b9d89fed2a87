#include "command_line/self_test.h"

#include <stdio.h>

#include <string>

#include "engine/script_engine.h"
#include "source/script_source.h"

namespace mirolta::host {

int RunSelfTest() {
  ScriptText script;
  std::string problem;
  if (!ScriptFromBytes("--check", kSelfTestScript, {}, &script, &problem)) {
    fprintf(stderr, "mirolta-host: %s\n", problem.c_str());
    return 1;
  }
  return RunScript(script, {});
}

}  // namespace mirolta::host
