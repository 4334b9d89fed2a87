// The command line.
#include "command_line/options.h"

#include <gtest/gtest.h>

namespace mirolta::host {
namespace {

CommandLine Parsed(const std::vector<std::string>& words) {
  CommandLine line;
  std::string problem;
  EXPECT_TRUE(ParseCommandLine(words, &line, &problem)) << problem;
  return line;
}

std::string Problem(const std::vector<std::string>& words) {
  CommandLine line;
  std::string problem;
  EXPECT_FALSE(ParseCommandLine(words, &line, &problem));
  return problem;
}

using Words = std::vector<std::string>;

TEST(Options, ScriptAndItsArguments) {
  const CommandLine line = Parsed({"a.js", "one", "--help", "-e", "--"});
  EXPECT_EQ(line.script, "a.js");
  EXPECT_EQ(line.arguments, (Words{"one", "--help", "-e", "--"}));
  EXPECT_EQ(line.action, Action::kRun);
  EXPECT_FALSE(line.has_code || line.has_prompt || line.is_batch);
  EXPECT_FALSE(Parsed({}).has_script);
}

TEST(Options, CodeAndItsArguments) {
  const CommandLine line = Parsed({"-e", "-1", "one", "-i"});
  EXPECT_TRUE(line.has_code);
  EXPECT_EQ(line.code, "-1");
  EXPECT_FALSE(line.has_script);
  EXPECT_FALSE(line.has_prompt);
  EXPECT_EQ(line.arguments, (Words{"one", "-i"}));
  EXPECT_EQ(Parsed({"--eval=1 == 2"}).code, "1 == 2");
  EXPECT_TRUE(Parsed({"-e", "1", "-i"}).has_prompt);
}

TEST(Options, DashIsStandardInput) {
  const CommandLine line = Parsed({"-", "one"});
  EXPECT_TRUE(line.has_script);
  EXPECT_EQ(line.script, "-");
  EXPECT_EQ(line.arguments, Words{"one"});
}

TEST(Options, DoubleDashEndsOptions) {
  const CommandLine line = Parsed({"-i", "--", "-x.js", "//B", "--"});
  EXPECT_TRUE(line.has_prompt);
  EXPECT_EQ(line.script, "-x.js");
  EXPECT_EQ(line.arguments, (Words{"//B", "--"}));
  EXPECT_FALSE(line.is_batch);
}

TEST(Options, Values) {
  EXPECT_EQ(Parsed({"--charset", "koi8-r", "a.js"}).charset, "koi8-r");
  EXPECT_EQ(Parsed({"--charset=koi8-r", "a.js"}).charset, "koi8-r");
  const CommandLine line = Parsed({"--system", "--register", "x.so"});
  EXPECT_EQ(line.action, Action::kRegister);
  EXPECT_EQ(line.operand, "x.so");
  EXPECT_TRUE(line.is_for_system);
  const CommandLine other = Parsed({"--unregister", "--system", "y.so"});
  EXPECT_EQ(other.action, Action::kUnregister);
  EXPECT_EQ(other.operand, "y.so");
  EXPECT_TRUE(other.is_for_system);
  EXPECT_EQ(Parsed({"--register", "--system"}).operand, "--system");  // a file's name
  EXPECT_EQ(Parsed({"--list"}).action, Action::kList);
  EXPECT_EQ(Parsed({"--describe", "A.B"}).operand, "A.B");
  EXPECT_TRUE(Parsed({"--verbose", "a.js"}).is_verbose);
  EXPECT_FALSE(Parsed({"a.js"}).is_verbose);
  EXPECT_EQ(Parsed({"--unregister", "x.so"}).action, Action::kUnregister);
  EXPECT_EQ(Parsed({"--version"}).action, Action::kVersion);
  EXPECT_EQ(Parsed({"--check"}).action, Action::kCheck);
  EXPECT_EQ(Parsed({"--list"}).action, Action::kList);
  EXPECT_EQ(Parsed({"--describe", "A.B"}).action, Action::kDescribe);
  EXPECT_EQ(Parsed({"--describe=A.B"}).operand, "A.B");
  EXPECT_TRUE(Parsed({"--verbose", "a.js"}).is_verbose);
  EXPECT_EQ(Parsed({"--help"}).action, Action::kHelp);
  EXPECT_EQ(Parsed({"-h"}).action, Action::kHelp);
}

TEST(Options, HelpWins) {
  EXPECT_EQ(Parsed({"--version", "--help"}).action, Action::kHelp);
  EXPECT_EQ(Parsed({"--help", "--version"}).action, Action::kHelp);
  EXPECT_EQ(Parsed({"a.js", "//?"}).action, Action::kHelp);
}

TEST(Options, PlatformOptionsStandAnywhere) {
  const CommandLine line =
      Parsed({"//NoLogo", "//t:15", "a.js", "one", "//b", "two", "//e:JScript"});
  EXPECT_EQ(line.script, "a.js");
  EXPECT_EQ(line.arguments, (Words{"one", "two"}));
  EXPECT_EQ(line.time_limit, 15u);
  EXPECT_TRUE(line.is_batch);
  EXPECT_FALSE(Parsed({"//B", "a.js", "//I"}).is_batch);
}

TEST(Options, EveryPlatformOptionIsKnown) {
  for (const char* word :
       {"//nologo", "//logo", "//B", "//I", "//T:1", "//E:javascript", "//E:ECMAScript", "//D",
        "//X", "//S", "//U", "//H:cscript", "//H:wscript", "//Job:x"}) {
    const CommandLine line = Parsed({word, "a.js"});
    EXPECT_EQ(line.script, "a.js") << word;
    EXPECT_TRUE(line.arguments.empty()) << word;
  }
}

TEST(Options, HelpHasEveryOption) {
  const std::string text = HelpText();
  for (const char* word : {"-e, --eval CODE",
                           "-i, --interactive",
                           "--charset NAME",
                           "--register MODULE",
                           "--unregister MODULE",
                           "--system",
                           "--version",
                           "-h, --help",
                           "//T:SECONDS",
                           "//E:ENGINE",
                           "//H:HOST",
                           "//Job:NAME",
                           "//nologo",
                           "//logo",
                           "//B ",
                           "//I ",
                           "//D ",
                           "//X ",
                           "//S ",
                           "//U ",
                           "//? "}) {
    EXPECT_NE(text.find("  " + std::string(word)), std::string::npos) << word;
  }
}

struct Wrong {
  Words words;
  const char* problem;
};
TEST(Options, ProblemsNameTheWord) {
  const Wrong rows[] = {
      {{"--nonsense"}, "unknown option --nonsense"},
      {{"-x", "a.js"}, "unknown option -x"},
      {{"--nonsense=1"}, "unknown option --nonsense"},
      {{"--help=1"}, "--help takes no argument"},
      {{"-e"}, "-e needs an argument: CODE"},
      {{"--charset"}, "--charset needs an argument: NAME"},
      {{"--charset=", "a.js"}, "--charset needs the name of a character set"},
      {{"--charset", "koi8-r", "-e", "1"}, "--charset cannot be combined with -e"},
      {{""}, "the name of the script is empty"},
      {{"-i", "", "one"}, "the name of the script is empty"},
      {{"--register="}, "--register needs a name"},
      {{"--unregister", ""}, "--unregister needs a name"},
      {{"--describe", ""}, "--describe needs a name"},
      {{"--register"}, "--register needs an argument: MODULE"},
      {{"-e", "1", "-e", "2"}, "-e is given twice"},
      {{"--register", "a", "--register", "b"}, "--register is given twice"},
      {{"--register", "a", "--unregister", "b"}, "--unregister cannot be combined with --register"},
      {{"--register", "a", "b"}, "b is too much after --register"},
      {{"--version", "b"}, "b is too much after --version"},
      {{"--describe"}, "--describe needs an argument: CLASS"},
      {{"--check", "--list"}, "--list cannot be combined with --check"},
      {{"--check", "a.js"}, "a.js is too much after --check"},
      {{"--version", "-i"}, "--version cannot be combined with -i"},
      {{"--version", "-e", "1"}, "--version cannot be combined with -e"},
      {{"--system", "a.js"}, "--system needs --register or --unregister"},
      {{"-i", "-"}, "- and -i both read standard input"},
      {{"-i", "//T:5"}, "//T cannot be combined with -i"},
      {{"//nonsense", "a.js"}, "unknown option //nonsense"},
      {{"a.js", "--", "//server/share"},
       "unknown option //server/share; with -- before the script's name it is an argument"},
      {{"//nologo:1"}, "unknown option //nologo:1"},
      {{"//T"}, "//T needs an argument: //T:SECONDS"},
      {{"//T:"}, "//T: needs a number of seconds from 0 to 32767"},
      {{"//T:x"}, "//T:x needs a number of seconds from 0 to 32767"},
      {{"//T:5s"}, "//T:5s needs a number of seconds from 0 to 32767"},
      {{"//T:32768"}, "//T:32768 needs a number of seconds from 0 to 32767"},
      {{"//T:-1"}, "//T:-1 needs a number of seconds from 0 to 32767"},
      {{"//E:vbscript"},
       "//E:vbscript names a script engine that mirolta-host does not have; it has JScript"},
      {{"//H:other"}, "//H:other needs cscript or wscript"},
      {{"//Job:"}, "//Job: needs a name"},
  };
  for (const Wrong& row : rows) EXPECT_EQ(Problem(row.words), row.problem);
}

}  // namespace
}  // namespace mirolta::host
