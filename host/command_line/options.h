// The command line of mirolta-host.
#pragma once

#include <string>
#include <vector>

namespace mirolta::host {

enum class Action {
  kRun,  // a script, code or the prompt
  kHelp,
  kVersion,
  kCheck,
  kRegister,
  kUnregister,
  kList,
  kDescribe,
};

struct CommandLine {
  Action action = Action::kRun;
  const char* action_name = "";  // the option that chose it
  std::string operand;           // of the actions that have one

  bool has_code = false;  // -e
  std::string code;
  bool has_script = false;
  std::string script;  // a path, "-" for standard input
  std::vector<std::string> arguments;

  bool has_prompt = false;     // -i
  bool is_batch = false;       // //B
  bool is_for_system = false;  // --system
  bool is_verbose = false;     // --verbose
  std::string charset;         // "" for the one that the script's first bytes tell
  unsigned time_limit = 0;     // seconds, 0 for none
};

// ParseCommandLine reads the words of a command line without the program's name.
// Errors: false with a message in *problem that names the word that is wrong.
bool ParseCommandLine(const std::vector<std::string>& words, CommandLine* line,
                      std::string* problem);

// The host's version.
extern const char kVersion[];

// HelpText returns the text of --help.
std::string HelpText();

}  // namespace mirolta::host
