// What registration leaves of a class for its error reports: the description.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform.h"
#include "portable/registry_mode.h"

namespace mirolta::test {

// SetClassDescription writes the description of a class into the registry, which should be in
// memory. A null one makes the key without a value.
inline void SetClassDescription(REFCLSID id, const OLECHAR* description) {
  OLECHAR path[48] = OLESTR("CLSID\\");
  ASSERT_NE(StringFromGUID2(id, path + 6, 39), 0);
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, path, 0, nullptr, REG_OPTION_NON_VOLATILE,
                            KEY_ALL_ACCESS, nullptr, &key, nullptr),
            ERROR_SUCCESS);
  if (description != nullptr) {
    const size_t size = (std::char_traits<OLECHAR>::length(description) + 1) * sizeof(OLECHAR);
    EXPECT_EQ(RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(description),
                             static_cast<DWORD>(size)),
              ERROR_SUCCESS);
  }
  RegCloseKey(key);
}

}  // namespace mirolta::test
