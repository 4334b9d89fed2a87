// Fixed tables of algorithm names.
#pragma once

#include "platform.h"

namespace mirolta {

// A slot holds one name with its terminator; a table ends with an empty slot.
constexpr int kNameSlotLength = 16;
typedef OLECHAR NameSlot[kNameSlotLength];

// NameLength counts the units before the first zero; 0 for null.
uint32_t NameLength(const OLECHAR* name) noexcept;

// SameWideName compares exactly, case and all. One pointer twice is equal, null included; null and
// a text are not.
bool SameWideName(const OLECHAR* a, const OLECHAR* b) noexcept;

// FindName returns the index of the first slot equal to name[length], or -1. A zero character is
// one like any other: no name has one.
int FindName(const NameSlot* table, const OLECHAR* name, uint32_t length) noexcept;

// CopyName copies the name of a slot with its terminator. A capacity below 1 is not looked at: the
// caller vouches for the room.
// Errors: E_OUTOFMEMORY for a null buffer, and for a capacity of 1 or more that the name and its
//         terminator exceed. Nothing is written then.
HRESULT CopyName(const NameSlot& slot, OLECHAR* buffer, LONG capacity) noexcept;

}  // namespace mirolta
