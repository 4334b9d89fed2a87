// mirolta-host: runs a script that drives automation objects, or registers a module.
#include <signal.h>
#include <stdio.h>
#include <string.h>

#include <new>
#include <string>
#include <vector>

#include "command_line/module_registration.h"
#include "engine/script_engine.h"
#include "files/standard_descriptors.h"
#include "platform.h"

namespace {

constexpr int kUsageError = 2;

constexpr char kUsage[] =
    "Usage: mirolta-host SCRIPT.js [ARGUMENTS...]\n"
    "       mirolta-host --register MODULE\n"
    "       mirolta-host --unregister MODULE\n"
    "       mirolta-host --help\n"
    "\n"
    "Runs a script like the platform's script host, with ActiveXObject, WScript and VBArray.\n"
    "If the module is not registered, the host uses ../lib/libMirolta.so relative to itself.\n"
    "\n"
    "Exit status: 0 or the argument of WScript.Quit; 1 for an uncaught error, a script that\n"
    "cannot be read or compiled, output that cannot be written, or a failed registration; 2 for a\n"
    "wrong command line.\n"
    "The environment variable MIROLTA_REGISTRY names the registry file.\n";

int ChangeRegistration(const char* module, bool registers) {
  std::string problem;
  if (FAILED(mirolta::host::CallRegistration(module, registers, &problem))) {
    fprintf(stderr, "mirolta-host: %s: %s\n", module, problem.c_str());
    return 1;
  }
  printf("%s: %s\n", module, registers ? "registered" : "unregistered");
  return 0;
}

int RunFile(const char* path, const std::vector<std::string>& arguments) {
  mirolta::host::ScriptText script;
  std::string problem;
  if (!mirolta::host::LoadScript(path, {}, &script, &problem)) {
    fprintf(stderr, "mirolta-host: %s\n", problem.c_str());
    return 1;
  }
  return mirolta::host::RunScript(script, arguments);
}

int RunCommand(int count, char** words) {
  const char* first = words[1];
  const bool registers = strcmp(first, "--register") == 0;
  if (registers || strcmp(first, "--unregister") == 0) {
    if (count == 3) return ChangeRegistration(words[2], registers);
  } else if (strcmp(first, "--help") == 0 || strcmp(first, "-h") == 0) {
    fputs(kUsage, stdout);
    return 0;
  } else if (strcmp(first, "--") == 0 && count > 2) {
    return RunFile(words[2], std::vector<std::string>(words + 3, words + count));
  } else if (first[0] != '-') {
    return RunFile(first, std::vector<std::string>(words + 2, words + count));
  }
  fputs(kUsage, stderr);
  return kUsageError;
}

}  // namespace

int main(int count, char** words) {
  mirolta::host::HoldStandardDescriptors();
  // Writing to a closed pipe is a script error and must not end the process.
  signal(SIGPIPE, SIG_IGN);
  if (count < 2) {
    fputs(kUsage, stderr);
    return kUsageError;
  }
  // Exceeding the file size limit is a failed write, as on a full disk.
  signal(SIGXFSZ, SIG_IGN);
  const HRESULT started = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  if (FAILED(started)) {
    fprintf(stderr, "mirolta-host: automation cannot be started (0x%08X)\n",
            static_cast<unsigned>(started));
    return 1;
  }
  int status = 1;
  try {
    status = RunCommand(count, words);
  } catch (const std::bad_alloc&) {
    fputs("mirolta-host: not enough memory\n", stderr);
  }
  CoUninitialize();
  return status;
}
