#include "command_line/line_reader.h"

#include <errno.h>
#include <stdio.h>
#include <unistd.h>

#include "engine/interruption.h"

namespace mirolta::host {
namespace {

// Reads no more than the line: the rest belongs to the script that the line runs.
class PlainReader : public LineReader {
 public:
  LineRead Read(const char* prompt, std::string* line) override {
    if (is_terminal_) {
      fputs(prompt, stdout);
      static_cast<void>(fflush(stdout));
    }
    line->clear();
    for (;;) {
      unsigned char byte = 0;
      const LineRead got = ReadInputByte(&byte);
      if (got == LineRead::kInterrupted || got == LineRead::kFailed) return got;
      if (got == LineRead::kEnd) return line->empty() ? LineRead::kEnd : LineRead::kLine;
      if (byte == '\n') break;
      line->push_back(static_cast<char>(byte));
    }
    if (line->ends_with('\r')) line->pop_back();
    return LineRead::kLine;
  }

  void Remember(const std::string&) override {}

 private:
  const bool is_terminal_ = isatty(STDIN_FILENO) != 0;
};

}  // namespace

LineRead ReadInputByte(unsigned char* byte) {
  for (;;) {
    if (!WaitForInput(STDIN_FILENO)) return LineRead::kInterrupted;
    const ssize_t got = read(STDIN_FILENO, byte, 1);
    if (got >= 0) return got == 1 ? LineRead::kLine : LineRead::kEnd;
    if (errno != EINTR && errno != EAGAIN) return LineRead::kFailed;
  }
}

std::unique_ptr<LineReader> MakeLineReader(Completer completer) {
  const bool is_terminal = isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
  auto reader = is_terminal ? MakeEditingReader(std::move(completer)) : nullptr;
  if (reader == nullptr) reader = std::make_unique<PlainReader>();
  return reader;
}

}  // namespace mirolta::host
