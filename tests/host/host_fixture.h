// What the tests of the host share: a started engine.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "engine/script_engine.h"

namespace mirolta::host {

class EngineTest : public testing::Test {
 protected:
  void SetUp() override {
    engine_.emplace();
    Start(&*engine_);
  }
  // The engine ends before the members of a derived fixture do.
  void TearDown() override { engine_.reset(); }

  static void Start(ScriptEngine* engine) {
    std::string problem;
    ASSERT_TRUE(engine->Start(&problem)) << problem;
  }
  duk_context* Api() const { return engine_->Api(); }

  // Pops the value on top of the stack and returns its text.
  std::string PopText() {
    std::string text = duk_safe_to_string(Api(), -1);
    duk_pop(Api());
    return text;
  }
  // Evaluates a script and returns the text of its value, or what Thrown returns for its error. What the script
  // dropped is released.
  std::string Run(const char* script) {
    const std::string result = Evaluate(script);
    engine_->Context().objects.ReleaseDropped();
    return result;
  }
  static std::string Thrown(HRESULT number, const std::string& description) {
    return "!" + std::to_string(number) + " " + description;
  }

  std::optional<ScriptEngine> engine_;

 private:
  std::string Evaluate(const char* script) {
    if (duk_peval_string(Api(), script) == 0) return PopText();
    duk_get_prop_string(Api(), -1, "description");
    const std::string description = PopText();
    duk_get_prop_string(Api(), -1, "number");
    const HRESULT number = duk_get_int(Api(), -1);
    duk_pop_2(Api());
    return Thrown(number, description);
  }
};

}  // namespace mirolta::host
