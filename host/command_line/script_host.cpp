// mirolta-host: runs a script that drives automation objects, or registers a module.
#include <signal.h>
#include <stdio.h>
#include <string.h>

#include <new>
#include <string>
#include <vector>

#include "command_line/module_registration.h"
#include "engine/script_engine.h"
#include "platform.h"

namespace {

constexpr int kUsageError = 2;

constexpr char kUsage[] =
    "Usage: mirolta-host SCRIPT.js [ARGUMENTS...]\n"
    "       mirolta-host --register MODULE\n"
    "       mirolta-host --unregister MODULE\n"
    "       mirolta-host --help\n"
    "\n"
    "Runs a script in the manner of the platform's script host: ActiveXObject, WScript, VBArray.\n"
    "Where nothing is registered, the module ../lib/libMirolta.so beside the host is used.\n"
    "\n"
    "Exit status: 0, the script's WScript.Quit code, 1 for an uncaught error or a script that\n"
    "cannot be read or compiled, or a module that was not wholly registered or unregistered, 2 for\n"
    "a wrong command line.\n"
    "MIROLTA_REGISTRY names the registry file.\n";

int ChangeRegistration(const char* module, bool registers) {
  std::string problem;
  if (FAILED(mirolta::host::CallRegistration(module, registers, &problem))) {
    fprintf(stderr, "mirolta-host: %s: %s\n", module, problem.c_str());
    return 1;
  }
  printf("%s: %s\n", module, registers ? "registered" : "unregistered");
  return 0;
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
    return mirolta::host::RunScript(words[2], std::vector<std::string>(words + 3, words + count));
  } else if (first[0] != '-') {
    return mirolta::host::RunScript(first, std::vector<std::string>(words + 2, words + count));
  }
  fputs(kUsage, stderr);
  return kUsageError;
}

}  // namespace

int main(int count, char** words) {
  // A reader that goes away is an error of the script that writes, not the host's end.
  signal(SIGPIPE, SIG_IGN);
  if (count < 2) {
    fputs(kUsage, stderr);
    return kUsageError;
  }
  // A file at the process's size limit is a failed write like that of a full disk.
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
