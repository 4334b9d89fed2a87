// The type library's expected content, member by member in the order of slots, independent of the
// module's own tables.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "mirolta.h"

namespace mirolta::test {

inline constexpr USHORT kOptional = PARAMFLAG_FOPT;
inline constexpr USHORT kPreset = PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT;

// A put's value has no name of its own.
struct ParameterCase {
  const OLECHAR* name;
  VARTYPE type;
  USHORT flags = 0;
  LONG preset = 0;
};

// The slot is where the compiler finds the method in the interface's virtual table.
struct MemberCase {
  MEMBERID id;
  const OLECHAR* name;
  INVOKEKIND kind;
  VARTYPE result;  // VT_VOID for none
  ParameterCase parameters[3];
  size_t slot;

  std::string Label() const {
    const std::basic_string_view<OLECHAR> text = name;
    return std::string(text.begin(), text.end());
  }
  SHORT ParameterCount() const {
    SHORT count = 0;
    while (count < 3 && parameters[count].type != VT_EMPTY) ++count;
    return count;
  }
};

struct InterfaceCase {
  const OLECHAR* name;
  const IID* iid;
  const CLSID* class_id;
  const OLECHAR* class_name;
  const MemberCase* members;
  unsigned member_count;
};

// A pointer to a virtual method holds its offset in the virtual table, plus one on platforms whose
// ABI marks virtual methods in the offset.
template <typename Method>
size_t SlotOf(Method method) {
  struct Representation {
    uintptr_t offset;
    ptrdiff_t adjustment;
  };
  static_assert(sizeof(Method) == sizeof(Representation));
  return (std::bit_cast<Representation>(method).offset & ~uintptr_t{1}) / sizeof(void*);
}

// Rows of a table of `Interface`. A method is named as its member, with get_, put_ or putref_.
#define GET(id, name, type, ...) \
  { id, OLESTR(#name), INVOKE_PROPERTYGET, type, {__VA_ARGS__}, SlotOf(&Interface::get_##name) }
#define PUT(id, name, ...) \
  { id, OLESTR(#name), INVOKE_PROPERTYPUT, VT_VOID, {__VA_ARGS__}, SlotOf(&Interface::put_##name) }
#define PROPERTY(id, name, type) GET(id, name, type), PUT(id, name, NEW_VALUE(type))
#define REFERENCE(id, name, type)                                         \
  GET(id, name, type), {                                                  \
    id, OLESTR(#name), INVOKE_PROPERTYPUTREF, VT_VOID, {NEW_VALUE(type)}, \
        SlotOf(&Interface::putref_##name)                                 \
  }
#define CALL(id, name, result, ...) \
  { id, OLESTR(#name), INVOKE_FUNC, result, {__VA_ARGS__}, SlotOf(&Interface::name) }
#define ARG(name, ...) \
  { OLESTR(#name), __VA_ARGS__ }
#define NEW_VALUE(type) \
  { nullptr, type }

// clang-format off
namespace hash {
using Interface = IHashObject;
inline const MemberCase kMembers[] = {
    GET(0, Value, VT_BSTR),
    GET(1, HashSize, VT_I4),
    GET(2, BlockSize, VT_I4),
    CALL(3, InitHash, VT_VOID, ARG(bstrAlg, VT_BSTR)),
    CALL(4, HashData, VT_VOID, ARG(vData, VT_VARIANT), ARG(lCP, VT_I4, kPreset, -1)),
    GET(5, BinaryValue, VT_VARIANT),
    CALL(6, HashUpdate, VT_VOID, ARG(vData, VT_VARIANT), ARG(lCP, VT_I4, kPreset, -1)),
    CALL(7, HashFinalize, VT_VOID),
    PROPERTY(8, codePage, VT_I4),
    PROPERTY(9, Key, VT_VARIANT),
    CALL(10, Reset, VT_VOID),
    CALL(11, ResetKey, VT_VOID),
};
}  // namespace hash

namespace symmetric {
using Interface = ISymmetricCryptObject;
inline const MemberCase kMembers[] = {
    PROPERTY(1, Key, VT_VARIANT),
    GET(2, BlockSize, VT_I4),
    PROPERTY(3, codePage, VT_I4),
    CALL(4, Encrypt, VT_VARIANT, ARG(vData, VT_VARIANT), ARG(bFinalize, VT_BOOL, kPreset, -1)),
    CALL(5, Decrypt, VT_VARIANT, ARG(vData, VT_VARIANT), ARG(bFinalize, VT_BOOL, kPreset, -1)),
    CALL(6, Reset, VT_VOID, ARG(lWhat, VT_I4, kPreset, 0)),
    CALL(7, ResetKey, VT_VOID),
    CALL(8, Init, VT_VOID, ARG(vAlg, VT_VARIANT)),
    PROPERTY(9, PadType, VT_I4),
};
}  // namespace symmetric

namespace number {
using Interface = IPexBigNumber;
inline const MemberCase kMembers[] = {
    PROPERTY(0, Value, VT_VARIANT),
    PROPERTY(2, Hex, VT_VARIANT),
    GET(3, Text, VT_BSTR, ARG(lCP, VT_I4, kPreset, 0)),
    PUT(3, Text, ARG(lCP, VT_I4, kPreset, 0), NEW_VALUE(VT_BSTR)),
    PROPERTY(4, Binary, VT_VARIANT),
    CALL(5, Add, VT_PTR, ARG(v, VT_VARIANT)),
    CALL(6, Sub, VT_PTR, ARG(v, VT_VARIANT)),
    CALL(7, Mul, VT_PTR, ARG(v, VT_VARIANT)),
    CALL(8, Div, VT_PTR, ARG(v, VT_VARIANT)),
    CALL(9, Mod, VT_PTR, ARG(v, VT_VARIANT)),
    CALL(10, Inc, VT_VOID, ARG(v, VT_VARIANT, kOptional)),
    CALL(11, Dec, VT_VOID, ARG(v, VT_VARIANT, kOptional)),
    CALL(12, Cmp, VT_I4, ARG(v, VT_VARIANT)),
    CALL(13, NewNumber, VT_PTR, ARG(v, VT_VARIANT, kOptional)),
    CALL(14, Random, VT_VOID, ARG(lSize, VT_I4), ARG(bEnsureSize, VT_BOOL, kPreset, 0),
         ARG(bOdd, VT_BOOL, kPreset, 0)),
    CALL(15, GCD, VT_PTR, ARG(v, VT_VARIANT)),
    CALL(16, ModExp, VT_PTR, ARG(ve, VT_VARIANT), ARG(vm, VT_VARIANT)),
    CALL(17, ModInv, VT_PTR, ARG(vm, VT_VARIANT)),
};
}  // namespace number

namespace rsa {
using Interface = IRSACrypt;
inline const MemberCase kMembers[] = {
    CALL(1, CreateKeys, VT_VOID, ARG(v1, VT_VARIANT), ARG(v2, VT_VARIANT)),
    CALL(2, CreateRandKeys, VT_VOID, ARG(lByteSize, VT_I4, kPreset, 32),
         ARG(bExactSize, VT_BOOL, kPreset, 0)),
    PROPERTY(3, Modulus, VT_VARIANT),
    PROPERTY(4, PublicExp, VT_VARIANT),
    PROPERTY(5, SecretExp, VT_VARIANT),
    PROPERTY(6, P, VT_VARIANT),
    PROPERTY(7, Q, VT_VARIANT),
    CALL(8, Encrypt, VT_VARIANT, ARG(vData, VT_VARIANT)),
    CALL(9, Decrypt, VT_VARIANT, ARG(vData, VT_VARIANT)),
    CALL(10, DecryptPQ, VT_VARIANT, ARG(vData, VT_VARIANT)),
    CALL(11, Reset, VT_VOID),
    GET(12, BlockSize, VT_I4),
};
}  // namespace rsa

namespace digest {
using Interface = IToviStreamDigest;
inline const MemberCase kMembers[] = {
    REFERENCE(1, Stream, VT_UNKNOWN),
    PROPERTY(3, ReadAlgorithm, VT_BSTR),
    PROPERTY(4, WriteAlgorithm, VT_BSTR),
    PROPERTY(5, WriteKey, VT_VARIANT),
    PROPERTY(6, ReadKey, VT_VARIANT),
    GET(7, ReadValue, VT_BSTR),
    GET(8, WriteValue, VT_BSTR),
    CALL(9, ReadReset, VT_VOID),
    CALL(10, WriteReset, VT_VOID),
    PROPERTY(11, WriteHashEnable, VT_BOOL),
    PROPERTY(12, ReadHashEnable, VT_BOOL),
    CALL(13, WriteResetKey, VT_VOID),
    CALL(14, ReadResetKey, VT_VOID),
    PROPERTY(15, SeekingForbidden, VT_BOOL),
    PROPERTY(16, codePage, VT_I4),
    CALL(17, WriteFinalize, VT_VOID),
    CALL(18, ReadFinalize, VT_VOID),
    GET(19, ReadBinaryValue, VT_VARIANT),
    GET(20, WriteBinaryValue, VT_VARIANT),
};
}  // namespace digest

namespace crypt {
using Interface = IToviStreamCrypt;
inline const MemberCase kMembers[] = {
    REFERENCE(1, Stream, VT_UNKNOWN),
    PROPERTY(2, ReadAlgorithm, VT_BSTR),
    PROPERTY(3, WriteAlgorithm, VT_BSTR),
    PROPERTY(4, ReadKey, VT_VARIANT),
    PROPERTY(5, WriteKey, VT_VARIANT),
    CALL(6, ReadReset, VT_VOID),
    CALL(7, WriteReset, VT_VOID),
    CALL(8, ReadResetKey, VT_VOID),
    CALL(9, WriteResetKey, VT_VOID),
    PROPERTY(10, SeekingForbidden, VT_BOOL),
    PROPERTY(11, codePage, VT_I4),
    CALL(12, ReadFinalize, VT_VOID),
    CALL(13, WriteFinalize, VT_VOID),
    PROPERTY(14, WriteDecrypt, VT_BOOL),
    PROPERTY(15, ReadDecrypt, VT_BOOL),
    PROPERTY(16, ReadPadType, VT_I4),
    PROPERTY(17, WritePadType, VT_I4),
};
}  // namespace crypt

// clang-format on

#undef GET
#undef PUT
#undef PROPERTY
#undef REFERENCE
#undef CALL
#undef ARG
#undef NEW_VALUE

template <unsigned kCount>
InterfaceCase Case(const OLECHAR* name, const IID& iid, const CLSID& class_id,
                   const OLECHAR* class_name, const MemberCase (&members)[kCount]) {
  return {name, &iid, &class_id, class_name, members, kCount};
}

inline const InterfaceCase kInterfaceCases[] = {
    Case(OLESTR("IHashObject"), IID_IHashObject, CLSID_HashObject, OLESTR("HashObject"),
         hash::kMembers),
    Case(OLESTR("ISymmetricCryptObject"), IID_ISymmetricCryptObject, CLSID_SymmetricCryptObject,
         OLESTR("SymmetricCryptObject"), symmetric::kMembers),
    Case(OLESTR("IPexBigNumber"), IID_IPexBigNumber, CLSID_PexBigNumber, OLESTR("PexBigNumber"),
         number::kMembers),
    Case(OLESTR("IRSACrypt"), IID_IRSACrypt, CLSID_RSACrypt, OLESTR("RSACrypt"), rsa::kMembers),
    Case(OLESTR("IToviStreamDigest"), IID_IToviStreamDigest, CLSID_ToviStreamDigest,
         OLESTR("ToviStreamDigest"), digest::kMembers),
    Case(OLESTR("IToviStreamCrypt"), IID_IToviStreamCrypt, CLSID_ToviStreamCrypt,
         OLESTR("ToviStreamCrypt"), crypt::kMembers),
};

}  // namespace mirolta::test
