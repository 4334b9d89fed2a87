// Scripts of any tokens, and any bytes, to the rewriter of assignments to calls and the reader of member
// uses: lines keep their numbers, scripts without such assignments stay, and every name is one of the script.
#include <algorithm>
#include <string>
#include <string_view>

#include "fuzz_input.h"
#include "source/call_assignment.h"
#include "source/member_uses.h"

using namespace mirolta::fuzz;
using namespace mirolta::host;

namespace {

constexpr std::string_view kTokens[] = {
    "a", ".b", "(",      ")",  "[",  "]",  "{",  "}",  "=",  "+=",   ">>>=",         "==",
    "/", "/*", "*/",     "//", "\n", "'",  "\"", "\\", ",",  ";",    "if",           "?",
    ":", "1",  "return", " ",  "!",  "=>", "++", "in", "\r", "\\u0", "\xE2\x80\xA8", "x"};

size_t Lines(std::string_view text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

// Without what a rewriting removes and adds.
std::string Letters(std::string_view text) {
  std::string letters;
  for (const char c : text) {
    if (c == 'a' || c == 'x' || c == '1') letters += c;
  }
  return letters;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string script;
  if (size != 0 && data[0] % 8 == 0) {
    script.assign(data + 1, data + size);
  } else {
    for (size_t i = 1; i < size; ++i) script += kTokens[data[i] % std::size(kTokens)];
  }
  const std::string rewritten = RewriteCallAssignments(script);
  FUZZ_CHECK(Lines(rewritten) == Lines(script));
  FUZZ_CHECK(rewritten == script ||
             (script.find('=') != script.npos && script.find(')') != script.npos &&
              rewritten.find(kAssignmentSuffix) != rewritten.npos &&
              rewritten.size() > script.size()));
  // ".value" has an a of its own for each assignment.
  std::string plain = rewritten;
  for (size_t at; (at = plain.find(").value")) != plain.npos;) {
    if (script.find(").value") != script.npos) break;
    plain.erase(at + 1, 6);
  }
  FUZZ_CHECK(script.find(").value") != script.npos || Letters(plain) == Letters(script));
  const MemberUses uses = FindMemberUses(script);
  for (const auto* names : {&uses.called, &uses.read}) {
    for (const std::string& name : *names) FUZZ_CHECK(script.find(name) != script.npos);
  }
  return 0;
}
