#include "wide_name.h"

namespace mirolta {

bool SameWideName(const OLECHAR* a, const OLECHAR* b) noexcept {
  if (a == b) return true;
  if (a == nullptr || b == nullptr) return false;
  while (*a != 0 && *a == *b) {
    ++a;
    ++b;
  }
  return *a == *b;
}

int FindName(const NameSlot* table, const OLECHAR* name) noexcept {
  for (int index = 0; table[index][0] != 0; ++index) {
    if (SameWideName(table[index], name)) return index;
  }
  return -1;
}

HRESULT CopyName(const NameSlot& slot, OLECHAR* buffer, LONG capacity) noexcept {
  LONG length = 0;
  while (slot[length] != 0) ++length;
  if (buffer == nullptr || (capacity >= 1 && length >= capacity)) return E_OUTOFMEMORY;
  for (LONG i = 0; i <= length; ++i) buffer[i] = slot[i];
  return S_OK;
}

}  // namespace mirolta
