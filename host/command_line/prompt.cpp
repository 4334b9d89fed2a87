#include "command_line/prompt.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "command_line/completion.h"
#include "command_line/help_function.h"
#include "command_line/history_file.h"
#include "command_line/line_reader.h"
#include "command_line/options.h"
#include "command_line/prompt_entry.h"
#include "command_line/result_text.h"
#include "engine/error_report.h"
#include "engine/interruption.h"
#include "source/call_assignment.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr char kFirstPrompt[] = "> ";
constexpr char kNextPrompt[] = "... ";

// Texts are in the engine's form.
struct Entry {
  bool is_compiled = false;
  std::string text;
  std::string object_text;  // as an object literal, empty if it cannot be one
};

// Pushes the compiled entry; returns false and pushes the error if it does not compile.
bool PushCompiled(duk_context* engine, const std::string& text) {
  duk_push_string(engine, kPromptName);
  return duk_pcompile_lstring_filename(engine, DUK_COMPILE_EVAL, text.data(), text.size()) == 0;
}

// Runs an entry; leaves its result and the text of the result.
duk_ret_t RunEntry(duk_context* engine, void* data) {
  auto* entry = static_cast<Entry*>(data);
  bool is_compiled = false;
  if (!entry->object_text.empty()) {
    is_compiled = PushCompiled(engine, entry->object_text);
    if (!is_compiled) duk_pop(engine);
  }
  if (!is_compiled && !PushCompiled(engine, entry->text)) return duk_throw(engine);
  entry->is_compiled = true;
  duk_call(engine, 0);
  duk_dup_top(engine);
  PushResultText(engine);
  return 2;
}

void PrintResult(duk_context* engine) {
  constexpr duk_idx_t kResult = -2, kText = -1;
  if (duk_is_undefined(engine, kResult)) return;
  duk_size_t size = 0;
  const char* text = duk_get_lstring(engine, kText, &size);
  const std::string printed = SystemFromUnits(UnitsFromEngine({text, size}));
  static_cast<void>(fwrite(printed.data(), 1, printed.size(), stdout));
  putchar('\n');
}

duk_ret_t KeepResult(duk_context* engine, void*) {
  if (!duk_is_undefined(engine, -1)) duk_put_global_string(engine, "_");
  return 0;
}

// The lines are shown for a syntax error only: a function that fails is in an earlier entry at times.
void Report(ScriptEngine* script, const std::string& typed, bool is_compiled) {
  ScriptText text;
  text.name = kPromptName;
  text.text = typed;
  std::vector<const ScriptText*>& scripts = script->Context().scripts;
  if (!is_compiled) scripts.push_back(&text);
  ReportUncaught(script->Api(), is_compiled);
  if (!is_compiled) scripts.pop_back();
}

void Run(ScriptEngine* script, const std::string& typed) {
  duk_context* engine = script->Api();
  Entry entry;
  entry.text = EngineFromUnits(UnitsFromSystem(RewriteCallAssignments(typed)));
  if (MayBeObject(typed)) entry.object_text = "(" + entry.text + "\n)";
  bool succeeded = false;
  bool was_interrupted = false;
  {
    const InterruptibleCommand command;
    succeeded = duk_safe_call(engine, RunEntry, &entry, 0, 2) == DUK_EXEC_SUCCESS;
    was_interrupted = IsInterrupted();
  }
  static_cast<void>(fflush(stdout));
  if (succeeded) {
    PrintResult(engine);
    duk_pop(engine);
    duk_safe_call(engine, KeepResult, nullptr, 1, 1);
  } else if (was_interrupted) {
    fputs("Interrupted\n", stderr);
    duk_pop(engine);
  } else {
    // The error is the first of the two values.
    duk_pop(engine);
    Report(script, typed, entry.is_compiled);
  }
  duk_pop(engine);
  script->Context().objects.ReleaseDropped();
  static_cast<void>(fflush(stdout));
}

// The lines that were typed before, and where they are kept.
class History {
 public:
  explicit History(LineReader* reader) : reader_(*reader) {
    if (isatty(STDIN_FILENO) == 0) return;
    path_ = HistoryPath();
    if (path_.empty()) return;
    std::vector<std::string> lines;
    // A failure is reported when the history is written.
    static_cast<void>(ReadHistory(path_, &lines));
    for (const std::string& line : lines) reader_.Remember(line);
  }
  void Add(const std::string& line) {
    if (line.empty()) return;
    reader_.Remember(line);
    if (!path_.empty()) added_.push_back(line);
  }
  // Writes what was added; an entry of many lines is written once.
  void Write() {
    if (added_.empty()) return;
    if (!AddToHistory(path_, added_)) {
      fprintf(stderr, "mirolta-host: the history %s cannot be written\n", path_.c_str());
      path_.clear();  // told once
    }
    added_.clear();
  }

 private:
  LineReader& reader_;
  std::string path_;
  std::vector<std::string> added_;
};

}  // namespace

void InstallPrompt(ScriptEngine* engine) {
  CatchInterrupts();
  InstallHelp(engine->Api());
}

bool RunPrompt(ScriptEngine* engine) {
  const bool is_terminal = isatty(STDIN_FILENO) != 0;
  if (is_terminal) {
    printf("mirolta-host %s: help() explains the prompt, Ctrl-D ends it\n", kVersion);
  }
  const auto reader =
      MakeLineReader([engine](std::string_view text) { return CompleteName(engine->Api(), text); });
  History history(reader.get());
  // Commands are not noted: what a name is used for is asked of the engine.
  engine->Context().call_sites.ForgetScript();
  engine->Context().script_path = kPromptName;
  std::string entry;
  for (;;) {
    std::string line;
    const LineRead got = reader->Read(entry.empty() ? kFirstPrompt : kNextPrompt, &line);
    if (got == LineRead::kInterrupted) {
      putchar('\n');
      entry.clear();
      continue;
    }
    if (got == LineRead::kFailed) {
      fprintf(stderr, "mirolta-host: cannot read standard input: %s\n", strerror(errno));
      history.Write();
      return false;
    }
    if (got == LineRead::kLine) {
      history.Add(line);
      entry += entry.empty() ? line : '\n' + line;
      if (!IsComplete(entry)) continue;
    }
    history.Write();
    if (!entry.empty()) Run(engine, entry);
    entry.clear();
    if (got == LineRead::kEnd) break;
  }
  if (is_terminal) putchar('\n');
  return true;
}

}  // namespace mirolta::host
