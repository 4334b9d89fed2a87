// mirolta-host: runs scripts that drive automation objects, and registers modules.
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <new>
#include <string>
#include <vector>

#include "classes/object_creation.h"
#include "command_line/class_description.h"
#include "command_line/class_list.h"
#include "command_line/line_reader.h"
#include "command_line/module_registration.h"
#include "command_line/options.h"
#include "command_line/prompt.h"
#include "command_line/self_test.h"
#include "engine/interruption.h"
#include "engine/script_engine.h"
#include "engine/status_text.h"
#include "files/standard_descriptors.h"
#include "objects/wscript_object.h"
#include "platform.h"

namespace mirolta::host {
namespace {

constexpr int kUsageError = 2;

int PrintHelp() {
  fputs(HelpText().c_str(), stdout);
  return 0;
}

int PrintVersion() {
  printf("mirolta-host %s (Duktape %ld.%ld.%ld%s)\n", kVersion, DUK_VERSION / 10000,
         DUK_VERSION / 100 % 100, DUK_VERSION % 100, CanEditLines() ? ", libedit" : "");
  return 0;
}

int ChangeRegistration(const CommandLine& line) {
  const bool registers = line.action == Action::kRegister;
  const auto scope = line.is_for_system ? RegistryScope::kSystem : RegistryScope::kUser;
  std::string problem;
  if (FAILED(CallRegistration(line.operand, registers, &problem, scope))) {
    fprintf(stderr, "mirolta-host: %s: %s\n", line.operand.c_str(), problem.c_str());
    return 1;
  }
  printf("%s: %s\n", line.operand.c_str(), registers ? "registered" : "unregistered");
  return 0;
}

// Loads what the command line says; reports a failure.
bool Load(const CommandLine& line, ScriptText* script) {
  SourceOptions options;
  options.charset = line.charset;
  std::string problem;
  bool is_loaded = false;
  if (line.has_code) {
    is_loaded = ScriptFromBytes("-e", line.code, {}, script, &problem);
  } else if (line.has_script && line.script != "-") {
    is_loaded = LoadScript(line.script, options, script, &problem);
  } else {
    is_loaded = ScriptFromDescriptor("standard input", STDIN_FILENO, options, script, &problem);
  }
  if (!is_loaded) fprintf(stderr, "mirolta-host: %s\n", problem.c_str());
  return is_loaded;
}

int Run(const CommandLine& line) {
  const bool names_script = line.has_code || line.has_script;
  RunOptions options;
  options.arguments = line.arguments;
  options.is_batch = line.is_batch;
  options.time_limit = line.time_limit;
  ScriptText script;
  if (line.has_prompt || (!names_script && isatty(STDIN_FILENO) != 0)) {
    options.prepare = InstallPrompt;
    options.follow = RunPrompt;
    script.name = kPromptName;
    if (!names_script) return RunScript(script, options);
  }
  if (!Load(line, &script)) return 1;
  return RunScript(script, options);
}

int RunCommand(const CommandLine& line) {
  ReportModules(line.is_verbose);
  switch (line.action) {
    case Action::kHelp:
      return PrintHelp();
    case Action::kVersion:
      return PrintVersion();
    case Action::kCheck:
      return RunSelfTest();
    case Action::kRegister:
    case Action::kUnregister:
      return ChangeRegistration(line);
    case Action::kList:
      return ListClasses(stdout);
    case Action::kDescribe:
      return DescribeClass(line.operand);
    case Action::kRun:
      break;
  }
  return Run(line);
}

int RunWords(const std::vector<std::string>& words) {
  CommandLine line;
  std::string problem;
  if (!ParseCommandLine(words, &line, &problem)) {
    fprintf(stderr, "mirolta-host: %s\nTry mirolta-host --help.\n", problem.c_str());
    return kUsageError;
  }
  const HRESULT started = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  if (FAILED(started)) {
    fprintf(stderr, "mirolta-host: automation cannot be started: %s\n",
            DescribeStatus(started).c_str());
    return 1;
  }
  const int status = RunCommand(line);
  CoUninitialize();
  // Scripts have reported it.
  const bool is_script = line.action == Action::kRun || line.action == Action::kCheck;
  const bool is_written = is_script || FlushOutput();
  return is_written || status != 0 ? status : 1;
}

}  // namespace
}  // namespace mirolta::host

int main(int count, char** words) {
  mirolta::host::HoldStandardDescriptors();
  // Writing to a closed pipe is a script error and must not end the process.
  signal(SIGPIPE, SIG_IGN);
  // Exceeding the file size limit is a failed write, as on a full disk.
  signal(SIGXFSZ, SIG_IGN);
  try {
    return mirolta::host::RunWords(std::vector<std::string>(words + 1, words + count));
  } catch (const std::bad_alloc&) {
    fputs("mirolta-host: not enough memory\n", stderr);
    return 1;
  }
}
