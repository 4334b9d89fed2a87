// Where the automation of Windows decides otherwise than the portable runtime's: rules that are the system's
// and not the module's.
#pragma once

namespace mirolta::test {

#ifdef _WIN32
inline constexpr bool kPortableRuntime = false;
#else
inline constexpr bool kPortableRuntime = true;
#endif

// A late-bound caller gets an empty text where the member has given a null one, even if it failed.
inline constexpr bool kCopiesNullTexts = !kPortableRuntime;
// The arrays and texts that the system frees are wiped, those too in which it holds what it reads from an
// object.
inline constexpr bool kWipesWhatItFrees = kPortableRuntime;
// The functions of an interface begin with the inherited ones of IUnknown and IDispatch.
inline constexpr unsigned kInheritedFunctions = kPortableRuntime ? 0 : 7;

}  // namespace mirolta::test
