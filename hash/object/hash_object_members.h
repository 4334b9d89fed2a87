// The members of IHashObject, in slot order.
#pragma once

#include "mirolta.h"
#include "seam/interface_table.h"

namespace mirolta {

// clang-format off
inline constexpr MemberRow kHashObjectMembers[] = {
    Row<&IHashObject::get_Value>(0, OLESTR("Value"), kGet, {}, kText,
        OLESTR("The digest as uppercase hexadecimal text; ends a computation that is still open")),
    Row<&IHashObject::get_HashSize>(1, OLESTR("HashSize"), kGet, {}, kLong,
        OLESTR("Bytes in the digest: 16, 20 or 32")),
    Row<&IHashObject::get_BlockSize>(2, OLESTR("BlockSize"), kGet, {}, kLong,
        OLESTR("Bytes in a block of the algorithm: 64")),
    Row<&IHashObject::InitHash>(3, OLESTR("InitHash"), kMethod,
        {In(OLESTR("bstrAlg"), kText)}, kNone,
        OLESTR("Chooses the algorithm: MD5, SHA1 or SHA256, written exactly so; drops the key")),
    Row<&IHashObject::HashData>(4, OLESTR("HashData"), kMethod,
        {In(OLESTR("vData"), kVariant), Default(OLESTR("lCP"), kLong, -1)}, kNone,
        OLESTR("Digests one piece of data from start to end; -1 uses the codePage property for text")),
    Row<&IHashObject::get_BinaryValue>(5, OLESTR("BinaryValue"), kGet, {}, kBytesVariant,
        OLESTR("The digest as a byte array; ends a computation that is still open")),
    Row<&IHashObject::HashUpdate>(6, OLESTR("HashUpdate"), kMethod,
        {In(OLESTR("vData"), kVariant), Default(OLESTR("lCP"), kLong, -1)}, kNone,
        OLESTR("Adds a piece of data; -1 uses the codePage property for text")),
    Row<&IHashObject::HashFinalize>(7, OLESTR("HashFinalize"), kMethod, {}, kNone,
        OLESTR("Ends the computation")),
    Row<&IHashObject::get_codePage>(8, OLESTR("codePage"), kGet, {}, kLong,
        OLESTR("Character set for text: 0 the system's, 65001 UTF-8, negative UTF-16")),
    Row<&IHashObject::put_codePage>(8, OLESTR("codePage"), kPut,
        {In(OLESTR("lCP"), kLong)}, kNone,
        OLESTR("Character set for text: 0 the system's, 65001 UTF-8, negative UTF-16")),
    Row<&IHashObject::get_Key>(9, OLESTR("Key"), kGet, {}, kBytesVariant,
        OLESTR("The HMAC key as a byte array, empty without a key; setting it starts over")),
    Row<&IHashObject::put_Key>(9, OLESTR("Key"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The HMAC key as a byte array, empty without a key; setting it starts over")),
    Row<&IHashObject::Reset>(10, OLESTR("Reset"), kMethod, {}, kNone,
        OLESTR("Starts over, keeping the key")),
    Row<&IHashObject::ResetKey>(11, OLESTR("ResetKey"), kMethod, {}, kNone,
        OLESTR("Drops the key and starts over")),
};
// clang-format on

inline constexpr InterfaceTable kHashObjectInterface = {
    &IID_IHashObject, OLESTR("IHashObject"), OLESTR("Message digests and HMAC"), kHashObjectMembers,
    sizeof(kHashObjectMembers) / sizeof(kHashObjectMembers[0])};

}  // namespace mirolta
