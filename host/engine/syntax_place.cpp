#include "engine/syntax_place.h"

#include <vector>

#include "source/call_assignment.h"
#include "source/script_tokens.h"

namespace mirolta::host {
namespace {

constexpr size_t kLongestScript = 256 << 10;
constexpr std::string_view kAtEnd = "end of input)";  // of the engine's message

// What may follow a token: one of these can follow any valid beginning of a script.
constexpr std::string_view kContinuations[] = {"a", "+", ";", "(", ")",     "{",     "}",
                                               "]", ":", ",", "=", "while", "catch", "case"};

// One compilation.
struct Trial {
  std::string_view text;
  bool is_known = false;
  bool fails = false;    // at a token
  bool is_open = false;  // fails at the end of the text
  int line = 0;
};

duk_ret_t Try(duk_context* engine, void* data) {
  auto* trial = static_cast<Trial*>(data);
  duk_push_string(engine, "trial");
  const bool compiled = duk_pcompile_lstring_filename(engine, 0, trial->text.data(),
                                                      trial->text.size()) == DUK_EXEC_SUCCESS;
  trial->is_known = compiled || duk_get_error_code(engine, -1) == DUK_ERR_SYNTAX_ERROR;
  if (compiled || !trial->is_known) return 0;
  duk_get_prop_string(engine, -1, "lineNumber");
  trial->line = duk_get_int(engine, -1);
  duk_get_prop_string(engine, -2, "message");
  duk_size_t size = 0;
  const char* message = duk_get_lstring(engine, -1, &size);
  trial->is_open = message != nullptr && std::string_view(message, size).ends_with(kAtEnd);
  trial->fails = !trial->is_open;
  return 0;
}

class Search {
 public:
  Search(duk_context* engine, std::string_view script)
      : engine_(engine), script_(script), tokens_(SplitScript(script)) {}

  SyntaxPlace Run(int line) {
    const size_t count = tokens_.size();
    size_t high = count;
    if (Fails(count)) {
      size_t low = 0;  // the last beginning known not to fail
      while (high - low > 1) {
        const size_t middle = low + (high - low) / 2;
        (Fails(middle) ? high : low) = middle;
      }
      if (LineOfToken(high) != line) return {};
      // The engine reads a token ahead.
      if (IsLost(high - 1)) --high;
    } else if (!IsLost(high)) {
      return AtEnd();
    }
    if (!is_known_) return {};
    const Token& token = tokens_[high - 1];
    return {PlaceOf(script_, token.begin),
            std::string(script_.substr(token.begin, token.end - token.begin))};
  }

 private:
  // The script through its token number `count`.
  std::string_view Beginning(size_t count) const {
    return script_.substr(0, count == 0 ? 0 : tokens_[count - 1].end);
  }
  int LineOfToken(size_t number) const { return PlaceOf(script_, tokens_[number - 1].begin).line; }

  Trial Compile(std::string_view beginning, std::string_view rest) {
    const std::string text = RewriteCallAssignments(std::string(beginning).append(rest));
    Trial trial;
    trial.text = text;
    duk_safe_call(engine_, Try, &trial, 0, 1);
    duk_pop(engine_);
    if (!trial.is_known) is_known_ = false;
    return trial;
  }

  // The line break ends a token that is not terminated.
  bool Fails(size_t count) { return Compile(Beginning(count), "\n").fails; }

  // True if nothing can complete the beginning. An error is reported in the line of the next token,
  // the continuation, at the latest.
  bool IsLost(size_t count) {
    if (count == 0) return false;
    const std::string_view beginning = Beginning(count);
    const int line = CountLines(beginning);
    for (std::string_view one : kContinuations) {
      const Trial trial = Compile(beginning, " " + std::string(one) + "\na ");
      if (!trial.fails || trial.line > line) return false;
    }
    return true;
  }

  // After the last token, or at the start of a comment without an end.
  SyntaxPlace AtEnd() const {
    SyntaxPlace result;
    if (is_known_) result.place = PlaceOf(script_, OpenComment(Beginning(tokens_.size()).size()));
    return result;
  }

  // The start of the comment without an end after the last token; `end` if there is none.
  size_t OpenComment(size_t end) const {
    for (size_t at = end; at < script_.size();) {
      const std::string_view rest = script_.substr(at);
      if (rest.starts_with("/*")) {
        const size_t close = rest.find("*/", 2);
        if (close == std::string_view::npos) return at;
        at += close + 2;
      } else if (rest.starts_with("//")) {
        while (at < script_.size() && LineBreakLength(script_.substr(at)) == 0) ++at;
      } else {
        ++at;
      }
    }
    return end;
  }

  duk_context* engine_;
  std::string_view script_;
  std::vector<Token> tokens_;
  bool is_known_ = true;
};

}  // namespace

SyntaxPlace FindSyntaxError(duk_context* engine, std::string_view script, int line) {
  if (script.size() > kLongestScript || !duk_check_stack(engine, 2)) return {};
  return Search(engine, script).Run(line);
}

}  // namespace mirolta::host
