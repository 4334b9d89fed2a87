// The tokens and calls of packaged scripts, compared with those of an independent parser, which the
// script engine runs.
#include "source/script_tokens.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "host_fixture.h"
#include "source/call_assignment.h"

namespace mirolta::host {
namespace {

namespace fs = std::filesystem;

// Folders of Debian packages with ES5 scripts, and the least number of files there that compile.
// Some are minified: with few line breaks, and without optional semicolons.
struct PackageRow {
  const char* folder;
  int least_files;
};
constexpr PackageRow kPackages[] = {
    {"/usr/share/nodejs/esprima/dist", 1},
    {"/usr/share/javascript/codemirror", 100},
    {"/usr/share/javascript/jquery", 2},
    {"/usr/share/javascript/lodash", 1},
    {"/usr/share/javascript/moment", 50},
    {"/usr/share/javascript/prototype", 1},
    {"/usr/share/javascript/underscore", 1},
};
constexpr char kParser[] = "/usr/share/nodejs/esprima/dist/esprima.js";
// The parser is slow in our engine: of longer scripts only the rewriting is compared.
#ifdef MIROLTA_SLOW_BUILD
constexpr size_t kMostParsed = 5000;
#else
constexpr size_t kMostParsed = 25000;
#endif

// A letter and the end of every token; for a closing bracket also its kind.
constexpr char kDescribe[] = R"(
(function (text) {
  var marks = {}, out = [];
  function isWord(type) {
    return type === 'Keyword' || type === 'Identifier' || type === 'Boolean' || type === 'Null';
  }
  function note(node) {
    var end = node.range[1];
    if (node.type === 'CallExpression') marks[end] = 'c';
    if (node.type === 'NewExpression' && text.slice(node.callee.range[1], end).indexOf('(') >= 0) marks[end] = 'c';
    if (node.type === 'ObjectExpression') marks[end] = 'o';
    if (node.type === 'FunctionExpression') marks[end] = 'f';
    if (node.type === 'MemberExpression' && node.computed) marks[end] = 'm';
  }
  var tokens = esprima.parseScript(text, { tokens: true, range: true }, note).tokens;
  for (var i = 0; i < tokens.length; i++) {
    var token = tokens[i], end = token.range[1];
    var letter = isWord(token.type) ? 'W' : token.type.charAt(0);
    out.push(letter + end + (letter === 'P' && /[)}\]]/.test(token.value) && marks[end] || ''));
  }
  return out.join(' ');
})
)";

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The number of characters before each byte: the parser counts characters.
std::vector<size_t> CharactersBefore(const std::string& text) {
  std::vector<size_t> counts;
  size_t characters = 0;
  for (char c : text) {
    counts.push_back(characters);
    if ((static_cast<unsigned char>(c) & 0xC0u) != 0x80) ++characters;
  }
  counts.push_back(characters);
  return counts;
}

std::string Describe(const std::string& text) {
  constexpr char kLetters[] = {'W', 'W', 'N', 'S', 'R', 'P'};  // by TokenKind
  const std::vector<size_t> characters = CharactersBefore(text);
  std::string out;
  for (const Token& token : SplitScript(text)) {
    if (!out.empty()) out += ' ';
    out += kLetters[static_cast<size_t>(token.kind)];
    out += std::to_string(characters[token.end]);
    const bool closes = token.kind == TokenKind::kPunctuator &&
                        std::string_view(")]}").find(text[token.begin]) != std::string_view::npos;
    if (!closes) continue;
    if (token.bracket == BracketKind::kArguments) out += 'c';
    if (token.bracket == BracketKind::kObject) out += 'o';
    if (token.bracket == BracketKind::kBody) out += 'f';
    if (token.bracket == BracketKind::kMember) out += 'm';
  }
  return out;
}

class PackagedScripts : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    const std::string parser = ReadFile(kParser);
    ASSERT_FALSE(parser.empty()) << kParser << " is missing: scripts/setup.sh installs it";
    ASSERT_EQ(duk_peval_string(Api(), "var window = this"), 0);
    ASSERT_EQ(duk_peval_lstring(Api(), parser.data(), parser.size()), 0) << PopText();
    ASSERT_EQ(duk_peval_string(Api(), kDescribe), 0) << PopText();
  }

  bool Compiles(const std::string& text) {
    const bool compiles = duk_pcompile_lstring(Api(), 0, text.data(), text.size()) == 0;
    duk_pop(Api());
    return compiles;
  }

  // False if the parser rejects the script.
  bool ParserDescribes(const std::string& text, std::string* out) {
    duk_dup_top(Api());
    duk_push_lstring(Api(), text.data(), text.size());
    const bool parsed = duk_pcall(Api(), 1) == 0;
    *out = PopText();
    return parsed;
  }
};

// The first difference of two descriptions, with some context.
std::string Difference(const std::string& ours, const std::string& theirs) {
  const auto parted = std::mismatch(ours.begin(), ours.end(), theirs.begin(), theirs.end());
  const auto at = static_cast<size_t>(parted.first - ours.begin());
  const size_t from = at > 40 ? at - 40 : 0;
  return "ours:   " + ours.substr(from, 80) + "\ntheirs: " + theirs.substr(from, 80);
}

TEST_F(PackagedScripts, DoNotChangeAndHaveTheTokensThatTheParserFinds) {
  int compared = 0;
  for (const PackageRow& row : kPackages) {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::recursive_directory_iterator(row.folder)) {
      if (entry.is_regular_file() && entry.path().extension() == ".js") {
        paths.push_back(entry.path());
      }
    }
    std::sort(paths.begin(), paths.end());
    int files = 0;
    for (const fs::path& path : paths) {
      const std::string text = ReadFile(path);
      if (!Compiles(text)) continue;  // newer than the engine's language
      ++files;
      EXPECT_TRUE(RewriteCallAssignments(text) == text) << path;
      std::string theirs;
      if (text.size() > kMostParsed || !ParserDescribes(text, &theirs)) continue;
      ++compared;
      const std::string ours = Describe(text);
      EXPECT_TRUE(ours == theirs) << path << "\n" << Difference(ours, theirs);
    }
    EXPECT_GE(files, row.least_files) << row.folder;
  }
  RecordProperty("compared", compared);
  EXPECT_GE(compared, 100);
}

}  // namespace
}  // namespace mirolta::host
