// Names of keys and values, and paths of names separated by backslashes.
#pragma once

#include "texts/wide_text.h"

namespace mirolta::runtime {

constexpr size_t kLongestKeyName = 255;
constexpr size_t kLongestValueName = 16383;

// SameRegistryName compares names without regard to letter case, in all scripts. Equal names have
// the same RegistryNameHash.
// Source: simple case folding by the C library's tables, whatever the process's locale.
bool SameRegistryName(WideView a, WideView b);
// Source: FNV-1a, 32 bits, over the folded characters.
uint32_t RegistryNameHash(WideView name);

// TakeName removes the first name from a path; false at the path's end. Empty names are skipped.
bool TakeName(WideView* path, WideView* name);

// HasControls tells whether a name has control characters, which the registry's file cannot hold.
bool HasControls(WideView name);

}  // namespace mirolta::runtime
