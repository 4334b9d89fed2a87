#include <cstdio>

#include "charsets/escaped_utf8.h"
#include "charsets/utf16_text.h"
#include "registry/registry_text.h"

namespace mirolta::runtime {
namespace {

constexpr size_t kWidestHexLine = 76;

bool Put(RuntimeArray<char>* text, const char* more) {
  return text->Append(more, std::strlen(more));
}

bool PutQuoted(RuntimeArray<char>* text, WideView quoted) {
  RuntimeArray<char> bytes;
  if (!AppendUtf8FromWide(quoted, &bytes) || !text->Append('"')) return false;
  for (size_t i = 0; i < bytes.Size(); ++i) {
    if ((bytes[i] == '\\' || bytes[i] == '"') && !text->Append('\\')) return false;
    if (!text->Append(bytes[i])) return false;
  }
  return text->Append('"');
}

bool PutHex(RuntimeArray<char>* text, DWORD type, const BYTE* bytes, size_t size, size_t column) {
  char piece[24];
  if (type == REG_BINARY) {
    std::snprintf(piece, sizeof(piece), "hex:");
  } else {
    std::snprintf(piece, sizeof(piece), "hex(%x):", static_cast<unsigned>(type));
  }
  column += std::strlen(piece);
  if (!Put(text, piece)) return false;
  for (size_t i = 0; i < size; ++i) {
    std::snprintf(piece, sizeof(piece), i + 1 < size ? "%02x," : "%02x", bytes[i]);
    if (!Put(text, piece)) return false;
    column += 3;
    if (column >= kWidestHexLine && i + 1 < size) {
      if (!Put(text, "\\\n  ")) return false;
      column = 2;
    }
  }
  return true;
}

bool PutText(RuntimeArray<char>* text, const RegistryValue& value, size_t column) {
  RuntimeArray<WCHAR> units;
  if (!units.Resize(value.data.Size() / sizeof(WCHAR))) return false;
  if (!units.IsEmpty()) {
    std::memcpy(units.Data(), value.data.Data(), units.Size() * sizeof(WCHAR));
  }
  if (value.type == REG_SZ && !units.IsEmpty()) {
    const WideView plain(units.Data(), units.Size() - 1);
    if (!HasControls(plain)) return PutQuoted(text, plain);
  }
  RuntimeArray<char> bytes;
  return AppendUtf8FromWide(ViewOf(units), &bytes) &&
         PutHex(text, value.type, reinterpret_cast<const BYTE*>(bytes.Data()), bytes.Size(),
                column);
}

bool PutValue(RuntimeArray<char>* text, const RegistryValue& value) {
  const size_t begin = text->Size();
  if (value.is_comment) {
    return text->Append(reinterpret_cast<const char*>(value.data.Data()), value.data.Size()) &&
           text->Append('\n');
  }
  if (!(value.Name().empty() ? text->Append('@') : PutQuoted(text, value.Name()))) return false;
  if (!text->Append('=')) return false;
  const size_t column = text->Size() - begin;
  if (IsTextType(value.type)) {
    if (!PutText(text, value, column)) return false;
  } else if (value.type == REG_DWORD && value.data.Size() == sizeof(DWORD)) {
    DWORD number;
    std::memcpy(&number, value.data.Data(), sizeof(number));
    char piece[24];
    std::snprintf(piece, sizeof(piece), "dword:%08x", static_cast<unsigned>(number));
    if (!Put(text, piece)) return false;
  } else if (!PutHex(text, value.type, value.data.Data(), value.data.Size(), column)) {
    return false;
  }
  return text->Append('\n');
}

// Puts [path of key]; the outermost key has no name of its own.
bool PutPath(RuntimeArray<char>* text, const RegistryKey& key) {
  if (key.Parent()->Parent() != nullptr && (!PutPath(text, *key.Parent()) || !text->Append('\\'))) {
    return false;
  }
  return AppendUtf8FromWide(key.Name(), text);
}

bool PutKey(RuntimeArray<char>* text, const RegistryKey& key) {
  const bool outermost = key.Parent() == nullptr;
  const bool is_root = !outermost && key.Parent()->Parent() == nullptr;
  const bool is_empty_root = is_root && key.FirstValue() == nullptr;
  if (!outermost && !is_empty_root) {
    if (!Put(text, "\n[") || !PutPath(text, key) || !Put(text, "]\n")) return false;
  }
  for (const RegistryValue* value = key.FirstValue(); value != nullptr; value = value->Next()) {
    if (!PutValue(text, *value)) return false;
  }
  for (const RegistryKey* child = key.FirstChild(); child != nullptr; child = child->Next()) {
    if (!PutKey(text, *child)) return false;
  }
  return true;
}

}  // namespace

bool FormatRegistry(const RegistryKey& root, RuntimeArray<char>* text) {
  return Put(text, kRegistryFirstLine) && text->Append('\n') && PutKey(text, root);
}

bool SurvivesFile(WideView text) {
  for (size_t at = 0; at < text.size();) {
    uint32_t point;
    at += DecodeUtf16(text.data() + at, text.size() - at, &point);
    if (!IsHighSurrogate(point) && !IsLowSurrogate(point)) continue;
    // Rare: compare with what is read back.
    RuntimeArray<char> bytes;
    RuntimeArray<WCHAR> again;
    return AppendUtf8FromWide(text, &bytes) &&
           AppendWideFromUtf8(bytes.Data(), bytes.Size(), &again) && ViewOf(again) == text;
  }
  return true;
}

}  // namespace mirolta::runtime
