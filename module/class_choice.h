// Which classes the build has: all, unless MIROLTA_CLASSES names fewer.
#pragma once

// MIROLTA_HAS_CLASS(name) is 1 where the class is part of the module, else 0. The build defines one macro
// for each class.
#define MIROLTA_HAS_CLASS(name) MIROLTA_HAS_CLASS_##name
