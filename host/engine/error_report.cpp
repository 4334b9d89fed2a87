#include "engine/error_report.h"

#include <stdio.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "engine/host_errors.h"
#include "engine/script_context.h"
#include "engine/syntax_place.h"
#include "source/source_lines.h"
#include "source/statement_column.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr std::string_view kIndent = "    ";
constexpr std::string_view kCall = "    at ";
constexpr std::string_view kMore = "    [...]";
// The start of the names of the host's own scripts.
constexpr std::string_view kOwnCode = "mirolta-host: ";
constexpr std::string_view kCut = "...";

// The names that the engine gives to code.
struct EngineName {
  std::string_view name;
  std::string_view shown;
};
constexpr EngineName kCodeNames[] = {{"input", "code of eval"}, {"compile", "code of Function"}};
// The engine's messages that say no more than that a token cannot be there.
constexpr std::string_view kUnexpected[] = {
    "parse error", "invalid token", "unterminated statement", "empty expression not allowed"};
constexpr std::string_view kNoNames[] = {"[anon]", "global", "anonymous"};

// Characters that occupy two columns of a terminal, and none.
struct Range {
  uint32_t first;
  uint32_t last;
};
constexpr Range kWide[] = {
    {0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};
constexpr Range kZero[] = {{0x0300, 0x036F}, {0x200B, 0x200F}, {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}};

template <size_t kCount>
bool IsIn(const Range (&ranges)[kCount], uint32_t code) {
  for (const Range& range : ranges) {
    if (code >= range.first && code <= range.last) return true;
  }
  return false;
}

size_t WidthOf(uint32_t code) {
  if (IsIn(kZero, code)) return 0;
  return IsIn(kWide, code) ? 2 : 1;
}

std::vector<uint32_t> CodesOf(std::string_view text) {
  std::vector<uint32_t> codes;
  while (!text.empty()) {
    uint32_t code = 0xFFFD;
    const size_t length = ReadSequence(text, &code);
    text.remove_prefix(length == 0 ? 1 : length);
    const bool is_control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    codes.push_back(is_control ? ' ' : code);
  }
  return codes;
}

bool Ends(std::string_view text, size_t at, std::string_view middle) {
  return text.substr(0, at).ends_with(middle);
}

// The call that a line without its "    at " describes: "NAME (FILE:LINE) FLAGS".
bool ReadCall(std::string_view text, const std::vector<std::string>& files, CallFrame* call) {
  const size_t close = text.rfind(')');
  if (close == std::string_view::npos) return false;
  const std::string_view flags = text.substr(close);
  const size_t colon = text.rfind(':', close);
  if (flags.find("native") != std::string_view::npos ||
      flags.find("internal") != std::string_view::npos || colon == std::string_view::npos) {
    return false;
  }
  const char* end = text.data() + close;
  if (std::from_chars(text.data() + colon + 1, end, call->line).ptr != end) return false;
  size_t open = text.substr(0, colon).rfind(" (");
  for (const std::string& file : files) {
    if (Ends(text, colon, " (" + file)) open = colon - file.size() - 2;
  }
  if (open == std::string_view::npos) return false;
  call->function = text.substr(0, open);
  call->file = text.substr(open + 2, colon - open - 2);
  if (call->file.starts_with(kOwnCode)) return false;
  for (std::string_view name : kNoNames) {
    if (call->function == name) call->function.clear();
  }
  return true;
}

std::string ShownFile(const std::string& file, const std::vector<std::string>& scripts) {
  for (const std::string& script : scripts) {
    if (script == file) return file;
  }
  for (const EngineName& row : kCodeNames) {
    if (row.name == file) return std::string(row.shown);
  }
  return file;
}

// Pushes the text of the calls of the value on top, without the message that it starts with.
duk_ret_t ReadCalls(duk_context* engine, void*) {
  const bool is_error = duk_is_error(engine, -1) != 0;
  PushCalls(engine);
  duk_safe_to_string(engine, -1);
  if (!is_error) return 1;
  duk_dup(engine, -2);
  duk_safe_to_string(engine, -1);
  duk_size_t size = 0, message_size = 0;
  const char* text = duk_get_lstring(engine, -2, &size);
  const char* message = duk_get_lstring(engine, -1, &message_size);
  if (std::string_view(text, size).starts_with({message, message_size})) {
    duk_substring(engine, -2, duk_get_length(engine, -1), size);
  }
  duk_pop(engine);
  return 1;
}

Calls CallsOf(duk_context* engine, const std::vector<std::string>& files) {
  if (!duk_check_stack(engine, 8)) return {};
  Calls calls;
  if (duk_safe_call(engine, ReadCalls, nullptr, 0, 1) == DUK_EXEC_SUCCESS) {
    duk_size_t size = 0;
    const char* text = duk_get_lstring(engine, -1, &size);
    if (text != nullptr) calls = SplitCalls(SystemFromUnits(UnitsFromEngine({text, size})), files);
  }
  duk_pop(engine);
  return calls;
}

const ScriptText* FindScript(const ScriptContext& context, const std::string& name) {
  const auto found = std::find_if(context.scripts.rbegin(), context.scripts.rend(),
                                  [&](const ScriptText* script) { return script->name == name; });
  return found == context.scripts.rend() ? nullptr : *found;
}

constexpr std::string_view kSyntaxError = "SyntaxError: ";

// The compiler appends " (line 5)" to a message.
void RemoveLine(std::string* description) {
  const size_t suffix = description->rfind(" (line ");
  if (suffix != std::string::npos && description->ends_with(')')) description->erase(suffix);
}

// Names the token if the description says no more than that it cannot be there.
void NameToken(const std::string& token, std::string* description) {
  constexpr size_t kLongestToken = 40;
  const std::string_view message = std::string_view(*description).substr(kSyntaxError.size());
  if (std::find(std::begin(kUnexpected), std::end(kUnexpected), message) == std::end(kUnexpected)) {
    return;
  }
  *description = std::string(kSyntaxError) + "unexpected ";
  if (token.empty()) {
    *description += "end of the script";
  } else if (token.size() > kLongestToken || CountLines(token) > 1) {
    *description += "text";
  } else {
    *description += token;
  }
}

// Corrects the place of an error in a script that did not compile, and returns the column.
int LocateSyntaxError(duk_context* engine, const ScriptText& script, ErrorReport* report) {
  if (!report->description.starts_with(kSyntaxError)) return 0;
  const SyntaxPlace found = FindSyntaxError(engine, script.Original(), report->line);
  if (found.place.line == 0) return 0;
  report->line = found.place.line;
  NameToken(found.token, &report->description);
  return found.place.column;
}

std::string FormatPlace(const std::string& file, int line, int column) {
  if (line <= 0) return file;
  std::string text = file + '(' + std::to_string(line);
  if (column > 0) text += ", " + std::to_string(column);
  return text + ')';
}

std::string FormatNumber(HRESULT number) {
  char text[40];
  snprintf(text, sizeof text, "error 0x%08X (%d)", static_cast<unsigned>(number),
           static_cast<int>(number));
  return text;
}

std::string FormatCall(const CallFrame& call, const std::vector<std::string>& files) {
  const std::string place = ShownFile(call.file, files) + ':' + std::to_string(call.line);
  return call.function.empty() ? place : call.function + " (" + place + ')';
}

// A recursion takes one line.
std::string FormatCalls(const std::vector<CallFrame>& calls,
                        const std::vector<std::string>& files) {
  // The place of the error is known already.
  if (calls.empty() || (calls.size() == 1 && calls[0].function.empty())) return {};
  std::string text;
  for (size_t i = 0; i < calls.size();) {
    const std::string call = FormatCall(calls[i], files);
    size_t count = 1;
    while (!calls[i].function.empty() && i + count < calls.size() &&
           FormatCall(calls[i + count], files) == call) {
      ++count;
    }
    text += kCall;
    text += call;
    if (count > 1) text += ", " + std::to_string(count) + " times";
    text += '\n';
    i += count;
  }
  return text;
}

}  // namespace

Calls SplitCalls(std::string_view text, const std::vector<std::string>& files) {
  Calls calls;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    CallFrame call;
    if (line == kMore) calls.are_more = true;
    if (line.starts_with(kCall) && ReadCall(line.substr(kCall.size()), files, &call)) {
      calls.frames.push_back(call);
    }
  }
  return calls;
}

std::string LineWithMarker(std::string_view line, int column) {
  constexpr size_t kLongest = 100, kLongestRead = 1 << 20;
  if (line.size() > kLongestRead) return {};
  const std::vector<uint32_t> codes = CodesOf(line);
  const size_t mark = column > 0 ? static_cast<size_t>(column) - 1 : codes.size();
  const auto text_end = codes.begin() + static_cast<ptrdiff_t>(std::min(mark, codes.size()));
  const auto text_begin =
      std::find_if(codes.begin(), text_end, [](uint32_t code) { return code != ' '; });
  auto begin = static_cast<size_t>(text_begin - codes.begin());
  size_t end = codes.size();
  std::string text(kIndent), marker(kIndent);
  if (end - begin > kLongest) {
    const size_t center = column > 0 ? mark : begin;
    const size_t least = center > begin + kLongest / 2 ? center - kLongest / 2 : begin;
    if (least > begin) {
      begin = std::min(least, end - kLongest);
      text += kCut;
      marker.append(kCut.size(), ' ');
    }
    end = begin + kLongest;
  }
  for (size_t i = begin; i < end; ++i) {
    AppendCode(codes[i], &text);
    if (i < mark) marker.append(WidthOf(codes[i]), ' ');
  }
  while (text.ends_with(' ')) text.pop_back();
  if (text.empty()) return {};
  if (end < codes.size()) text += kCut;
  // The place after the last character.
  if (mark > end) marker.append(mark - end, ' ');
  return text + '\n' + (column > 0 ? marker + "^\n" : "");
}

void ReportUncaught(duk_context* engine, bool was_compiled) {
  const ScriptContext& context = ContextOf(engine);
  if (context.is_batch) return;
  std::vector<std::string> files;
  files.reserve(context.scripts.size());
  for (const ScriptText* one : context.scripts) files.push_back(one->name);
  // First: the description may run code of the script, which throws.
  Calls calls;
  if (was_compiled) calls = CallsOf(engine, files);
  ErrorReport report = DescribeError(engine);
  const ScriptText* script = FindScript(context, report.file);
  int column = 0;
  if (script == nullptr || !was_compiled) RemoveLine(&report.description);
  if (script != nullptr) {
    column = was_compiled ? StatementColumn(script->Original(), report.line)
                          : LocateSyntaxError(engine, *script, &report);
  }
  std::string text = FormatPlace(ShownFile(report.file, files), report.line, column) + ": " +
                     FormatNumber(report.number);
  for (const std::string& part : {report.source, report.description}) {
    if (!part.empty()) text += ": " + part;
  }
  text += '\n';
  if (script != nullptr && report.line > 0) {
    text += LineWithMarker(LineOf(script->Original(), report.line), column);
  }
  text += FormatCalls(calls.frames, files);
  if (calls.are_more) text += "    ...\n";
  static_cast<void>(fwrite(text.data(), 1, text.size(), stderr));
}

}  // namespace mirolta::host
