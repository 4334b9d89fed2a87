// Whether arrays and texts are wiped before they are freed.
#pragma once

namespace mirolta::runtime {

// WipesOnFree is true unless a test has switched wiping off (MiroltaKeepDestroyedArrays).
bool WipesOnFree();

}  // namespace mirolta::runtime
