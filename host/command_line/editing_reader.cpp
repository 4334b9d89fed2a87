// The line reader with libedit.
#include <errno.h>
#include <histedit.h>
#include <locale.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <type_traits>

#include "command_line/line_reader.h"
#include "command_line/terminal_modes.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr int kMostLines = 1000;

// libedit's characters are code points; a byte that is not UTF-8 is a lone surrogate in Units and
// stays one here.
std::wstring WideFromSystem(std::string_view bytes) {
  const Units units = UnitsFromSystem(bytes);
  std::wstring wide;
  for (size_t i = 0; i < units.size(); ++i) {
    uint32_t code = units[i];
    const bool is_pair = code >= 0xD800 && code < 0xDC00 && i + 1 < units.size() &&
                         units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000;
    if (is_pair) code = 0x10000 + ((code - 0xD800) << 10) + (units[++i] - 0xDC00u);
    wide.push_back(static_cast<wchar_t>(code));
  }
  return wide;
}

std::string SystemFromWide(const wchar_t* text, size_t count) {
  Units units;
  for (size_t i = 0; i < count; ++i) {
    auto code = static_cast<uint32_t>(static_cast<std::make_unsigned_t<wchar_t>>(text[i]));
    if (code >= 0x10000) {
      units.push_back(static_cast<OLECHAR>(0xD800 + ((code - 0x10000) >> 10)));
      code = 0xDC00 + (code & 0x3FF);
    }
    units.push_back(static_cast<OLECHAR>(code));
  }
  return SystemFromUnits(units);
}

// The length of the UTF-8 sequence that starts with this byte, 1 if none does.
size_t SequenceLength(unsigned char first) {
  if (first >= 0xF0 && first < 0xF8) return 4;
  if (first >= 0xE0 && first < 0xF0) return 3;
  return first >= 0xC0 && first < 0xE0 ? 2 : 1;
}

// The part that all words start with.
std::string CommonStart(const std::vector<std::string>& words) {
  std::string start = words.front();
  for (const std::string& word : words) {
    const size_t most = std::min(start.size(), word.size());
    size_t same = 0;
    while (same < most && start[same] == word[same]) ++same;
    start.resize(same);
  }
  return start;
}

void PrintInColumns(const std::vector<std::string>& words) {
  constexpr size_t kWidth = 80;
  size_t longest = 0;
  for (const std::string& word : words) longest = std::max(longest, word.size());
  const size_t columns = std::max<size_t>(1, kWidth / (longest + 2));
  putchar('\n');
  for (size_t i = 0; i < words.size(); ++i) {
    const bool ends_row = (i + 1) % columns == 0 || i + 1 == words.size();
    printf("%-*s%s", ends_row ? 0 : static_cast<int>(longest + 2), words[i].c_str(),
           ends_row ? "\n" : "");
  }
  static_cast<void>(fflush(stdout));
}

class EditingReader : public LineReader {
 public:
  explicit EditingReader(Completer completer) : completer_(std::move(completer)) {
    // What is typed and shown is UTF-8, whatever the locale.
    const char* locale = setlocale(LC_CTYPE, "");
    if (locale == nullptr || strstr(locale, "UTF-8") == nullptr) setlocale(LC_CTYPE, "C.UTF-8");
    KeepTerminalModes();
    history_ = history_winit();
    editor_ = el_init("mirolta-host", stdin, stdout, stderr);
    if (!IsReady()) return;
    HistEventW event = {};
    history_w(history_, &event, H_SETSIZE, kMostLines);
    history_w(history_, &event, H_SETUNIQUE, 1);
    el_wset(editor_, EL_CLIENTDATA, this);
    el_wset(editor_, EL_GETCFN, &ReadCharacter);
    el_wset(editor_, EL_PROMPT, &Prompt);
    el_wset(editor_, EL_EDITOR, L"emacs");
    el_wset(editor_, EL_HIST, history_w, history_);
    el_wset(editor_, EL_ADDFN, L"mirolta-complete", L"Complete a name", &Complete);
    el_wset(editor_, EL_BIND, L"^I", L"mirolta-complete", nullptr);
    el_wset(editor_, EL_BIND, L"^R", L"em-inc-search-prev", nullptr);
    // The user's own settings come last.
    static_cast<void>(el_source(editor_, nullptr));
  }
  ~EditingReader() override {
    if (editor_ != nullptr) el_end(editor_);
    if (history_ != nullptr) history_wend(history_);
  }
  bool IsReady() const { return editor_ != nullptr && history_ != nullptr; }

  LineRead Read(const char* prompt, std::string* line) override {
    prompt_ = WideFromSystem(prompt);
    stopped_by_ = LineRead::kEnd;
    int count = 0;
    const wchar_t* text = el_wgets(editor_, &count);
    if (stopped_by_ != LineRead::kEnd) {
      const int error = errno;
      el_reset(editor_);
      errno = error;
      return stopped_by_;
    }
    if (text == nullptr || count <= 0) return LineRead::kEnd;
    auto length = static_cast<size_t>(count);
    if (text[length - 1] == L'\n') --length;
    *line = SystemFromWide(text, length);
    return LineRead::kLine;
  }

  void Remember(const std::string& line) override {
    HistEventW event = {};
    history_w(history_, &event, H_ENTER, WideFromSystem(line).c_str());
  }

 private:
  static EditingReader* Of(EditLine* editor) {
    void* self = nullptr;
    el_wget(editor, EL_CLIENTDATA, &self);
    return static_cast<EditingReader*>(self);
  }

  static wchar_t* Prompt(EditLine* editor) { return Of(editor)->prompt_.data(); }

  // 1 for a character, 0 at the end, -1 after an interruption or a failure.
  static int ReadCharacter(EditLine* editor, wchar_t* character) {
    EditingReader& reader = *Of(editor);
    while (reader.characters_.empty()) {
      const LineRead got = reader.ReadCharacters();
      if (got == LineRead::kEnd) return 0;
      if (got == LineRead::kLine) continue;
      reader.stopped_by_ = got;
      if (got == LineRead::kInterrupted) errno = EINTR;
      return -1;
    }
    *character = reader.characters_.front();
    reader.characters_.erase(0, 1);
    return 1;
  }

  // Reads a character, or bytes that start like one and the byte after them, which may end the line.
  LineRead ReadCharacters() {
    unsigned char bytes[4] = {};
    size_t count = 0;
    do {
      const LineRead got = ReadInputByte(bytes + count);
      if (got != LineRead::kLine) return got;
      ++count;
    } while (count < SequenceLength(bytes[0]) && (count == 1 || (bytes[count - 1] & 0xC0) == 0x80));
    try {
      characters_ = WideFromSystem({reinterpret_cast<char*>(bytes), count});
    } catch (const std::bad_alloc&) {
      return LineRead::kEnd;
    }
    return LineRead::kLine;
  }

  static unsigned char Complete(EditLine* editor, int) {
    try {
      return Of(editor)->CompleteWord();
    } catch (const std::bad_alloc&) {
      return CC_ERROR;
    }
  }

  unsigned char CompleteWord() {
    const LineInfoW* line = el_wline(editor_);
    const std::string text =
        SystemFromWide(line->buffer, static_cast<size_t>(line->cursor - line->buffer));
    const Completions found = completer_(text);
    if (found.words.empty()) return CC_ERROR;
    const std::string start = CommonStart(found.words);
    const size_t typed = text.size() - found.begin;
    if (start.size() >= typed) {
      // The word may continue in other letters.
      el_deletestr(editor_, static_cast<int>(WideFromSystem(text.substr(found.begin)).size()));
      el_winsertstr(editor_, WideFromSystem(start).c_str());
    }
    if (found.words.size() == 1 || start.size() > typed) return CC_REFRESH;
    PrintInColumns(found.words);
    return CC_REDISPLAY;
  }

  Completer completer_;
  EditLine* editor_ = nullptr;
  HistoryW* history_ = nullptr;
  std::wstring prompt_;
  std::wstring characters_;               // that were read and not yet edited
  LineRead stopped_by_ = LineRead::kEnd;  // in the middle of a line
};

}  // namespace

std::unique_ptr<LineReader> MakeEditingReader(Completer completer) {
  auto reader = std::make_unique<EditingReader>(std::move(completer));
  if (!reader->IsReady()) return nullptr;
  return reader;
}

bool CanEditLines() {
  return true;
}

}  // namespace mirolta::host
