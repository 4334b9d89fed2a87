#include "engine/call_site.h"

#include <string.h>

#include "engine/script_context.h"

namespace mirolta::host {
namespace {

// A dumped function starts with one marker byte, three counts of four bytes (instructions first),
// two of two bytes, two line numbers and a word of flags; the instructions follow, four bytes each,
// highest byte first, the instruction code in the lowest.
constexpr size_t kCountOffset = 1;
constexpr size_t kCodeOffset = 1 + 3 * 4 + 2 * 2 + 2 * 4 + 4;
constexpr int kNoInstruction = -1;

constexpr char kCodeKey[] = DUK_HIDDEN_SYMBOL("code");

uint32_t WordAt(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// The instruction codes of a function are kept with it once read, behind the address of the
// function that they are of: another one may inherit them.
struct Codes {
  const uint8_t* bytes = nullptr;
  size_t count = 0;
};

// The codes that a look-up from the function on top finds, pushed; none if they are not its own.
Codes PushKeptCodes(duk_context* engine) {
  const void* function = duk_get_heapptr(engine, -1);
  duk_get_prop_string(engine, -1, kCodeKey);
  duk_size_t size = 0;
  const auto* kept = static_cast<const uint8_t*>(duk_get_buffer(engine, -1, &size));
  if (size < sizeof function || memcmp(kept, &function, sizeof function) != 0) return {};
  return {kept + sizeof function, size - sizeof function};
}

// Pushes the instruction codes of the function on top.
Codes PushCodes(duk_context* engine) {
  const Codes kept = PushKeptCodes(engine);
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

// The code of the instruction that runs in the script function below the native one.
int RunningInstruction(duk_context* engine) {
  constexpr duk_int_t kCaller = -2;
  const duk_idx_t top = duk_get_top(engine);
  int code = kNoInstruction;
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

// Notes the running instruction at the place that the member's name gives in the list `this` has.
duk_ret_t NoteInstruction(duk_context* engine) {
  const int code = RunningInstruction(engine);
  PushKept(engine, "instructions");
  duk_dup(engine, 1);
  duk_push_int(engine, code);
  duk_put_prop(engine, -3);
  duk_push_c_function(
      engine, [](duk_context*) -> duk_ret_t { return 0; }, DUK_VARARGS);
  return 1;
}

// Reads members that are called and members that are not, with names known to the compiler and
// names that are not.
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
  KeepValue(engine, "instructions");
  if (duk_peval_string(engine, kKnownReads) == 0) {
    duk_push_c_function(engine, NoteInstruction, 3);
    duk_pcall(engine, 1);
  }
  duk_pop(engine);
  bool all_known = true;
  for (const char* name :
       {"call1", "call2", "call3", "call4", "read1", "read2", "read3", "read4", "read5"}) {
    duk_get_prop_string(engine, -1, name);
    const duk_int_t code = duk_get_int_default(engine, -1, kNoInstruction);
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

bool CallSites::IsCall(duk_context* engine) const {
  if (!CanTell()) return false;
  const int code = RunningInstruction(engine);
  return code >= 0 && calls_.test(static_cast<size_t>(code));
}

}  // namespace mirolta::host
