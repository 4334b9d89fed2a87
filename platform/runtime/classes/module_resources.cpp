#include "portable/module_resources.h"

#include <cstring>

#include "classes/module_table.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {
namespace {

bool IsNumber(LPCWSTR name) {
  return reinterpret_cast<ULONG_PTR>(name) <= 0xFFFF;
}

constexpr uint32_t kNoNumber = UINT32_MAX;

// The number of a resource name, an integer or "#123"; kNoNumber for any other name.
uint32_t ResourceNumber(LPCWSTR name) {
  if (IsNumber(name)) return static_cast<uint32_t>(reinterpret_cast<ULONG_PTR>(name));
  if (name[0] != u'#' || name[1] == 0) return kNoNumber;
  uint32_t number = 0;
  for (++name; *name != 0; ++name) {
    if (*name < u'0' || *name > u'9') return kNoNumber;
    number = number * 10 + static_cast<uint32_t>(*name - u'0');
    if (number > 65535) return kNoNumber;
  }
  return number;
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta;
using namespace mirolta::runtime;

extern "C" const mirolta::ModuleResources* mirolta::MiroltaModuleResources(HINSTANCE module) {
  return ResourcesOf(module);
}

extern "C" INT LoadStringW(HINSTANCE module, UINT id, LPWSTR text, INT capacity) {
  const ModuleResources* resources = ResourcesOf(module);
  if (resources == nullptr || text == nullptr || capacity < 0) return 0;
  for (unsigned i = 0; i < resources->string_count; ++i) {
    const StringResource& row = resources->strings[i];
    if (row.id != id) continue;
    const size_t length = WideLength(row.text);
    if (capacity == 0) {  // asks for the resource itself: a pointer to it is stored in `text`
      std::memcpy(text, &row.text, sizeof(row.text));
      return static_cast<INT>(length);
    }
    size_t copied = static_cast<size_t>(capacity) - 1;
    if (copied > length) copied = length;
    std::memcpy(text, row.text, copied * sizeof(WCHAR));
    text[copied] = 0;
    return static_cast<INT>(copied);
  }
  if (capacity != 0) text[0] = 0;
  return 0;
}

extern "C" HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type) {
  const ModuleResources* resources = ResourcesOf(module);
  if (resources == nullptr || IsNumber(type)) return nullptr;
  const uint32_t number = ResourceNumber(name);
  for (unsigned i = 0; i < resources->data_count; ++i) {
    const DataResource& row = resources->data[i];
    if (row.id == number && EqualsIgnoringAsciiCase(row.type, type)) {
      return const_cast<DataResource*>(&row);  // the handle is opaque; nothing writes through it
    }
  }
  return nullptr;
}

extern "C" void* LoadResource(HMODULE, HRSRC resource) {
  if (resource == nullptr) return nullptr;
  return const_cast<BYTE*>(static_cast<const DataResource*>(resource)->bytes);
}

extern "C" void* LockResource(void* loaded) {
  return loaded;
}

extern "C" DWORD SizeofResource(HMODULE, HRSRC resource) {
  return resource == nullptr ? 0 : static_cast<const DataResource*>(resource)->size;
}
