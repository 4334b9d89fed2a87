// The registry scripts as resources of type "REGISTRY", made from the rows of the class table.
#pragma once

#include <array>

#include "class_choice.h"
#include "portable/module_resources.h"

namespace mirolta {

// One script for each class: it registers the rows of both threading models.
inline constexpr unsigned kRegistryScriptCount =
    MIROLTA_HAS_CLASS(HashObject) + MIROLTA_HAS_CLASS(SymmetricCryptObject) +
    MIROLTA_HAS_CLASS(PexBigNumber) + MIROLTA_HAS_CLASS(RSACrypt) +
    MIROLTA_HAS_CLASS(ToviStreamDigest) + MIROLTA_HAS_CLASS(ToviStreamCrypt);
static_assert(kRegistryScriptCount > 0, "MIROLTA_CLASSES names no class");
extern const std::array<DataResource, kRegistryScriptCount> kRegistryScripts;

}  // namespace mirolta
