// SPDX-License-Identifier: MIT
// Identifiers of interfaces, and the C++ interface that each is bound to.
#pragma once

#ifdef _WIN32
  #include "mirolta/language.h"
#else
  #include "mirolta/guid.h"
#endif

#ifdef __cplusplus
namespace mirolta {

// IdOf<Interface>::value is the identifier of an interface.
  #ifdef _WIN32
template <typename Interface>
struct IdOf {
  static constexpr const IID& value = __uuidof(Interface);
};
  #else
template <typename Interface>
struct IdOf;
  #endif

}  // namespace mirolta

  // Binds an interface to the constant IID_ and its name.
  #define MIROLTA_BIND_IID(interface_name)                      \
    template <>                                                 \
    struct mirolta::IdOf<interface_name> {                      \
      static constexpr const IID& value = IID_##interface_name; \
    }
#endif

// MIROLTA_INTERFACE_ID(name, eleven numbers) defines IID_name. In C++ it declares the interface and
// binds it: to IdOf, and to __uuidof with the compilers that have it from the system's headers.
#define MIROLTA_IID(name, first, second, third, ...) \
  MIROLTA_IDENTIFIER IID IID_##name = {first, second, third, {__VA_ARGS__}}
#if !defined(__cplusplus)
  #define MIROLTA_INTERFACE_ID(name, ...) MIROLTA_IID(name, __VA_ARGS__)
#elif defined(__CRT_UUID_DECL)
  #define MIROLTA_INTERFACE_ID(name, ...) \
    struct name;                          \
    __CRT_UUID_DECL(name, __VA_ARGS__)    \
    MIROLTA_IID(name, __VA_ARGS__);       \
    MIROLTA_BIND_IID(name)
#else
  #define MIROLTA_INTERFACE_ID(name, ...) \
    struct name;                          \
    MIROLTA_IID(name, __VA_ARGS__);       \
    MIROLTA_BIND_IID(name)
#endif
