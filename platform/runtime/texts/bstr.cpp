// BSTR: a block [unused word][length in bytes][text][zero bytes]; the handle points at the text.
#include <cstdint>
#include <cstring>

#include "heap/wipe_on_free.h"
#include "mirolta/variant.h"
#include "seam/memory.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {
namespace {

constexpr size_t kHeaderBytes = 8;  // keeps the text aligned like the block
// A whole terminator, even after an odd number of bytes.
constexpr size_t kTerminatorBytes = 2 * sizeof(OLECHAR) - 1;
// Room for header and terminator even where size_t has 32 bits.
constexpr UINT kMaxBytes = 0xFFFFFFFFu - kHeaderBytes - kTerminatorBytes;

BYTE* BlockOf(BSTR text) {
  return static_cast<BYTE*>(static_cast<void*>(text)) - kHeaderBytes;
}

// Finish writes length and terminator of a block and returns its handle.
BSTR Finish(void* memory, UINT byte_length) {
  if (memory == nullptr) return nullptr;
  BYTE* block = static_cast<BYTE*>(memory);
  memcpy(block + kHeaderBytes - sizeof byte_length, &byte_length, sizeof byte_length);
  memset(block + kHeaderBytes + byte_length, 0, kTerminatorBytes);
  return static_cast<BSTR>(static_cast<void*>(block + kHeaderBytes));
}

// A null source gives zeros.
BSTR Make(const void* from, UINT byte_length) {
  if (byte_length > kMaxBytes) return nullptr;
  BSTR text = Finish(AllocateRuntime(kHeaderBytes + byte_length + kTerminatorBytes), byte_length);
  if (text == nullptr) return nullptr;
  if (from == nullptr) {
    memset(text, 0, byte_length);
  } else {
    memcpy(text, from, byte_length);
  }
  return text;
}

bool FitsInBytes(UINT length) {
  return length <= kMaxBytes / sizeof(OLECHAR);
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta;
using namespace mirolta::runtime;

extern "C" {

BSTR SysAllocString(const OLECHAR* text) {
  return text == nullptr ? nullptr : SysAllocStringLen(text, static_cast<UINT>(WideLength(text)));
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
  return FitsInBytes(length) ? Make(text, length * UINT{sizeof(OLECHAR)}) : nullptr;
}

BSTR SysAllocStringByteLen(LPCSTR bytes, UINT length) {
  return Make(bytes, length);
}

INT SysReAllocString(BSTR* text, const OLECHAR* from) {
  if (text == nullptr) return FALSE;
  BSTR made = SysAllocString(from);
  if (made == nullptr && from != nullptr) return FALSE;
  SysFreeString(*text);
  *text = made;
  return TRUE;
}

// `from` may lie inside the old text; without it the old text is kept as far as it fits.
INT SysReAllocStringLen(BSTR* text, const OLECHAR* from, UINT length) {
  if (text == nullptr || !FitsInBytes(length)) return FALSE;
  BSTR made = SysAllocStringLen(from, length);
  if (made == nullptr) return FALSE;
  if (from == nullptr && *text != nullptr) {
    const UINT kept = SysStringLen(*text) < length ? SysStringLen(*text) : length;
    memcpy(made, *text, kept * sizeof(OLECHAR));
  }
  SysFreeString(*text);
  *text = made;
  return TRUE;
}

// Wiped here rather than by callers: intermediate texts of conversions are freed here too.
void SysFreeString(BSTR text) {
  if (text == nullptr) return;
  if (WipesOnFree()) WipeMemory(text, SysStringByteLen(text));
  FreeRuntime(BlockOf(text));
}

UINT SysStringByteLen(BSTR text) {
  if (text == nullptr) return 0;
  UINT byte_length = 0;
  memcpy(&byte_length, BlockOf(text) + kHeaderBytes - sizeof byte_length, sizeof byte_length);
  return byte_length;
}

UINT SysStringLen(BSTR text) {
  return SysStringByteLen(text) / UINT{sizeof(OLECHAR)};
}
}
