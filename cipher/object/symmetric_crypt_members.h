// The members of ISymmetricCryptObject, in slot order.
#pragma once

#include "mirolta.h"
#include "seam/interface_table.h"

namespace mirolta {

// clang-format off
inline constexpr MemberRow kSymmetricCryptMembers[] = {
    Row<&ISymmetricCryptObject::get_Key>(1, OLESTR("Key"), kGet, {}, kBytesVariant,
        OLESTR("The key's bytes: 16, 24 or 32 for AES, 8, 16 or 24 for DES; setting it drops pending data")),
    Row<&ISymmetricCryptObject::put_Key>(1, OLESTR("Key"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The key's bytes: 16, 24 or 32 for AES, 8, 16 or 24 for DES; setting it drops pending data")),
    Row<&ISymmetricCryptObject::get_BlockSize>(2, OLESTR("BlockSize"), kGet, {}, kLong,
        OLESTR("Bytes in a block: 16 for AES, 8 for DES")),
    Row<&ISymmetricCryptObject::get_codePage>(3, OLESTR("codePage"), kGet, {}, kLong,
        OLESTR("Character set for text: 0 the system's, 65001 UTF-8, negative UTF-16")),
    Row<&ISymmetricCryptObject::put_codePage>(3, OLESTR("codePage"), kPut,
        {In(OLESTR("lCP"), kLong)}, kNone,
        OLESTR("Character set for text: 0 the system's, 65001 UTF-8, negative UTF-16")),
    Row<&ISymmetricCryptObject::Encrypt>(4, OLESTR("Encrypt"), kMethod,
        {In(OLESTR("vData"), kVariant), Default(OLESTR("bFinalize"), kBool, -1)}, kBytesVariant,
        OLESTR("Encrypts a piece of data block by block; the last piece is padded to whole blocks")),
    Row<&ISymmetricCryptObject::Decrypt>(5, OLESTR("Decrypt"), kMethod,
        {In(OLESTR("vData"), kVariant), Default(OLESTR("bFinalize"), kBool, -1)}, kBytesVariant,
        OLESTR("Decrypts a piece of data block by block; pad bytes are not removed")),
    Row<&ISymmetricCryptObject::Reset>(6, OLESTR("Reset"), kMethod,
        {Default(OLESTR("lWhat"), kLong, 0)}, kNone,
        OLESTR("Drops pending data of both directions, whatever lWhat says")),
    Row<&ISymmetricCryptObject::ResetKey>(7, OLESTR("ResetKey"), kMethod, {}, kNone,
        OLESTR("Drops the key and pending data")),
    Row<&ISymmetricCryptObject::Init>(8, OLESTR("Init"), kMethod,
        {In(OLESTR("vAlg"), kVariant)}, kNone,
        OLESTR("Chooses the algorithm: AES or DES, written exactly so")),
    Row<&ISymmetricCryptObject::get_PadType>(9, OLESTR("PadType"), kGet, {}, kLong,
        OLESTR("Pad bytes of a last partial block: -1 random, else this value's low 8 bits")),
    Row<&ISymmetricCryptObject::put_PadType>(9, OLESTR("PadType"), kPut,
        {In(OLESTR("lPad"), kLong)}, kNone,
        OLESTR("Pad bytes of a last partial block: -1 random, else this value's low 8 bits")),
};
// clang-format on

inline constexpr InterfaceTable kSymmetricCryptInterface = {
    &IID_ISymmetricCryptObject, OLESTR("ISymmetricCryptObject"),
    OLESTR("AES and DES encryption, block by block"), kSymmetricCryptMembers,
    sizeof(kSymmetricCryptMembers) / sizeof(kSymmetricCryptMembers[0])};

}  // namespace mirolta
