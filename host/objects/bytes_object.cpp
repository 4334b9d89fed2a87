#include "objects/bytes_object.h"

#include <string.h>

#include <string>

#include "engine/arguments.h"
#include "engine/host_errors.h"
#include "engine/properties.h"
#include "engine/protected_call.h"
#include "objects/byte_digits.h"
#include "seam/random.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr char kName[] = "Bytes";
// No script has this name: functions of the library are told from a script's by it.
constexpr char kFileName[] = "mirolta-host: bytes.js";
constexpr size_t kMostUnits = 0x7FFFFFFF;

struct ByteView {
  const uint8_t* bytes;
  size_t count;
};

// The bytes at `index`, where the library passes nothing else.
ByteView BytesArgument(duk_context* engine, duk_idx_t index) {
  ByteView view = {nullptr, 0};
  if (!BytesAt(engine, index, &view.bytes, &view.count)) ThrowStatus(engine, DISP_E_TYPEMISMATCH);
  return view;
}

void CheckLength(duk_context* engine, size_t length) {
  if (length > kMostUnits) ThrowStatus(engine, E_OUTOFMEMORY);
}

// fromText(text, codePage): undefined if there is no such code page.
struct FromTextFunction {
  Units text;

  void PushUtf16(duk_context* engine, bool is_big_endian) const {
    uint8_t* bytes = PushBytes(engine, 2 * text.size());
    for (const OLECHAR unit : text) {
      *bytes++ = static_cast<uint8_t>(is_big_endian ? unit >> 8 : unit & 0xFF);
      *bytes++ = static_cast<uint8_t>(is_big_endian ? unit & 0xFF : unit >> 8);
    }
  }

  duk_ret_t Run(duk_context* engine) {
    text = UnitsFromEngine(TextArgument(engine, 0));
    const duk_int_t code_page = duk_get_int(engine, 1);
    if (code_page < 0) {
      PushUtf16(engine, code_page < -1);
      return 1;
    }
    if (text.empty()) {
      PushBytes(engine, 0);
      return 1;
    }
    CheckLength(engine, text.size());
    const auto convert = [&](char* bytes, INT capacity) {
      return WideCharToMultiByte(static_cast<UINT>(code_page), 0, text.data(),
                                 static_cast<INT>(text.size()), bytes, capacity, nullptr, nullptr);
    };
    const INT size = convert(nullptr, 0);
    if (size <= 0) return 0;
    convert(reinterpret_cast<char*>(PushBytes(engine, static_cast<size_t>(size))), size);
    return 1;
  }
};

// toText(bytes, codePage), for a code page from 0: undefined if there is none.
struct ToTextFunction {
  Units text;

  duk_ret_t Run(duk_context* engine) {
    const ByteView view = BytesArgument(engine, 0);
    const duk_int_t code_page = duk_get_int(engine, 1);
    CheckLength(engine, view.count);
    if (view.count > 0) {
      const auto convert = [&](OLECHAR* units, INT capacity) {
        return MultiByteToWideChar(static_cast<UINT>(code_page), 0,
                                   reinterpret_cast<const char*>(view.bytes),
                                   static_cast<INT>(view.count), units, capacity);
      };
      const INT length = convert(nullptr, 0);
      if (length <= 0) return 0;
      text.resize(static_cast<size_t>(length));
      convert(text.data(), length);
    }
    PushUnits(engine, text);
    return 1;
  }
};

// fromHex(text), fromBase64(text): undefined for text with anything but digits, which the library
// looks at itself.
template <size_t (*kCount)(std::string_view), bool (*kDecode)(std::string_view, uint8_t*)>
duk_ret_t FromDigits(duk_context* engine) {
  const std::string_view text = TextArgument(engine, 0);
  return kDecode(text, PushBytes(engine, kCount(text))) ? 1 : 0;
}

// toHex(bytes), toBase64(bytes)
template <size_t (*kLength)(size_t), void (*kEncode)(const uint8_t*, size_t, char*)>
struct ToDigitsFunction {
  std::string text;

  duk_ret_t Run(duk_context* engine) {
    const ByteView view = BytesArgument(engine, 0);
    text.resize(kLength(view.count));
    kEncode(view.bytes, view.count, text.data());
    duk_push_lstring(engine, text.data(), text.size());
    return 1;
  }
};

// The arguments of a function that takes two arrays of the same number of bytes. The library compares
// lengths, but an array of wider elements can pass for a Uint8Array.
struct BytePair {
  ByteView a;
  ByteView b;
};
BytePair PairArgument(duk_context* engine) {
  const BytePair pair = {BytesArgument(engine, 0), BytesArgument(engine, 1)};
  if (pair.a.count != pair.b.count) ThrowStatus(engine, DISP_E_TYPEMISMATCH);
  return pair;
}

// equal(a, b) and xor(a, b)
duk_ret_t Equal(duk_context* engine) {
  const auto [a, b] = PairArgument(engine);
  // Volatile, so that the compiler leaves the loop no way out before its end.
  volatile uint8_t difference = 0;
  for (size_t i = 0; i < a.count; ++i) {
    difference = static_cast<uint8_t>(difference | (a.bytes[i] ^ b.bytes[i]));
  }
  duk_push_boolean(engine, difference == 0);
  return 1;
}

duk_ret_t Xor(duk_context* engine) {
  const auto [a, b] = PairArgument(engine);
  uint8_t* result = PushBytes(engine, a.count);
  for (size_t i = 0; i < a.count; ++i) result[i] = a.bytes[i] ^ b.bytes[i];
  return 1;
}

duk_ret_t Random(duk_context* engine) {
  const duk_uint_t count = duk_get_uint(engine, 0);
  if (!SystemEntropy(PushBytes(engine, count), count)) ThrowStatus(engine, E_FAIL);
  return 1;
}

// blameCaller(error): gives the error the place where a script called the library.
duk_ret_t BlameCaller(duk_context* engine) {
  constexpr duk_idx_t kError = 0;
  constexpr duk_int_t kLibrary = -2;
  for (duk_int_t level = kLibrary;; --level) {
    duk_set_top(engine, kError + 1);
    duk_inspect_callstack_entry(engine, level);
    if (!duk_is_object(engine, -1)) return 0;
    duk_get_prop_string(engine, -1, "lineNumber");
    duk_get_prop_string(engine, -2, "function");
    duk_get_prop_string(engine, -1, "fileName");
    const char* file = duk_get_string(engine, -1);
    // A native function has none.
    if (file == nullptr || strcmp(file, kFileName) == 0) continue;
    duk_put_prop_string(engine, kError, "fileName");
    duk_pop(engine);
    duk_put_prop_string(engine, kError, "lineNumber");
    return 0;
  }
}

constexpr duk_function_list_entry kNatives[] = {
    {"fromText", RunProtected<FromTextFunction>, 2},
    {"toText", RunProtected<ToTextFunction>, 2},
    {"fromHex", FromDigits<HexByteCount, DecodeHex>, 1},
    {"toHex", RunProtected<ToDigitsFunction<HexLength, EncodeHex>>, 1},
    {"fromBase64", FromDigits<Base64ByteCount, DecodeBase64>, 1},
    {"toBase64", RunProtected<ToDigitsFunction<Base64Length, EncodeBase64>>, 1},
    {"equal", Equal, 2},
    {"xor", Xor, 2},
    {"random", Random, 1},
    {"blameCaller", BlameCaller, 1},
    {nullptr, nullptr, 0},
};

// Makes the value on top of the stack the global Bytes, an ordinary variable, and pops it.
void DefineVariable(duk_context* engine) {
  duk_push_global_object(engine);
  duk_insert(engine, -2);
  duk_push_string(engine, kName);
  duk_insert(engine, -2);
  duk_def_prop(engine, -3,
               DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_SET_WRITABLE | DUK_DEFPROP_SET_CONFIGURABLE |
                   DUK_DEFPROP_CLEAR_ENUMERABLE | DUK_DEFPROP_FORCE);
  duk_pop(engine);
}

// The first read of the variable.
struct CompileFunction {
  std::string text;

  duk_ret_t Run(duk_context* engine) {
    // On one line with the library's first, so that its lines keep their numbers.
    text = "(function (BytesNatives) {";
    text += kBytesScript;
    text += "\nreturn Bytes; })";
    duk_push_string(engine, kFileName);
    duk_compile_lstring_filename(engine, DUK_COMPILE_EVAL, text.data(), text.size());
    duk_call(engine, 0);
    duk_push_bare_object(engine);
    duk_put_function_list(engine, -1, kNatives);
    duk_call(engine, 1);
    duk_dup_top(engine);
    DefineVariable(engine);
    return 1;
  }
};

duk_ret_t Assign(duk_context* engine) {
  duk_dup(engine, 0);
  DefineVariable(engine);
  return 0;
}

}  // namespace

void InstallBytes(duk_context* engine) {
  duk_push_global_object(engine);
  DefineAccessor(engine, kName, RunProtected<CompileFunction>, Assign,
                 DUK_DEFPROP_SET_CONFIGURABLE | DUK_DEFPROP_CLEAR_ENUMERABLE);
  duk_pop(engine);
}

}  // namespace mirolta::host
