// The character set converters of the C library that the program opens and closes. Link open_converters.cpp.
#pragma once

namespace mirolta::test {

// So far.
long OpenedConverters();
long ClosedConverters();

// Whether none can be opened, as in a system without the files of the character sets.
void RefuseConverters(bool refuse);

}  // namespace mirolta::test
