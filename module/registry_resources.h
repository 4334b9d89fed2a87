// The registry scripts as resources of type "REGISTRY", made from the rows of the class table.
#pragma once

#include <array>

#include "portable/module_resources.h"

namespace mirolta {

// One script for each class: it registers the rows of both threading models.
inline constexpr unsigned kRegistryScriptCount =
    MIROLTA_HAS_CLASS_HashObject + MIROLTA_HAS_CLASS_SymmetricCryptObject +
    MIROLTA_HAS_CLASS_PexBigNumber + MIROLTA_HAS_CLASS_RSACrypt +
    MIROLTA_HAS_CLASS_ToviStreamDigest + MIROLTA_HAS_CLASS_ToviStreamCrypt;
static_assert(kRegistryScriptCount > 0, "MIROLTA_CLASSES names no class");
extern const std::array<DataResource, kRegistryScriptCount> kRegistryScripts;

}  // namespace mirolta
