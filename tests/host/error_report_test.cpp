#include "engine/error_report.h"

#include <gtest/gtest.h>
#include <stdio.h>

#include <iterator>
#include <random>
#include <string>

#include "engine/script_context.h"
#include "engine/script_engine.h"
#include "host_fixture.h"
#include "platform.h"
#include "source/script_source.h"
#include "source/source_lines.h"

namespace mirolta::host {
namespace {

using std::string;
using std::string_view;
using namespace std::string_literals;

// What a script whose bytes these are writes to standard error.
string ReportOf(const string& bytes, const string& charset = "") {
  ScriptText script;
  string problem;
  if (!ScriptFromBytes("a.js", bytes, {charset}, &script, &problem)) return "!" + problem;
  testing::internal::CaptureStderr();
  const int status = RunScript(script, RunOptions());
  string report = testing::internal::GetCapturedStderr();
  EXPECT_EQ(status, report.empty() ? 0 : 1);
  return report;
}

constexpr char kSyntax[] = ": error 0x800A03EA (-2146827286): SyntaxError: ";

struct SyntaxCase {
  const char* script;
  const char* place;
  const char* description;
  const char* line;    // as shown
  const char* marker;  // the spaces before it
};
constexpr SyntaxCase kSyntaxCases[] = {
    {"var x = = 1;", "1, 9", "unexpected =", "var x = = 1;", "        "},
    {"var x = =\n1;", "1, 9", "unexpected =", "var x = =", "        "},
    {"var x =\n\n", "1, 8", "unexpected end of the script", "var x =", "       "},
    {"var x;\r\n\r\n  f(;", "3, 5", "unexpected ;", "f(;", "  "},
    {"f(\n  1, 2;", "2, 7", "unexpected ;", "1, 2;", "    "},
    {"\n\t'abc\ny;", "2, 2", "unterminated string", "'abc", ""},
    {"y;\r/* foo\r\rbar", "2, 1", "unterminated comment", "/* foo", ""},
    {"y; // /*\n/**/ /* foo", "2, 6", "unterminated comment", "/**/ /* foo", "     "},
    {"y; /abc", "1, 4", "unterminated regexp", "y; /abc", "   "},
    {"x = 5 # 3;", "1, 7", "unexpected #", "x = 5 # 3;", "      "},
    {"function f() {\n  break a;\n}", "2, 3", "invalid label", "break a;", ""},
    {"y;\n}", "2, 1", "unexpected }", "}", ""},
    {"a 'b\\\nc'", "1, 3", "unexpected text", "a 'b\\", "  "},
    {"if (a) { b(); else c(); }", "1, 15", "unexpected else", "if (a) { b(); else c(); }",
     "              "},
    {"o.T(1) = 2; o.T(3) = = 4;", "1, 22", "unexpected =", "o.T(1) = 2; o.T(3) = = 4;",
     "                     "},
    {"o.T(1) = 2;\no.T(3) = 5 6;", "2, 12", "unexpected 6", "o.T(3) = 5 6;", "           "},
    {"'use strict';\nwith (x) {}", "2, 1", "with in strict mode", "with (x) {}", ""},
    {"/*\f\v\xC2\xA0*/ 'a' 'b';", "1, 13", "unexpected 'b'", "/*  \xC2\xA0*/ 'a' 'b';",
     "            "},
    {"y;\xE2\x80\xA8z;\xE2\x80\xA9 ) ;", "3, 2", "unexpected )", ") ;", ""},
};

string WithMarker(const SyntaxCase& one) {
  return "a.js("s + one.place + ")" + kSyntax + one.description + "\n    " + one.line + "\n    " +
         one.marker + "^\n";
}

TEST(ErrorReport, SyntaxErrorsHaveTheirLineAndColumn) {
  for (const SyntaxCase& one : kSyntaxCases) {
    EXPECT_EQ(ReportOf(one.script), WithMarker(one)) << one.script;
  }
}

string InUtf16(string_view utf8, bool is_big) {
  string bytes;
  for (size_t at = 0; at < utf8.size(); ++at) {
    unsigned unit = static_cast<uint8_t>(utf8[at]);
    if (unit >= 0xC0) {
      unit = (unit & 0x1F) << 6 | (static_cast<uint8_t>(utf8[++at]) & 0x3F);
    }
    const auto low = static_cast<char>(unit & 0xFF);
    const auto high = static_cast<char>(unit >> 8);
    bytes += {is_big ? high : low, is_big ? low : high};
  }
  return bytes;
}

string InLatin1(string_view utf8) {
  string bytes;
  const string units = InUtf16(utf8, false);
  for (size_t i = 0; i < units.size(); i += 2) bytes += units[i];
  return bytes;
}

TEST(ErrorReport, PlacesAreTheSameInEveryEncoding) {
  // Characters of two bytes in the lines before and in the line itself.
  const string before = "'\xC3\xA9\xC3\xA9';\r\n\r\n";
  const string script = before + "o.T('\xC3\xA9') = '\xC3\xA9' = = 1;";
  const string report = "a.js(3, 18)"s + kSyntax +
                        "unexpected =\n    o.T('\xC3\xA9') = '\xC3\xA9' = = 1;\n" +
                        string(4 + 17, ' ') + "^\n";
  const string failing = before + "  null.x('\xC3\xA9');";
  const string failing_report =
      "a.js(3, 3): error 0x800A138F (-2146823281): TypeError: cannot read property 'x' of null\n"
      "    null.x('\xC3\xA9');\n    ^\n";
  const struct {
    const char* name;
    string mark;
    string (*encode)(string_view);
    const char* charset;
  } kEncodings[] = {
      {"UTF-8", "", [](string_view text) { return string(text); }, ""},
      {"UTF-8 with mark", "\xEF\xBB\xBF", [](string_view text) { return string(text); }, ""},
      {"UTF-16LE", "", [](string_view text) { return InUtf16(text, false); }, ""},
      {"UTF-16LE with mark", "\xFF\xFE", [](string_view text) { return InUtf16(text, false); }, ""},
      {"UTF-16BE", "", [](string_view text) { return InUtf16(text, true); }, ""},
      {"UTF-16BE with mark", "\xFE\xFF", [](string_view text) { return InUtf16(text, true); }, ""},
      {"windows-1252", "", InLatin1, ""},
      {"ISO-8859-1", "", InLatin1, "ISO-8859-1"},
      {"1252", "", InLatin1, "1252"},
  };
  for (const auto& one : kEncodings) {
    EXPECT_EQ(ReportOf(one.mark + one.encode(script), one.charset), report) << one.name;
    EXPECT_EQ(ReportOf(one.mark + one.encode(failing), one.charset), failing_report) << one.name;
    for (const SyntaxCase& row : kSyntaxCases) {
      if (string_view(row.script).find_first_of("\xC2\xE2") != string_view::npos) continue;
      EXPECT_EQ(ReportOf(one.mark + one.encode(row.script), one.charset), WithMarker(row))
          << one.name << ": " << row.script;
    }
  }
}

TEST(ErrorReport, WideCharactersTakeTwoColumnsAndCombiningNone) {
  EXPECT_EQ(LineWithMarker("'\xE4\xB8\xAD\xF0\x9F\x98\x80' x", 6),
            "    '\xE4\xB8\xAD\xF0\x9F\x98\x80' x\n" + string(4 + 7, ' ') + "^\n");
  EXPECT_EQ(LineWithMarker("x\xE4\xB8\xAD", 3), "    x\xE4\xB8\xAD\n" + string(4 + 3, ' ') + "^\n");
  EXPECT_EQ(LineWithMarker("'e\xCC\x81' x", 6), "    'e\xCC\x81' x\n" + string(4 + 4, ' ') + "^\n");
}

constexpr char kType[] =
    ": error 0x800A138F (-2146823281): TypeError: cannot read property 'x' of null\n";

TEST(ErrorReport, RuntimeErrorsHaveTheirStatementAndCalls) {
  const struct {
    const char* script;
    string report;
  } kCases[] = {
      {"1;\n\n  null.x;", "a.js(3, 3)"s + kType + "    null.x;\n    ^\n"},
      {"a = 1; null.x;", "a.js(1)"s + kType + "    a = 1; null.x;\n"},
      {"function f() {\n  null.x;\n}\nfunction g() { f(); }\ng();",
       "a.js(2, 3)"s + kType +
           "    null.x;\n    ^\n    at f (a.js:2)\n    at g (a.js:4)\n    at a.js:5\n"},
      {"[1].forEach(function () {\n  null.x;\n});",
       "a.js(2, 3)"s + kType + "    null.x;\n    ^\n    at a.js:2\n    at a.js:3\n"},
      {"var o = { m: function () {\n  null.x; } };\nnew o.m();",
       "a.js(2, 3)"s + kType + "    null.x; } };\n    ^\n    at a.js:2\n    at a.js:3\n"},
      {"function f(n) {\n  if (n)\n    f(n - 1);\n  null.x; }\nf(3);",
       "a.js(4, 3)"s + kType +
           "    null.x; }\n    ^\n    at f (a.js:4)\n    at f (a.js:3), 3 times\n    at a.js:5\n"},
      {"function f(n) {\n  if (n)\n    f(n - 1);\n  null.x; }\nf(30);",
       "a.js(4, 3)"s + kType +
           "    null.x; }\n    ^\n    at f (a.js:4)\n    at f (a.js:3), 9 times\n    ...\n"},
      {"eval('\\nnull.x');",
       "code of eval(2)"s + kType + "    at eval (code of eval:2)\n    at a.js:1\n"},
      {"eval('x = = 1');", "code of eval(1)"s + kSyntax + "parse error\n"},
      {"new Function('null.x')();",
       "code of Function(1)"s + kType + "    at code of Function:1\n    at a.js:1\n"},
      {"new RegExp('(');",
       "a.js(1, 1): error 0x800A1399 (-2146823271): SyntaxError: unexpected end of pattern\n"
       "    new RegExp('(');\n    ^\n"},
      {"throw new Error(-2147211401, 'Boom.');",
       "a.js(1, 1): error 0x80042777 (-2147211401): Boom.\n"
       "    throw new Error(-2147211401, 'Boom.');\n    ^\n"},
      {"throw new Error(5, '');",
       "a.js(1, 1): error 0x00000005 (5)\n    throw new Error(5, '');\n    ^\n"},
      {"throw new Error(5, 'a\\n    at b (a.js:7)');",
       "a.js(1, 1): error 0x00000005 (5): a\n    at b (a.js:7)\n"
       "    throw new Error(5, 'a\\n    at b (a.js:7)');\n    ^\n"},
      {"function f() {\n  throw new Error(5, 'a\\n    at b (a.js:7)'); }\nf();",
       "a.js(2, 3): error 0x00000005 (5): a\n    at b (a.js:7)\n"
       "    throw new Error(5, 'a\\n    at b (a.js:7)'); }\n    ^\n    at f (a.js:2)\n    at "
       "a.js:3\n"},
      {"var e = new Error(5, 'x');\ne.source = 'S';\nthrow e;",
       "a.js(1, 1): error 0x00000005 (5): S: x\n    var e = new Error(5, 'x');\n    ^\n"},
      {"throw 42;",
       "a.js(1, 1): error 0x800A139E (-2146823266): Exception thrown and not caught: 42\n"
       "    throw 42;\n    ^\n"},
      {"function f() {\n  throw 'x'; }\nfunction g() { f(); }\ng();",
       "a.js(2, 3): error 0x800A139E (-2146823266): Exception thrown and not caught: x\n"
       "    throw 'x'; }\n    ^\n    at f (a.js:2)\n    at g (a.js:3)\n    at a.js:4\n"},
      {"throw {\n toString: function () { throw 1; } };",
       "a.js(2): error 0x800A139E (-2146823266): Exception thrown and not caught: 1\n"
       "    toString: function () { throw 1; } };\n"},
      {"WScript.Echo({ toString: function f() {\n  throw 5; }\n});",
       "a.js(2, 3): error 0x800A139E (-2146823266): Exception thrown and not caught: 5\n"
       "    throw 5; }\n    ^\n    at f (a.js:2)\n    at a.js:3\n"},
      {"[1].forEach(function () { throw 5; }); ",
       "a.js(1): error 0x800A139E (-2146823266): Exception thrown and not caught: 5\n"
       "    [1].forEach(function () { throw 5; });\n    at a.js:1\n    at a.js:1\n"},
      {"throw undefined;",
       "a.js(1, 1): error 0x800A139E (-2146823266): Exception thrown and not caught: undefined\n"
       "    throw undefined;\n    ^\n"},
      {"throw 'a\\u0000\\ud800';",
       "a.js(1, 1): error 0x800A139E (-2146823266): Exception thrown and not caught: "
       "a\0\xEF\xBF\xBD\n"
       "    throw 'a\\u0000\\ud800';\n    ^\n"s},
  };
  for (const auto& one : kCases) EXPECT_EQ(ReportOf(one.script), one.report) << one.script;
}

// Runs a script on an engine whose stack has other values.
class ErrorOnAStack : public EngineTest {
 protected:
  string ReportOf(const char* text) {
    ScriptText script;
    script.name = "a.js";
    script.text = text;
    engine_->Context().scripts = {&script};
    duk_push_string(Api(), "below");
    duk_push_string(Api(), "a.js");
    const bool is_compiled = duk_pcompile_string_filename(Api(), 0, text) == 0;
    if (is_compiled) {
      EXPECT_NE(duk_pcall(Api(), 0), 0) << text;
    }
    const duk_idx_t top = duk_get_top(Api());
    testing::internal::CaptureStderr();
    ReportUncaught(Api(), is_compiled);
    EXPECT_EQ(duk_get_top(Api()), top) << text;
    engine_->Context().scripts.clear();
    return testing::internal::GetCapturedStderr();
  }
};

TEST_F(ErrorOnAStack, IsTheValueOnTop) {
  EXPECT_EQ(ReportOf("function f() {\n  null.x; }\nf();"),
            "a.js(2, 3)"s + kType + "    null.x; }\n    ^\n    at f (a.js:2)\n    at a.js:3\n");
  EXPECT_EQ(ReportOf("x = = 1;"),
            "a.js(1, 5)"s + kSyntax + "unexpected =\n    x = = 1;\n        ^\n");
}

TEST(ErrorReport, AScriptThatSucceedsHasNone) {
  EXPECT_EQ(ReportOf("try { null.x; } catch (e) { }"), "");
  EXPECT_EQ(ReportOf(""), "");
  EXPECT_EQ(ReportOf("\xEF\xBB\xBF"), "");
  EXPECT_EQ(ReportOf("\f\v\xC2\xA0\xEF\xBB\xBF\xE2\x80\xA8\xE2\x80\xA9\xE3\x80\x80;"), "");
}

TEST(ErrorReport, AFailingAccessorDoesNotHideTheError) {
  EXPECT_EQ(ReportOf("var e = new Error(5, 'x');\n"
                     "Object.defineProperty(e, 'stack', { get: function () { throw 1; } });\n"
                     "throw e;"),
            "a.js(1, 1): error 0x00000005 (5): x\n    var e = new Error(5, 'x');\n    ^\n");
  // The line where another value was thrown is not the error's.
  EXPECT_EQ(ReportOf("try { throw 1; } catch (e) {}\nvar e = new Error(5, 'x');\n"
                     "Object.defineProperty(e, 'number', { get: function () { throw 1; } });\n"
                     "throw e;"),
            "a.js: error 0x800A139E (-2146823266): The thrown value cannot be converted to text\n");
}

// Thrown by the engine when there is no memory for an error.
TEST(ErrorReport, AnErrorOfErrorHandlingIsMissingMemory) {
  const string report =
      ReportOf("var e = Object.create(Error.prototype); e.name = 'DoubleError'; throw e;");
  EXPECT_NE(report.find(": error 0x8007000E (-2147024882): Out of memory\n"), string::npos)
      << report;
}

// Tokens in any order: the search for the place ends and stays within the script.
TEST(ErrorReport, RandomScriptsHaveAPlaceWithin) {
  const string_view kTokens[] = {"a",      "'b'",   "1",    "/c/",      "(",      ")",     "{",
                                 "}",      "[",     "]",    ";",        ",",      "=",     "+",
                                 "++",     ".d",    ":",    "?",        "\n",     "if",    "/",
                                 "return", "var",   "new",  "function", "try",    "catch", "else",
                                 "/*",     "throw", "case", "'",        "switch", "\r\n"};
  std::minstd_rand random(1);
  size_t place_count = 0;
  for (int i = 0; i < 500; ++i) {
    string script;
    for (auto left = random() % 9; left > 0; --left) {
      script += kTokens[random() % std::size(kTokens)];
      script += ' ';
    }
    const string report = ReportOf(script);
    int line = 0, column = 0;
    if (report.find("SyntaxError") == string::npos ||
        sscanf(report.c_str(), "a.js(%d, %d)", &line, &column) != 2) {
      continue;
    }
    ++place_count;
    EXPECT_LE(line, CountLines(script)) << script;
    EXPECT_LE(column, CountCharacters(LineOf(script, line)) + 1) << script;
  }
  EXPECT_GT(place_count, 250u);
}

// The engine sees the error when it compiles the function for a second time.
TEST(ErrorReport, ATokenOfAnotherLineIsNotTheErrors) {
  EXPECT_EQ(ReportOf("function f(a, a) {\n  'use strict';\n}\n"),
            "a.js(2)"s + kSyntax + "invalid argument name\n    'use strict';\n");
}

TEST(ErrorReport, LongScriptsHaveTheLineOfASyntaxErrorOnly) {
  string script;
  while (script.size() < (256 << 10)) script += "x = 1;\n";
  const string place = std::to_string(script.size() / 7 + 1);
  EXPECT_EQ(ReportOf(script + "x = = 1;"),
            "a.js(" + place + ")" + kSyntax + "parse error\n    x = = 1;\n");
}

TEST(ErrorReport, BracketsMayBeTooDeep) {
  EXPECT_EQ(ReportOf(string(100000, '(')),
            "a.js(1): error 0x800A001C (-2146828260): RangeError: compiler recursion limit\n    " +
                string(100, '(') + "...\n");
}

TEST(ErrorReport, ALongLineIsCutAroundTheColumn) {
  const string left(200, 'a'), right(200, 'b');
  EXPECT_EQ(
      LineWithMarker(left + "X" + right, 201),
      "    ..." + string(50, 'a') + "X" + string(49, 'b') + "...\n" + string(57, ' ') + "^\n");
  EXPECT_EQ(LineWithMarker("X" + right, 1), "    X" + string(99, 'b') + "...\n    ^\n");
  EXPECT_EQ(LineWithMarker(left + "X", 201),
            "    ..." + string(99, 'a') + "X\n" + string(106, ' ') + "^\n");
  EXPECT_EQ(LineWithMarker(left, 201),
            "    ..." + string(100, 'a') + "\n" + string(107, ' ') + "^\n");
  EXPECT_EQ(LineWithMarker(string(300, ' ') + "x", 301), "    x\n    ^\n");
  EXPECT_EQ(LineWithMarker(left, 0), "    " + string(100, 'a') + "...\n");
  EXPECT_EQ(LineWithMarker(string((1 << 20) + 1, 'a'), 5), "");
  const string longest(100, 'a');
  EXPECT_EQ(LineWithMarker(longest, 100), "    " + longest + "\n" + string(103, ' ') + "^\n");
}

TEST(ErrorReport, ALineIsShownWithoutItsIndentationAndControlCharacters) {
  EXPECT_EQ(LineWithMarker("\t  a\tb\x1B[0m", 6), "    a b [0m\n      ^\n");
  EXPECT_EQ(LineWithMarker("  a", 0), "    a\n");
  EXPECT_EQ(LineWithMarker("", 0), "");
  EXPECT_EQ(LineWithMarker("a", 2), "    a\n     ^\n");
}

TEST(ErrorReport, CallsAreSplit) {
  const Calls calls = SplitCalls(
      "Error\n    at [anon] (duk_js_var.c:1) internal\n    at f (x (1).js:12) strict construct\n"
      "    at each () native strict\n    at g (mirolta-host: bytes.js:7)\n    at global (x "
      "(1).js:3) preventsyield\n    at a b (y:z:4)\n"
      "    at no place\n    [...]",
      {"x (1).js"});
  ASSERT_EQ(calls.frames.size(), 3u);
  EXPECT_TRUE(calls.are_more);
  const struct {
    const char* function;
    const char* file;
    int line;
  } kExpected[] = {{"f", "x (1).js", 12}, {"", "x (1).js", 3}, {"a b", "y:z", 4}};
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(calls.frames[i].function, kExpected[i].function);
    EXPECT_EQ(calls.frames[i].file, kExpected[i].file);
    EXPECT_EQ(calls.frames[i].line, kExpected[i].line);
  }
  EXPECT_FALSE(SplitCalls("Error\n    at f (a:1)", {}).are_more);
  EXPECT_TRUE(SplitCalls("", {}).frames.empty());
}

}  // namespace
}  // namespace mirolta::host
