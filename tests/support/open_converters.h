// The character set converters of the C library that the program opens and closes. Link open_converters.cpp.
#pragma once

namespace mirolta::test {

// So far.
long OpenedConverters();
long ClosedConverters();

}  // namespace mirolta::test
