// Lines that a user types, with editing where libedit was found and standard input is a terminal.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mirolta::host {

// kFailed: standard input cannot be read, and errno says why.
enum class LineRead { kLine, kEnd, kInterrupted, kFailed };

struct Completions {
  size_t begin = 0;  // of the word to complete
  std::vector<std::string> words;
};
// A Completer returns the words that the last word of `text` may become, which ends at the cursor.
using Completer = std::function<Completions(std::string_view text)>;

// Texts are in the system's form.
class LineReader {
 public:
  LineReader() = default;
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  virtual ~LineReader() = default;

  // Read reads a line, without its end. The prompt is shown on terminals only. A line whose end
  // cannot be read is none.
  // Errors: std::bad_alloc.
  virtual LineRead Read(const char* prompt, std::string* line) = 0;
  // Remember adds a line to those that can be called back.
  virtual void Remember(const std::string& line) = 0;
};

// MakeLineReader returns a reader of standard input. CatchInterrupts was called.
// Errors: std::bad_alloc.
std::unique_ptr<LineReader> MakeLineReader(Completer completer);

// MakeEditingReader returns a reader with editing, null if the terminal has none.
std::unique_ptr<LineReader> MakeEditingReader(Completer completer);

// CanEditLines returns whether the host was built with libedit.
bool CanEditLines();

// ReadInputByte reads a byte of standard input. kInterrupted is SIGINT.
LineRead ReadInputByte(unsigned char* byte);

}  // namespace mirolta::host
