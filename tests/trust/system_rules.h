// Where the automation of Windows decides otherwise than the portable runtime's: rules that are the system's
// and not the module's.
#pragma once

namespace mirolta::test {

#ifdef _WIN32
inline constexpr bool kPortableRuntime = false;
#else
inline constexpr bool kPortableRuntime = true;
#endif

}  // namespace mirolta::test
