#include "command_line/options.h"

#include <strings.h>

#include <charconv>
#include <iterator>
#include <string_view>

namespace mirolta::host {
namespace {

// What an option does. `value` is its argument, "" if it has none.
// Errors: a text that says what is wrong with the argument, else null.
using Apply = const char* (*)(CommandLine* line, std::string_view value);

struct Option {
  const char* name;
  const char* other_name;  // or null
  const char* argument;    // or null
  const char* help;
  Apply apply;
  // The command of an option that is one; kRun for the others.
  Action action = Action::kRun;
};

const char* SetOperand(CommandLine* line, std::string_view value) {
  line->operand = value;
  return value.empty() ? "needs a name" : nullptr;
}

const char* SetNothing(CommandLine*, std::string_view) {
  return nullptr;
}

// One row an option; --help prints the rows in this order.
constexpr Option kOptions[] = {
    {"-e", "--eval", "CODE", "run CODE; the words after the options are its arguments",
     [](CommandLine* line, std::string_view value) -> const char* {
       if (line->has_code) return "is given twice";
       line->has_code = true;
       line->code = value;
       return nullptr;
     }},
    {"-i", "--interactive", nullptr, "prompt for commands, after the script if there is one",
     [](CommandLine* line, std::string_view) -> const char* {
       line->has_prompt = true;
       return nullptr;
     }},
    {"--charset", nullptr, "NAME",
     "the character set of the script if its first bytes do not tell, such as windows-1252",
     [](CommandLine* line, std::string_view value) -> const char* {
       line->charset = value;
       return value.empty() ? "needs the name of a character set" : nullptr;
     }},
    {"--check", nullptr, nullptr, "test every algorithm with known answers", SetNothing,
     Action::kCheck},
    {"--register", nullptr, "MODULE", "register the classes of a module", SetOperand,
     Action::kRegister},
    {"--unregister", nullptr, "MODULE", "remove the registration of a module", SetOperand,
     Action::kUnregister},
    {"--system", nullptr, nullptr, "with these two: for all users of the machine",
     [](CommandLine* line, std::string_view) -> const char* {
       line->is_for_system = true;
       return nullptr;
     }},
    {"--list", nullptr, nullptr, "list the classes that scripts can create", SetNothing,
     Action::kList},
    {"--describe", nullptr, "CLASS", "describe a class and its members, by its ProgID", SetOperand,
     Action::kDescribe},
    {"--verbose", nullptr, nullptr, "report from which module each object comes",
     [](CommandLine* line, std::string_view) -> const char* {
       line->is_verbose = true;
       return nullptr;
     }},
    {"--version", nullptr, nullptr, "print the version", SetNothing, Action::kVersion},
    {"-h", "--help", nullptr, "print this text", SetNothing, Action::kHelp},
};

const char* SetTimeLimit(CommandLine* line, std::string_view value) {
  unsigned seconds = 0;
  const auto parsed = std::from_chars(value.data(), value.data() + value.size(), seconds);
  if (parsed.ec != std::errc() || parsed.ptr != value.data() + value.size() || seconds > 32767) {
    return "needs a number of seconds from 0 to 32767";
  }
  line->time_limit = seconds;
  return nullptr;
}

bool IsSameWord(std::string_view a, const char* b) {
  return strcasecmp(std::string(a).c_str(), b) == 0;
}

const char* CheckEngine(CommandLine*, std::string_view value) {
  for (const char* name : {"jscript", "javascript", "ecmascript"}) {
    if (IsSameWord(value, name)) return nullptr;
  }
  return "names a script engine that mirolta-host does not have; it has JScript";
}

const char* CheckHost(CommandLine*, std::string_view value) {
  const bool is_known = IsSameWord(value, "cscript") || IsSameWord(value, "wscript");
  return is_known ? nullptr : "needs cscript or wscript";
}

const char* NeedText(CommandLine*, std::string_view value) {
  return value.empty() ? "needs a name" : nullptr;
}

// The options of the platform's host. Names ignore case; one that ends with a colon has an argument.
constexpr Option kSlashOptions[] = {
    {"//B", nullptr, nullptr, "batch mode: no error reports, and WScript.Echo prints nothing",
     [](CommandLine* line, std::string_view) -> const char* {
       line->is_batch = true;
       return nullptr;
     }},
    {"//I", nullptr, nullptr, "the opposite, the default",
     [](CommandLine* line, std::string_view) -> const char* {
       line->is_batch = false;
       return nullptr;
     }},
    {"//T:", nullptr, "SECONDS", "end the script after this time", SetTimeLimit},
    {"//E:", nullptr, "ENGINE", "the script's language, which is jscript", CheckEngine},
    {"//H:", nullptr, "HOST", "no effect", CheckHost},
    {"//Job:", nullptr, "NAME", "no effect", NeedText},
    {"//nologo", nullptr, nullptr, "no effect: there is no banner", SetNothing},
    {"//logo", nullptr, nullptr, "no effect", SetNothing},
    {"//D", nullptr, nullptr, "no effect: there is no debugger", SetNothing},
    {"//X", nullptr, nullptr, "no effect", SetNothing},
    {"//S", nullptr, nullptr, "no effect: options are not saved", SetNothing},
    {"//U", nullptr, nullptr, "no effect: output is UTF-8", SetNothing},
    {"//?", nullptr, nullptr, "print this text", SetNothing, Action::kHelp},
};

bool IsNamed(const Option& option, std::string_view name) {
  return name == option.name || (option.other_name != nullptr && name == option.other_name);
}

// The words, and what they have told so far.
class Parser {
 public:
  Parser(const std::vector<std::string>& words, CommandLine* line, std::string* problem)
      : words_(words), line_(*line), problem_(*problem) {}

  bool Parse() {
    for (; at_ < words_.size(); ++at_) {
      if (!ParseWord()) return false;
    }
    return Check();
  }

 private:
  bool Refuse(std::string_view word, std::string_view why) {
    problem_ = std::string(word) + " " + std::string(why);
    return false;
  }

  bool ParseWord() {
    const std::string& word = words_[at_];
    if (!is_literal_ && word.starts_with("//")) return ParseSlashOption(word);
    if (!is_literal_ && !has_operand_ && word.size() > 1 && word[0] == '-') {
      if (word != "--") return ParseOption(word);
      is_literal_ = true;
      return true;
    }
    return TakeOperand(word);
  }

  bool TakeOperand(const std::string& word) {
    if (line_.action != Action::kRun) {
      operand_too_many_ = operand_too_many_.empty() ? word : operand_too_many_;
    } else if (has_operand_ || line_.has_code) {
      line_.arguments.push_back(word);
    } else {
      line_.has_script = true;
      line_.script = word;
    }
    has_operand_ = true;
    return true;
  }

  bool ParseOption(const std::string& word) {
    const size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
    const std::string name = word.substr(0, equals);
    for (const Option& option : kOptions) {
      if (!IsNamed(option, name)) continue;
      if (option.argument == nullptr) {
        if (equals != std::string::npos) return Refuse(name, "takes no argument");
        return Do(option, name, "");
      }
      if (equals != std::string::npos) return Do(option, name, word.substr(equals + 1));
      // --register --system MODULE
      if (option.action != Action::kRun && at_ + 2 < words_.size() &&
          words_[at_ + 1] == "--system") {
        line_.is_for_system = true;
        ++at_;
      }
      if (at_ + 1 >= words_.size()) {
        return Refuse(name, std::string("needs an argument: ") + option.argument);
      }
      return Do(option, name, words_[++at_]);
    }
    return Refuse("unknown option", name);
  }

  bool ParseSlashOption(const std::string& word) {
    const size_t colon = word.find(':');
    const size_t name_length = colon == std::string::npos ? word.size() : colon + 1;
    const std::string_view name = std::string_view(word).substr(0, name_length);
    for (const Option& option : kSlashOptions) {
      if (IsSameWord(name, option.name)) return Do(option, word, word.substr(name_length));
      if (option.argument != nullptr && IsSameWord(word + ":", option.name)) {
        return Refuse(word, std::string("needs an argument: ") + option.name + option.argument);
      }
    }
    constexpr char kAdvice[] = "; with -- before the script's name it is an argument";
    return Refuse("unknown option", word + (line_.has_script ? kAdvice : ""));
  }

  bool Do(const Option& option, std::string_view word, std::string_view value) {
    if (const char* why = option.apply(&line_, value)) return Refuse(word, why);
    if (option.action == Action::kRun || line_.action == Action::kHelp) return true;
    const bool is_other = line_.action != Action::kRun && line_.action != option.action;
    if (is_other && option.action != Action::kHelp) {
      return Refuse(word, std::string("cannot be combined with ") + line_.action_name);
    }
    if (option.argument != nullptr && line_.action == option.action) {
      return Refuse(word, "is given twice");
    }
    line_.action = option.action;
    line_.action_name = option.name;
    return true;
  }

  bool Check() {
    const bool registers = line_.action == Action::kRegister || line_.action == Action::kUnregister;
    if (line_.action == Action::kHelp) return true;
    if (line_.is_for_system && !registers) {
      return Refuse("--system", "needs --register or --unregister");
    }
    if (line_.action == Action::kRun) return CheckRun();
    if (line_.has_script) operand_too_many_ = line_.script;
    if (!operand_too_many_.empty()) {
      return Refuse(operand_too_many_, std::string("is too much after ") + line_.action_name);
    }
    if (line_.has_code || line_.has_prompt) {
      return Refuse(line_.action_name,
                    line_.has_code ? "cannot be combined with -e" : "cannot be combined with -i");
    }
    return true;
  }

  bool CheckRun() {
    if (line_.has_script && line_.script.empty()) {
      return Refuse("the name of the script", "is empty");
    }
    if (line_.has_code && !line_.charset.empty()) {
      return Refuse("--charset", "cannot be combined with -e");
    }
    if (!line_.has_prompt) return true;
    if (line_.script == "-") return Refuse("-", "and -i both read standard input");
    if (line_.time_limit > 0) return Refuse("//T", "cannot be combined with -i");
    return true;
  }

  const std::vector<std::string>& words_;
  CommandLine& line_;
  std::string& problem_;
  size_t at_ = 0;
  bool is_literal_ = false;  // after --
  bool has_operand_ = false;
  std::string operand_too_many_;
};

constexpr char kUsage[] =
    "Usage: mirolta-host [OPTION...] SCRIPT.js [ARGUMENT...]\n"
    "       mirolta-host [OPTION...] -e CODE [ARGUMENT...]\n"
    "       mirolta-host [OPTION...] - [ARGUMENT...]\n"
    "       mirolta-host [OPTION...] -i [SCRIPT.js [ARGUMENT...]]\n"
    "\n"
    "Runs a script like the platform's script host, with ActiveXObject, WScript and VBArray.\n"
    "The script - is read from standard input. Without a script mirolta-host prompts for commands\n"
    "if standard input is a terminal, and reads the script from there if not.\n"
    "Classes are looked up in the registries of the user and of the system, then in the host "
    "itself;\n"
    "if the module is not registered, the host uses the one that was installed with it.\n"
    "\n";

constexpr char kSlashUsage[] =
    "\n"
    "Options of the platform's host, in upper or lower case, before or after the script's name; "
    "they\n"
    "are no arguments of the script. -- ends all options.\n"
    "\n";

constexpr char kStatuses[] =
    "\n"
    "Exit status: 0 or the argument of WScript.Quit; 1 for an uncaught error, a script that cannot "
    "be\n"
    "read or compiled, output that cannot be written, a time limit, or a command that failed; 2 "
    "for a\n"
    "wrong command line; 130 after Ctrl-C.\n"
    "\n"
    "Registries, in the order of look-up: ~/.local/share/mirolta/registry.reg (XDG_DATA_HOME), "
    "which\n"
    "--register writes; /etc/mirolta/registry.reg, which --register --system writes; and\n"
    "mirolta/registry.reg in /usr/local/share and /usr/share (XDG_DATA_DIRS).\n"
    "\n"
    "Environment: MIROLTA_REGISTRY names one registry file that replaces all of them,\n"
    "MIROLTA_SYSTEM_REGISTRY the one for all users, MIROLTA_HISTORY the file that keeps what was "
    "typed\n"
    "at the prompt (none if it is empty), instead of ~/.local/state/mirolta/history "
    "(XDG_STATE_HOME).\n";

std::string HelpRow(const Option& option) {
  constexpr size_t kColumn = 24;
  std::string row = std::string("  ") + option.name;
  if (option.other_name != nullptr) row += std::string(", ") + option.other_name;
  const bool has_colon = row.back() == ':';
  if (option.argument != nullptr) row += std::string(has_colon ? "" : " ") + option.argument;
  row += row.size() < kColumn ? std::string(kColumn - row.size(), ' ') : "  ";
  return row + option.help + '\n';
}

}  // namespace

const char kVersion[] = MIROLTA_VERSION;

bool ParseCommandLine(const std::vector<std::string>& words, CommandLine* line,
                      std::string* problem) {
  return Parser(words, line, problem).Parse();
}

std::string HelpText() {
  std::string text = kUsage;
  for (const Option& option : kOptions) text += HelpRow(option);
  text += kSlashUsage;
  for (const Option& option : kSlashOptions) text += HelpRow(option);
  return text + kStatuses;
}

}  // namespace mirolta::host
