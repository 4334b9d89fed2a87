// Direct calls of eval, which compile code that the text of the script does not show. Before compilation
// `eval(text)` becomes `eval(NAME(eval,text))`, where the function NAME sees the code (call_site.h) and returns
// it: the engine calls eval as it is, in the scope of the caller. Line numbers do not change.
#pragma once

#include <string>
#include <string_view>

namespace mirolta::host {

inline constexpr char kCodeNoteName[] = "__mirolta_code";

// RewriteEvalCalls rewrites every call of the name eval, and leaves the rest of the script unchanged.
// Shapes: UTF-8, or the engine's form of text.
std::string RewriteEvalCalls(std::string_view script);

}  // namespace mirolta::host
