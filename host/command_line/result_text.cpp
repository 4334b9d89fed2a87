#include "command_line/result_text.h"

#include <stdio.h>

#include <new>

#include "classes/host_object.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "objects/object_handle.h"
#include "values/text_encoding.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr size_t kMostText = 10000;  // of a whole result
constexpr size_t kMostBytes = 256;   // of one array of bytes
constexpr int kMostElements = 100;   // of one array or object
constexpr int kDeepest = 3;
constexpr char kMore[] = "...";

struct ResultFunction {
  // In the engine's form.
  std::string text;
  OwnedReference<IDispatch> object;

  duk_ret_t Run(duk_context* engine) {
    Append(engine, 0, 1);
    duk_push_lstring(engine, text.data(), text.size());
    return 1;
  }

  void Append(duk_context* engine, duk_idx_t index, int depth) {
    const uint8_t* bytes = nullptr;
    size_t size = 0;
    SlotNumber number = kNoSlot;
    if (duk_is_symbol(engine, index)) {
      text += "[symbol]";
    } else if (duk_is_string(engine, index)) {
      AppendString(engine, index);
    } else if (BytesAt(engine, index, &bytes, &size)) {
      AppendBytes(bytes, size);
    } else if (HandleAt(engine, index, &number)) {
      AppendHandle(engine, number);
    } else if (duk_is_function(engine, index)) {
      AppendFunction(engine, index);
    } else if (duk_is_error(engine, index)) {
      AppendConverted(engine, index, "[", "]");
    } else if (HasOwnText(engine, index)) {
      AppendConverted(engine, index, "", "");
    } else if (duk_is_array(engine, index)) {
      AppendArray(engine, index, depth);
    } else {
      AppendObject(engine, index, depth);
    }
  }

  // Whether the conversion to text says it all.
  static bool HasOwnText(duk_context* engine, duk_idx_t index) {
    return !duk_is_object(engine, index) || IsInstance(engine, index, "Date") ||
           IsInstance(engine, index, "RegExp");
  }

  static bool IsInstance(duk_context* engine, duk_idx_t index, const char* constructor) {
    if (!duk_is_object(engine, index)) return false;
    duk_get_global_string(engine, constructor);
    const bool is_instance =
        duk_is_function(engine, -1) && duk_instanceof(engine, index, duk_get_top_index(engine));
    duk_pop(engine);
    return is_instance;
  }

  void AppendConverted(duk_context* engine, duk_idx_t index, const char* before,
                       const char* after) {
    duk_dup(engine, index);
    text += before;
    text += duk_to_string(engine, -1);
    text += after;
    duk_pop(engine);
  }

  void AppendString(duk_context* engine, duk_idx_t index) {
    duk_size_t size = 0;
    const char* string = duk_get_lstring(engine, index, &size);
    text += '"';
    for (size_t i = 0; i < size; ++i) {
      // Between two characters.
      const bool starts_character = (static_cast<unsigned char>(string[i]) & 0xC0) != 0x80;
      if (text.size() >= kMostText && starts_character) {
        text += "\"... (" + std::to_string(duk_get_length(engine, index)) + " characters)";
        return;
      }
      AppendCharacter(string[i]);
    }
    text += '"';
  }

  void AppendCharacter(char character) {
    constexpr char kEscaped[] = "\"\"\\\\\nn\rr\tt";
    for (size_t i = 0; kEscaped[i] != '\0'; i += 2) {
      if (character != kEscaped[i]) continue;
      text += '\\';
      text += kEscaped[i + 1];
      return;
    }
    const auto code = static_cast<unsigned char>(character);
    if (code >= 0x20 && code != 0x7F) {
      text += character;
      return;
    }
    char escape[8];
    snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned>(code));
    text += escape;
  }

  void AppendBytes(const uint8_t* bytes, size_t size) {
    text += std::to_string(size) + (size == 1 ? " byte" : " bytes");
    for (size_t i = 0; i < size && i < kMostBytes; ++i) {
      char digits[8];
      snprintf(digits, sizeof digits, "%s%02X", i == 0 ? ": " : " ",
               static_cast<unsigned>(bytes[i]));
      text += digits;
    }
    if (size > kMostBytes) text += std::string(" ") + kMore;
  }

  void AppendHandle(duk_context* engine, SlotNumber number) {
    const ObjectSlot* slot = ContextOf(engine).objects.Find(number);
    if (slot == nullptr) {
      text += "[disconnected object]";
    } else if (slot->kind == SlotKind::kDispatch) {
      // The object may free its own slot.
      object.Assign(slot->value.pdispVal);
      text += "[" + EngineFromUnits(UnitsFromSystem(TypeName(object.Get()))) + "]";
    } else if (slot->kind == SlotKind::kStream) {
      text += IsClosedStream(*slot) ? "[closed stream]" : "[stream]";
    } else if (slot->kind == SlotKind::kArray) {
      AppendBounds(slot->value.parray);
    } else {
      text += "[object]";
    }
  }

  void AppendBounds(SAFEARRAY* array) {
    text += "[array";
    const UINT dimensions = SafeArrayGetDim(array);
    for (UINT i = 1; i <= dimensions; ++i) {
      LONG lower = 0;
      LONG upper = 0;
      if (FAILED(SafeArrayGetLBound(array, i, &lower)) ||
          FAILED(SafeArrayGetUBound(array, i, &upper))) {
        break;
      }
      text += (i == 1 ? " " : ", ") + std::to_string(lower) + ".." + std::to_string(upper);
    }
    text += ']';
  }

  void AppendFunction(duk_context* engine, duk_idx_t index) {
    duk_get_prop_string(engine, index, "name");
    const char* name = duk_get_string_default(engine, -1, "");
    text += "[function";
    if (name[0] != '\0') text += ' ';
    text += name;
    text += ']';
    duk_pop(engine);
  }

  void AppendArray(duk_context* engine, duk_idx_t index, int depth) {
    const duk_size_t length = duk_get_length(engine, index);
    if (depth > kDeepest) {
      text += "[array of " + std::to_string(length) + "]";
      return;
    }
    text += '[';
    for (duk_uarridx_t i = 0; i < length; ++i) {
      if (i > 0) text += ", ";
      if (IsEnough(static_cast<int>(i))) {
        text += std::string(kMore) + " (" + std::to_string(length) + " elements)";
        break;
      }
      duk_get_prop_index(engine, index, i);
      AppendNested(engine, depth);
    }
    text += ']';
  }

  void AppendObject(duk_context* engine, duk_idx_t index, int depth) {
    if (depth > kDeepest) {
      text += "[object]";
      return;
    }
    duk_enum(engine, index, DUK_ENUM_OWN_PROPERTIES_ONLY);
    const duk_idx_t keys = duk_get_top_index(engine);
    int count = 0;
    while (duk_next(engine, keys, 0)) {
      text += count == 0 ? "{ " : ", ";
      if (IsEnough(count++)) {
        text += kMore;
        duk_pop(engine);
        break;
      }
      text += duk_get_string(engine, -1);
      text += ": ";
      duk_get_prop(engine, index);
      AppendNested(engine, depth);
    }
    duk_pop(engine);
    text += count == 0 ? "{}" : " }";
  }

  // Takes the value on top.
  void AppendNested(duk_context* engine, int depth) {
    duk_require_stack(engine, 8);
    Append(engine, duk_get_top_index(engine), depth + 1);
    duk_pop(engine);
  }

  bool IsEnough(int count) const { return count >= kMostElements || text.size() >= kMostText; }
};

}  // namespace

void PushResultText(duk_context* engine) {
  duk_push_c_function(engine, RunProtected<ResultFunction>, 1);
  duk_insert(engine, -2);
  duk_call(engine, 1);
}

std::string TypeName(IDispatch* object) {
  if (const HostObject* host_object = HostObjectOf(object)) return host_object->Class().name;
  OwnedReference<ITypeInfo> info;
  HRESULT status = object->GetTypeInfo(0, 0, info.Put());
  BSTR name = nullptr;
  constexpr MEMBERID kItself = -1;
  if (SUCCEEDED(status) && info.Get() != nullptr) {
    status = info->GetDocumentation(kItself, &name, nullptr, nullptr, nullptr);
  }
  if (status == E_OUTOFMEMORY) throw std::bad_alloc();
  if (name == nullptr) return "object";
  const std::string text = SystemFromUnits({name, SysStringLen(name)});
  SysFreeString(name);
  // Type information describes the class's interface: IHashObject.
  const bool is_interface = text.size() > 1 && text[0] == 'I' && text[1] >= 'A' && text[1] <= 'Z';
  return is_interface ? text.substr(1) : text;
}

}  // namespace mirolta::host
