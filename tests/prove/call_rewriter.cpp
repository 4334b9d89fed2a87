// The rewriting of assignments to calls against a small grammar, whose every expression of a few nodes is
// written twice: as a script has it, and as it is after rewriting. Rewriters with a planted fault each must be
// reported.
//
//   call_rewriter          expressions of up to five nodes
//   call_rewriter --full   of up to six
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "source/call_assignment.h"
#include "verdict.h"

namespace mirolta::host {

namespace {

// An expression: a name, literal, member, call, index, or one in parentheses.
struct Expression {
  std::string script;
  std::string rewritten;
  std::string as_target;  // of an assignment
  // What follows as the callee of a call that is a target: the rewritten callee with the suffix.
  std::string as_callee;
};
using Expressions = std::vector<Expression>;

const std::string kSuffixed = "[\"()=\"]";

Expression Literal(const std::string& text) {
  return {text, text, text, ""};
}
// Not a call: its form as a target is that elsewhere.
Expression Plain(const std::string& script, const std::string& rewritten) {
  return {script, rewritten, rewritten, rewritten + kSuffixed};
}
Expression Member(const Expression& object) {
  Expression all = Plain(object.script + ".b", object.rewritten + ".b");
  all.as_callee = object.rewritten + "[\"b()=\"]";
  return all;
}
Expression Index(const Expression& object, const Expression& index) {
  Expression all = Plain(object.script + "[" + index.script + "]",
                         object.rewritten + "[" + index.rewritten + "]");
  all.as_callee = object.rewritten + "[(" + index.rewritten + ")+\"()=\"]";
  return all;
}
Expression Call(const Expression& callee, const std::string& script, const std::string& rewritten) {
  Expression all =
      Plain(callee.script + "(" + script + ")", callee.rewritten + "(" + rewritten + ")");
  // A literal is not callable; such a call stays.
  if (!callee.as_callee.empty()) all.as_target = callee.as_callee + "(" + rewritten + ").value";
  return all;
}

struct Operator {
  const char* text;
  bool assigns;
};
constexpr Operator kOperators[] = {{"=", true},     {" += ", true}, {">>>=", true}, {" == ", false},
                                   {"=== ", false}, {"/", false},   {" <= ", false}};

// Grammar holds the expressions by their number of nodes; assignments and other operations are in
// `all` only, since they are no operands without parentheses.
struct Grammar {
  std::vector<Expressions> operands;
  std::vector<Expressions> all;

  explicit Grammar(size_t most) : operands(most + 1), all(most + 1) {
    operands[1] = {Plain("a", "a"), Plain("this", "this"), Literal("'(1)='"), Literal("/(1)=/"),
                   Literal("1")};
    all[1] = operands[1];
    for (size_t size = 2; size <= most; ++size) Make(size);
  }

  void Make(size_t size) {
    Expressions& to = operands[size];
    for (const Expression& one : operands[size - 1]) {
      if (one.script != "1") to.push_back(Member(one));  // "1." is a number
      to.push_back(Call(one, "", ""));
    }
    for (const Expression& one : all[size - 1])
      to.push_back(Plain("(" + one.script + ")", "(" + one.rewritten + ")"));
    for (size_t left = 1; left + 1 < size; ++left) {
      for (const Expression& one : operands[left]) {
        for (const Expression& other : all[size - 1 - left]) {
          to.push_back(Index(one, other));
          to.push_back(Call(one, other.script, other.rewritten));
        }
      }
    }
    all[size] = to;
    for (size_t left = 1; left + 1 < size; ++left) {
      for (const Expression& one : operands[left]) {
        for (const Expression& other : all[size - 1 - left]) {
          for (const Operator& op : kOperators) {
            // A comment would begin.
            if (op.text == std::string_view("/") && other.script[0] == '/') continue;
            all[size].push_back(
                Plain(one.script + op.text + other.script,
                      (op.assigns ? one.as_target : one.rewritten) + op.text + other.rewritten));
          }
        }
      }
    }
  }
};

using Rewriter = std::string (*)(std::string_view script);

// Rewriters that are wrong for few scripts.
std::string ForgetsShifts(std::string_view script) {
  const std::string rewritten = RewriteCallAssignments(script);
  return script.find(")>>>=") != script.npos ? std::string(script) : rewritten;
}
std::string ReadsLiterals(std::string_view script) {
  std::string rewritten = RewriteCallAssignments(script);
  const size_t at = rewritten.find("/(1)=/(");
  return at != rewritten.npos ? rewritten.insert(at + 4, ".value") : rewritten;
}

bool Run(const char* name, Rewriter rewrite, const Grammar& grammar, bool is_planted) {
  uint64_t scripts = 0, wrong = 0;
  for (const Expressions& expressions : grammar.all) {
    for (const Expression& one : expressions) {
      for (const char* before : {"", "if (a) ", "a;\n", "{} "}) {
        ++scripts;
        const std::string script = before + one.script, expected = before + one.rewritten;
        const std::string rewritten = rewrite(script);
        // What is rewritten once has no assignment to a call any more.
        if (rewritten == expected && RewriteCallAssignments(rewritten) == rewritten) continue;
        if (wrong++ == 0 && !is_planted) {
          std::printf("%s\n  becomes   %s\n  and not   %s\n", script.c_str(), rewritten.c_str(),
                      expected.c_str());
        }
      }
    }
  }
  return prove::Report(name, scripts, "scripts", wrong, is_planted);
}

}  // namespace

}  // namespace mirolta::host

int main(int argc, char** argv) {
  using namespace mirolta::host;
  const bool is_full = mirolta::prove::WantsAll(argc, argv);
  const Grammar few(5);
  bool holds = is_full ? Run("call rewriter", RewriteCallAssignments, Grammar(6), false)
                       : Run("call rewriter", RewriteCallAssignments, few, false);
  holds &= Run("call rewriter that forgets shifts", ForgetsShifts, few, true);
  holds &= Run("call rewriter that reads literals", ReadsLiterals, few, true);
  return holds ? 0 : 1;
}
