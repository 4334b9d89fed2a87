// How many character set converters of the C library the program has open. Link open_converters.cpp.
#pragma once

namespace mirolta::test {

long OpenConverters();

}  // namespace mirolta::test
