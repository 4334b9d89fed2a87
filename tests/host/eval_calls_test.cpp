#include "source/eval_calls.h"

#include <gtest/gtest.h>

#include "engine/script_context.h"
#include "host_fixture.h"
#include "source/member_uses.h"

namespace mirolta::host {
namespace {

struct RewriteCase {
  const char* script;
  const char* rewritten;
};

TEST(EvalCalls, CallsOfEvalAreRewritten) {
  const RewriteCase kCases[] = {
      {"eval(x)", "eval(__mirolta_code(eval,x))"},
      {"eval()", "eval(__mirolta_code(eval))"},
      {"eval /* a */ ( x , y )", "eval /* a */ (__mirolta_code(eval, x , y ))"},
      {"return eval\n(x)\n(1)", "return eval\n(__mirolta_code(eval,x))\n(1)"},
      {"eval(eval(x))", "eval(__mirolta_code(eval,eval(__mirolta_code(eval,x))))"},
      {"if (a) eval((x))", "if (a) eval(__mirolta_code(eval,(x)))"},
      {"a\neval(x)", "a\neval(__mirolta_code(eval,x))"},
  };
  for (const RewriteCase& one : kCases) {
    EXPECT_EQ(RewriteEvalCalls(one.script), one.rewritten) << one.script;
  }
}

TEST(EvalCalls, OtherUsesOfTheNameDoNotChange) {
  const char* kScripts[] = {
      "",
      "f(x)",
      "o.eval(x)",
      "new eval(x)",
      "function eval(x) { }",
      "x = { get eval() { return 1 } }",
      "(0, eval)(x)",
      "(eval)(x)",
      "e = eval; (x)",
      "'eval(x)'",
      "// eval(x)",
      "/eval(x)/",
      "evals(x)",
      "eval(x",
      "eval[0](x)",
  };
  for (const char* script : kScripts) EXPECT_EQ(RewriteEvalCalls(script), script);
}

class EvalCallsEngine : public EngineTest {
 protected:
  // Runs a script that the host rewrites and notes, and returns the text of its value.
  std::string RunNoted(const char* script) {
    const std::string text = RewriteEvalCalls(script);
    Sites().NoteScript(Api(), FindMemberUses(text));
    return Run(text.c_str());
  }
  CallSites& Sites() { return engine_->Context().call_sites; }
  NameUse UseOf(const char* name) { return *Sites().UseOf(KeepName(Api(), name)); }
};

TEST_F(EvalCallsEngine, TheCodeOfADirectCallIsNotedAndSeesLocalVariables) {
  const NameUse* const use = Sites().UseOf(KeepName(Api(), "Later"));
  EXPECT_EQ(RunNoted("(function () {"
                     "  var local = 7;"
                     "  return eval('if (false) local.Later(); local') + eval('2', 3) + eval(4) +"
                     "         typeof eval() })()"),
            "13undefined");
  EXPECT_TRUE(Sites().KnowsAllCode());
  EXPECT_TRUE(use->is_called);
  EXPECT_FALSE(use->is_read);
  EXPECT_FALSE(Sites().ReadsComputed());
  EXPECT_EQ(RunNoted("eval('if (false) { x.Later; x[y]; (x)() } 1')"), "1");
  EXPECT_TRUE(use->is_read);
  EXPECT_TRUE(Sites().ReadsComputed());
  EXPECT_TRUE(Sites().CallsComputed());
  EXPECT_TRUE(Sites().KnowsAllCode());
}

TEST_F(EvalCallsEngine, CodeThatIsNotNotedIsRemembered) {
  for (const char* script : {"var e = eval; e('1')", "(0, eval)('1')", "this['ev' + 'al']('1')",
                             "eval(\"eval('1')\")", "Function('1')(); 1", "new Function('1')(); 1",
                             "try { eval(missing()) } catch (e) { } 1"}) {
    engine_.emplace();
    Start(&*engine_);
    EXPECT_EQ(RunNoted(script), "1") << script;
    EXPECT_FALSE(Sites().KnowsAllCode()) << script;
  }
}

TEST_F(EvalCallsEngine, AnotherEvalNotesNothing) {
  EXPECT_EQ(RunNoted("var e = eval;"
                     "(function (eval) { return eval('x.Unseen()') + eval('b') })(function (text) {"
                     "  return text })"),
            "x.Unseen()b");
  EXPECT_FALSE(Sites().KnowsAllCode());
  EXPECT_FALSE(UseOf("Unseen").is_called);
}

}  // namespace
}  // namespace mirolta::host
