// Fixed tables of algorithm names.
#pragma once

#include "platform.h"

namespace mirolta {

// A slot holds one name with its terminator; a table ends with an empty slot.
constexpr int kNameSlotLength = 16;
typedef OLECHAR NameSlot[kNameSlotLength];

// NameLength counts the units before the first zero; 0 for null.
uint32_t NameLength(const OLECHAR* name) noexcept;

// SameWideName is a case-sensitive comparison of two names. Equal pointers are equal, null
// included; null differs from any text.
bool SameWideName(const OLECHAR* a, const OLECHAR* b) noexcept;

// FindName returns the index of the first slot equal to name[length], or -1. A name with an
// embedded zero character is not found.
int FindName(const NameSlot* table, const OLECHAR* name, uint32_t length) noexcept;

// CopyName copies the name of a slot with its terminator. A capacity below 1 means that the caller
// guarantees the room.
// Errors: E_OUTOFMEMORY for a null buffer, and for a capacity of 1 or more that the name and its
//         terminator exceed. Nothing is written then.
HRESULT CopyName(const NameSlot& slot, OLECHAR* buffer, LONG capacity) noexcept;

}  // namespace mirolta
