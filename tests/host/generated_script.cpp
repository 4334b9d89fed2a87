#include "generated_script.h"

#include <iterator>
#include <string_view>

namespace mirolta::test {
namespace {

using std::string_view;

constexpr string_view kNames[] = {"a",   "b",        "$",        "_9",  "get",
                                  "set", "\xC3\xA9", "x\\u0041", "this"};
constexpr string_view kMembers[] = {"a", "if", "return", "function", "T", "$", "this", "get"};
constexpr string_view kValues[] = {"1",
                                   "0x1e",
                                   "1.5e+3",
                                   "2.",
                                   ".5",
                                   "1e-7",
                                   "'.T(1) = 2'",
                                   "\"it's\"",
                                   "'a\\\r\nb(1) = 2'",
                                   "'\\\\'",
                                   "'\\''",
                                   "'/*'",
                                   "null",
                                   "true",
                                   "/x/g",
                                   "/[/]'(1) = 2/",
                                   "/\\/\"/i",
                                   "/=(1) = 2/"};
constexpr string_view kGaps[] = {
    " ", "", "  ", "\t", "/**/", "/* o.T(1) = 2 ' */", "\xC2\xA0", "\xE2\x80\x83", "\xEF\xBB\xBF"};
constexpr string_view kLineGaps[] = {
    "\n",      "\r\n",     "\r",           "\xE2\x80\xA8", "// it's o.T(1) = 2\n",
    "// /*\r", "/* \n */", "\n--> it's\n", "<!-- it's\n",  " // \"\xE2\x80\xA9"};
constexpr string_view kBinary[] = {"+",  "-",  "*",   "/",   "%",  "<",  ">",          "<=",
                                   "==", "!=", "===", "!==", "&&", "||", "instanceof", "in",
                                   "<<", ">>", ">>>", "&",   "|",  "^"};
constexpr string_view kUnary[] = {"!", "-", "+", "~", "typeof", "void", "delete"};
constexpr string_view kAssignments[] = {
    "=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>=", ">>>="};

class Maker {
 public:
  explicit Maker(const std::function<uint32_t(uint32_t)>& choose) : choose_(choose) {}

  GeneratedScript Run() {
    const uint32_t count = 1 + choose_(6);
    for (uint32_t i = 0; i < count; ++i) Statement(3);
    return made_;
  }

 private:
  template <size_t kCount>
  string_view Pick(const string_view (&list)[kCount]) {
    return list[choose_(kCount)];
  }
  bool Maybe() { return choose_(3) == 2; }

  // Appends to both scripts: the same text, or one to each.
  void Both(string_view text) { Each(text, text); }
  void Each(string_view script, string_view rewritten) {
    made_.script += script;
    made_.rewritten += rewritten;
  }
  // White space without a line break; at least a space where tokens would merge.
  void Space() {
    const char last = made_.script.empty() ? '(' : made_.script.back();
    if (string_view("()[]{};,.\n").find(last) == string_view::npos) Both(" ");
    Both(Pick(kGaps));
  }
  void Gap() {
    Space();
    if (Maybe()) Both(Pick(kLineGaps)), Space();
  }
  void Put(string_view text) { Both(text), Gap(); }
  // The next token has to be on the same line.
  void PutOnLine(string_view text) { Both(text), Space(); }

  // ( Expression )
  void InParentheses(int depth) { Put("("), Expression(depth), Put(")"); }

  void List(int depth) {
    for (uint32_t i = choose_(3); i > 0; --i) {
      Assignment(depth);
      if (i > 1) Put(",");
    }
  }

  void Function(int depth, string_view head) {
    Put(head);
    if (Maybe()) Put("g");
    Body(depth, "a, b");
  }
  void Body(int depth, string_view parameters) {
    Put("("), Put(parameters), Put(")"), Put("{");
    ++functions_;
    for (uint32_t i = choose_(3); i > 0; --i) Inside(depth - 1);
    --functions_;
    Put("}");
  }

  void Object(int depth) {
    Put("{");
    for (uint32_t i = choose_(4); i > 0; --i) {
      switch (choose_(4)) {
        case 0:
          Put(Pick(kMembers)), Put(":"), Assignment(depth);
          break;
        case 1:
          Put("'q'"), Put(":"), Assignment(depth);
          break;
        case 2:
          Both("get "), Put(Pick(kMembers)), Body(depth, "");
          break;
        default:
          Both("set "), Put(Pick(kMembers)), Body(depth, "a");
          break;
      }
      if (i > 1) Put(",");
    }
    Put("}");
  }

  // A primary expression. At the start of a statement it is neither a function nor an object.
  void Primary(int depth, bool starts_statement = false) {
    switch (depth <= 0 ? choose_(2) : choose_(starts_statement ? 5 : 8)) {
      case 0:
        return Put(Pick(kNames));
      case 1:
        return Put(starts_statement ? "a" : Pick(kValues));
      case 2:
        return InParentheses(depth - 1);
      case 3:
        return Put("["), List(depth - 1), Put("]");
      case 4:
        Both("new "), Put("a"), Put("(");
        return List(depth - 1), Put(")");
      case 5:
        return Function(depth, "function");
      case 6:
        return Object(depth - 1);
      default:
        Both("new ");
        return Put("a");
    }
  }

  void Callee(int depth, bool starts_statement = false) {
    if (depth > 0 && Maybe()) return Put("("), Function(depth - 1, "function"), Put(")");
    Put(starts_statement || Maybe() ? "a" : Pick(kNames));
  }

  // A callable expression: a name followed by members and calls.
  void Chain(int depth, bool starts_statement = false) {
    Callee(depth, starts_statement);
    for (uint32_t i = choose_(3); i > 0; --i) {
      switch (choose_(3)) {
        case 0:
          Put("."), Put(Pick(kMembers));
          break;
        case 1:
          Put("["), Expression(depth - 1), Put("]");
          break;
        default:
          Put("("), List(depth - 1), Put(")");
          break;
      }
    }
  }

  // obj.Name(arguments), obj[name](arguments) or obj(arguments), and an assignment to it.
  void CallAssignment(int depth, bool starts_statement) {
    ++made_.call_assignments;
    if (choose_(4) == 0) {
      Each("a", "a[\"()=\"]"), Gap();
    } else {
      Chain(depth - 1, starts_statement), MemberOfCall(depth);
    }
    Put("("), List(depth - 1), Each(")", ").value"), Gap();
    Put(Pick(kAssignments)), Assignment(depth - 1);
  }

  void MemberOfCall(int depth) {
    switch (choose_(3)) {
      case 0: {
        Each(".", ""), Gap();
        const std::string name(Pick(kMembers));
        Each(name, "[\"" + name + "()=\"]");
        return Gap();
      }
      case 1:
        Each("[", "[("), Gap(), Expression(depth - 1), Each("]", ")+\"()=\"]");
        return Gap();
      default:
        Put("."), Put(Pick(kMembers)), Put("("), List(0), Each(")", ")[\"()=\"]");
        return Gap();
    }
  }

  // An assignment target, possibly in parentheses.
  void Target(int depth, bool starts_statement = false) {
    switch (choose_(3)) {
      case 0:
        Chain(depth - 1, starts_statement), Put(".");
        return PutOnLine(Pick(kMembers));
      case 1:
        Chain(depth - 1, starts_statement), Put("["), Expression(depth - 1);
        return PutOnLine("]");
      default:
        Put("("), Target(depth - 1);
        return PutOnLine(")");
    }
  }

  void Assignment(int depth, bool starts_statement = false) {
    switch (depth <= 0 ? 0 : choose_(9)) {
      case 0:
        return Primary(depth, starts_statement);
      case 1:
        return CallAssignment(depth, starts_statement);
      case 2:
        return Target(depth, starts_statement), Put(Pick(kAssignments)), Assignment(depth - 1);
      case 3:
        Chain(depth, starts_statement), Put(Pick(kBinary));
        return Primary(depth - 1);
      case 4:
        Chain(depth, starts_statement), Put("?"), Assignment(depth - 1), Put(":");
        return Assignment(depth - 1);
      case 5:
        Put(Pick(kUnary));
        return Primary(depth - 1);
      case 6:
        Put(Maybe() ? "++" : "--");
        return Target(depth - 1);
      case 7:
        Target(depth - 1, starts_statement);
        return Put(Maybe() ? "++" : "--");
      default:
        return Chain(depth, starts_statement);
    }
  }

  void Expression(int depth, bool starts_statement = false) {
    Assignment(depth, starts_statement);
    if (depth > 0 && Maybe()) Put(","), Assignment(depth - 1);
  }

  void End() {
    if (Maybe() && !is_alone_) Both("\nvar "), Put("a");
    Put(";");
  }

  // A statement where exactly one is allowed, and one in a list.
  void SubStatement(int depth) { StatementThat(true, depth); }
  void Inside(int depth) { StatementThat(false, depth); }
  void StatementThat(bool is_alone, int depth) {
    const bool was_alone = is_alone_;
    is_alone_ = is_alone;
    Statement(depth);
    is_alone_ = was_alone;
  }

  void Statement(int depth) {
    switch (depth <= 0 ? choose_(3) : choose_(17)) {
      case 0:
        return Put(";");
      case 1:
        return Expression(depth, true), End();
      case 2:
        return Put("("), Put("a"), Put(")"), Put("="), Expression(depth), End();
      case 3:
        Put("if"), InParentheses(depth - 1), SubStatement(depth - 1);
        if (Maybe()) Both("else "), SubStatement(depth - 1);
        return;
      case 4:
        // The initializer must not contain the operator in.
        Put("for"), Put("("), Put("a"), Put("="), InParentheses(depth - 1), Put(";"), Put(";"),
            Expression(depth - 1);
        return Put(")"), SubStatement(depth - 1);
      case 5:
        Put("for"), Put("("), Both("var "), Put("a"), Both("in "), Expression(depth - 1);
        return Put(")"), SubStatement(depth - 1);
      case 6:
        return Put("while"), InParentheses(depth - 1), SubStatement(depth - 1);
      case 7:
        Both("do "), SubStatement(depth - 1), Put("while"), InParentheses(depth - 1);
        return Maybe() ? Put(";") : Gap();
      case 8:
        return Put("with"), InParentheses(depth - 1), SubStatement(depth - 1);
      case 9:
        Put("switch"), InParentheses(depth - 1), Put("{");
        for (uint32_t i = choose_(3); i > 0; --i) {
          Both("case "), Expression(depth - 1), Put(":"), Inside(depth - 1);
        }
        Put("default"), Put(":"), Inside(depth - 1);
        return Put("}");
      case 10:
        Put("try"), Put("{"), Inside(depth - 1), Put("}"), Put("catch"), Put("(");
        Put("a"), Put(")"), Put("{"), Inside(depth - 1), Put("}");
        if (Maybe()) Put("finally"), Put("{"), Inside(depth - 1), Put("}");
        return;
      case 11:
        Put("{"), Inside(depth - 1), Inside(depth - 1);
        return Put("}");
      case 12: {
        const std::string label = "l" + std::to_string(depth) + std::to_string(labels_++);
        Put(label), Put(":"), Put("for"), Put("("), Put(";"), Put(";"), Put(")"), Put("{");
        Inside(depth - 1);
        // The line break ends the statement, so the parenthesis starts the next.
        Both(Maybe() ? "break " : "continue "), Both(label), Both("\n");
        Put("("), Put("a"), Put(")"), Put("="), Expression(depth - 1), End();
        --labels_;
        return Put("}");
      }
      case 13:
        if (functions_ == 0) return Put("debugger"), Put(";");
        Both("return");
        if (Maybe()) return Both("\n;"), Gap();
        return Both(" "), Expression(depth - 1), End();
      case 14:
        return Both("throw "), Expression(depth - 1), End();
      case 15:
        Both("function "), Put("f"), Body(depth, "a");
        return Gap();
      default:
        Both("var "), Put("a"), Put("="), Assignment(depth - 1), Put(","), Put("b");
        return End();
    }
  }

  const std::function<uint32_t(uint32_t)>& choose_;
  GeneratedScript made_;
  int labels_ = 0;
  int functions_ = 0;  // around this place
  bool is_alone_ = false;
};

}  // namespace

GeneratedScript MakeScript(const std::function<uint32_t(uint32_t)>& choose) {
  return Maker(choose).Run();
}

}  // namespace mirolta::test
