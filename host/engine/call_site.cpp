#include "engine/call_site.h"

#include <string.h>

#include "engine/properties.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "source/eval_calls.h"

namespace mirolta::host {
namespace {

// A dumped function starts with a marker byte, three 32-bit counts (of instructions first), two
// 16-bit counts, two 32-bit line numbers and 32 bits of flags. The instructions follow, 32 bits
// each in big-endian order, with the opcode in the low byte.
constexpr size_t kCountOffset = 1;
constexpr size_t kCodeOffset = 1 + 3 * 4 + 2 * 2 + 2 * 4 + 4;
constexpr int kNoOpcode = -1;

constexpr char kCodeKey[] = DUK_HIDDEN_SYMBOL("code");

uint32_t WordAt(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// The opcodes of a function are cached in a property of it, behind the function's address: another
// function may inherit the property.
struct Codes {
  const uint8_t* bytes = nullptr;
  size_t count = 0;
};

// Pushes the cached property that the function on top has or inherits; no codes if it is not its
// own.
Codes PushCachedCodes(duk_context* engine) {
  const void* function = duk_get_heapptr(engine, -1);
  duk_get_prop_string(engine, -1, kCodeKey);
  duk_size_t size = 0;
  const auto* kept = static_cast<const uint8_t*>(duk_get_buffer(engine, -1, &size));
  if (size < sizeof function || memcmp(kept, &function, sizeof function) != 0) return {};
  return {kept + sizeof function, size - sizeof function};
}

// Pushes the opcodes of the function on top.
Codes PushCodes(duk_context* engine) {
  const Codes kept = PushCachedCodes(engine);
  if (kept.bytes != nullptr) return kept;
  duk_pop(engine);
  duk_dup_top(engine);
  duk_dump_function(engine);
  duk_size_t size = 0;
  const auto* dumped = static_cast<const uint8_t*>(duk_get_buffer(engine, -1, &size));
  size_t count = size >= kCodeOffset ? WordAt(dumped + kCountOffset) : 0;
  if (count > (size - kCodeOffset) / 4) count = 0;
  const void* function = duk_get_heapptr(engine, -2);
  auto* codes = static_cast<uint8_t*>(duk_push_fixed_buffer(engine, sizeof function + count));
  memcpy(codes, &function, sizeof function);
  codes += sizeof function;
  for (size_t i = 0; i < count; ++i) codes[i] = dumped[kCodeOffset + 4 * i + 3];
  duk_remove(engine, -2);
  duk_push_string(engine, kCodeKey);
  duk_dup(engine, -2);
  duk_def_prop(engine, -4, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
  return {codes, count};
}

// The opcode of the instruction that the caller of the native function executes.
int RunningOpcode(duk_context* engine) {
  constexpr duk_int_t kCaller = -2;
  const duk_idx_t top = duk_get_top(engine);
  int code = kNoOpcode;
  duk_inspect_callstack_entry(engine, kCaller);
  if (duk_is_object(engine, -1)) {
    duk_get_prop_string(engine, -1, "pc");
    const duk_uint_t at = duk_get_uint(engine, -1);
    duk_get_prop_string(engine, -2, "function");
    if (duk_is_ecmascript_function(engine, -1)) {
      const Codes codes = PushCodes(engine);
      if (at < codes.count) code = codes.bytes[at];
    }
  }
  duk_set_top(engine, top);
  return code;
}

// A getter that records the running opcode under the property's name and returns a function.
duk_ret_t RecordOpcode(duk_context* engine) {
  const int code = RunningOpcode(engine);
  PushKept(engine, "opcodes");
  duk_dup(engine, 1);
  duk_push_int(engine, code);
  duk_put_prop(engine, -3);
  duk_push_c_function(
      engine, [](duk_context*) -> duk_ret_t { return 0; }, DUK_VARARGS);
  return 1;
}

// Reads properties that are called and properties that are not, with constant and with computed
// names.
constexpr char kKnownReads[] =
    "(function (probe) {"
    "  var p = new Proxy({}, { get: probe }), key;"
    "  p.call1(1); key = 'call2'; p[key](1); (function (o) { return o.call3(1); })(p);"
    "  (function (o, k) { return o[k](); })(p, 'call4');"
    "  key = p.read1; key = 'read2'; key = p[key]; (function (o) { return o.read3; })(p);"
    "  (function (o, k) { return o[k]; })(p, 'read4'); key = new p.read5(1);"
    "})";

}  // namespace

void CallSites::Learn(duk_context* engine) {
  calls_.reset();
  std::bitset<256> reads;
  duk_push_object(engine);
  duk_dup_top(engine);
  KeepValue(engine, "opcodes");
  if (duk_peval_string(engine, kKnownReads) == 0) {
    duk_push_c_function(engine, RecordOpcode, 3);
    duk_pcall(engine, 1);
  }
  duk_pop(engine);
  bool all_known = true;
  for (const char* name :
       {"call1", "call2", "call3", "call4", "read1", "read2", "read3", "read4", "read5"}) {
    duk_get_prop_string(engine, -1, name);
    const duk_int_t code = duk_get_int_default(engine, -1, kNoOpcode);
    duk_pop(engine);
    if (code < 0) {
      all_known = false;
    } else {
      (name[0] == 'c' ? calls_ : reads).set(static_cast<size_t>(code));
    }
  }
  duk_pop(engine);
  if (!all_known || (calls_ & reads).any()) calls_.reset();
}

// The global eval, which the engine treats specially, is read before it is called.
duk_ret_t CallSites::GetEval(duk_context* engine) {
  ++ContextOf(engine).call_sites.unseen_reads_of_eval_;
  PushKept(engine, "eval");
  return 1;
}

// The function of a rewritten call of eval (eval_calls.h): arguments are eval, its argument and others. A
// script may have an eval of its own, which is not noted.
struct CallSites::NoteCodeFunction {
  MemberUses uses;
  duk_ret_t Run(duk_context* engine) {
    constexpr duk_idx_t kFunction = 0, kCode = 1;
    duk_set_top(engine, 2);
    CallSites& sites = ContextOf(engine).call_sites;
    if (duk_get_heapptr(engine, kFunction) == sites.eval_ && sites.unseen_reads_of_eval_ >= 2) {
      duk_size_t size = 0;
      const char* code = duk_get_lstring(engine, kCode, &size);
      if (code != nullptr) uses = FindMemberUses({code, size});
      sites.NoteUses(engine, uses);
      sites.unseen_reads_of_eval_ -= 2;
    }
    return 1;
  }
};

// Function(...) and new Function(...)
duk_ret_t CallSites::MakeFunction(duk_context* engine) {
  ContextOf(engine).call_sites.ForgetScript();
  PushKept(engine, "Function");
  duk_insert(engine, 0);
  duk_new(engine, duk_get_top(engine) - 1);
  return 1;
}

// Replaces the functions of the engine that compile code.
void CallSites::Watch(duk_context* engine) {
  duk_get_global_string(engine, "eval");
  eval_ = KeepValue(engine, "eval");
  duk_push_global_object(engine);
  duk_push_string(engine, kCodeNoteName);
  duk_push_c_function(engine, RunProtected<NoteCodeFunction>, DUK_VARARGS);
  duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
  const auto set_eval = [](duk_context* inner) -> duk_ret_t {
    duk_push_global_object(inner);
    duk_push_string(inner, "eval");
    duk_dup(inner, 0);
    duk_def_prop(inner, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_SET_WRITABLE | DUK_DEFPROP_FORCE);
    return 0;
  };
  DefineAccessor(engine, "eval", GetEval, set_eval,
                 DUK_DEFPROP_SET_CONFIGURABLE | DUK_DEFPROP_CLEAR_ENUMERABLE);

  duk_get_global_string(engine, "Function");
  duk_push_c_function(engine, MakeFunction, DUK_VARARGS);
  for (const char* name : {"prototype", "name", "length"}) {
    duk_push_string(engine, name);
    duk_get_prop_string(engine, -3, name);
    duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
  }
  duk_get_prop_string(engine, -1, "prototype");
  duk_push_string(engine, "constructor");
  duk_dup(engine, -3);
  duk_def_prop(engine, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
  duk_pop(engine);
  duk_put_global_string(engine, "Function");
  KeepValue(engine, "Function");
  duk_pop(engine);
}

void CallSites::NoteScript(duk_context* engine, const MemberUses& uses) {
  if (eval_ == nullptr) Watch(engine);
  NoteUses(engine, uses);
  is_noted_ = true;
}

void CallSites::NoteUses(duk_context* engine, const MemberUses& uses) {
  calls_computed_ = calls_computed_ || uses.calls_computed;
  reads_computed_ = reads_computed_ || uses.reads_computed;
  for (const std::string& name : uses.called) uses_[KeepName(engine, name)].is_called = true;
  for (const std::string& name : uses.read) uses_[KeepName(engine, name)].is_read = true;
}

bool CallSites::IsCall(duk_context* engine) const {
  if (calls_.none()) return false;
  const int code = RunningOpcode(engine);
  return code >= 0 && calls_.test(static_cast<size_t>(code));
}

}  // namespace mirolta::host
