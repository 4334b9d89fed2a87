// Scripts, from files and from elsewhere.
#pragma once

#include <string>
#include <string_view>

namespace mirolta::host {

struct SourceOptions {
  // The character set of scripts without a byte order mark: a name as iconv knows it, or the number
  // of a code page. Empty: detected (script_encoding.h).
  std::string charset;
};

// A script as the compiler takes it, and what reports of errors show of it.
struct ScriptText {
  std::string name;       // as the user gave it: a path, "-e", "standard input"
  std::string full_path;  // absolute; empty if the script is no file
  std::string text;       // UTF-8, rewritten by call_assignment.h and eval_calls.h
  std::string original;   // UTF-8 before the rewriting; empty if nothing was rewritten

  // The lines that the user wrote.
  std::string_view Original() const { return original.empty() ? text : original; }
};

// LoadScript reads a script file and prepares it for the compiler: it decodes the text, makes a
// comment of a first line that starts with #!, and rewrites assignments to calls and calls of eval. Line
// numbers do not change.
// Shapes: a file of at most 256 MB.
// Errors: false with a sentence in *problem, which names the script, also for files of other
//         languages.
bool LoadScript(const std::string& path, const SourceOptions& options, ScriptText* script,
                std::string* problem);

// ScriptFromBytes is LoadScript for the bytes of a script that is no file.
bool ScriptFromBytes(const std::string& name, std::string_view bytes, const SourceOptions& options,
                     ScriptText* script, std::string* problem);

// ScriptFromDescriptor is LoadScript for what can be read from a descriptor until its end.
bool ScriptFromDescriptor(const std::string& name, int file, const SourceOptions& options,
                          ScriptText* script, std::string* problem);

}  // namespace mirolta::host
