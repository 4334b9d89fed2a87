#include "wide_name.h"

#include <algorithm>

namespace mirolta {

uint32_t NameLength(const OLECHAR* name) noexcept {
  uint32_t length = 0;
  while (name != nullptr && name[length] != 0) ++length;
  return length;
}

bool SameWideName(const OLECHAR* a, const OLECHAR* b) noexcept {
  if (a == b) return true;
  if (a == nullptr || b == nullptr) return false;
  while (*a != 0 && *a == *b) {
    ++a;
    ++b;
  }
  return *a == *b;
}

int FindName(const NameSlot* table, const OLECHAR* name, uint32_t length) noexcept {
  if (name == nullptr || length == 0 || length >= kNameSlotLength) return -1;
  for (int index = 0; table[index][0] != 0; ++index) {
    const OLECHAR* const slot = table[index];
    // After a name there are zeros to the slot's end.
    const bool has_length = slot[length - 1] != 0 && slot[length] == 0;
    if (has_length && std::equal(name, name + length, slot)) return index;
  }
  return -1;
}

HRESULT CopyName(const NameSlot& slot, OLECHAR* buffer, LONG capacity) noexcept {
  const LONG length = static_cast<LONG>(NameLength(slot));
  if (buffer == nullptr || (capacity >= 1 && length >= capacity)) return E_OUTOFMEMORY;
  for (LONG i = 0; i <= length; ++i) buffer[i] = slot[i];
  return S_OK;
}

}  // namespace mirolta
