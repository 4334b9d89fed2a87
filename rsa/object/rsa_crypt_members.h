// The members of IRSACrypt, in slot order.
#pragma once

#include "mirolta.h"
#include "seam/interface_table.h"

namespace mirolta {

// clang-format off
inline constexpr MemberRow kRsaCryptMembers[] = {
    Row<&IRSACrypt::CreateKeys>(1, OLESTR("CreateKeys"), kMethod,
        {In(OLESTR("v1"), kVariant), In(OLESTR("v2"), kVariant)}, kNone,
        OLESTR("Makes a key from the next primes after two numbers; text is hexadecimal")),
    Row<&IRSACrypt::CreateRandKeys>(2, OLESTR("CreateRandKeys"), kMethod,
        {Default(OLESTR("lByteSize"), kLong, 32), Default(OLESTR("bExactSize"), kBool, 0)}, kNone,
        OLESTR("Makes a random key with a modulus of lByteSize bytes, or one more if not exact")),
    Row<&IRSACrypt::get_Modulus>(3, OLESTR("Modulus"), kGet, {}, kBytesVariant,
        OLESTR("The modulus n as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::put_Modulus>(3, OLESTR("Modulus"), kPut,
        {In(OLESTR("vValue"), kVariant)}, kNone,
        OLESTR("The modulus n as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::get_PublicExp>(4, OLESTR("PublicExp"), kGet, {}, kBytesVariant,
        OLESTR("The public exponent e as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::put_PublicExp>(4, OLESTR("PublicExp"), kPut,
        {In(OLESTR("vValue"), kVariant)}, kNone,
        OLESTR("The public exponent e as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::get_SecretExp>(5, OLESTR("SecretExp"), kGet, {}, kBytesVariant,
        OLESTR("The secret exponent d as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::put_SecretExp>(5, OLESTR("SecretExp"), kPut,
        {In(OLESTR("vValue"), kVariant)}, kNone,
        OLESTR("The secret exponent d as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::get_P>(6, OLESTR("P"), kGet, {}, kBytesVariant,
        OLESTR("The smaller prime p as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::put_P>(6, OLESTR("P"), kPut,
        {In(OLESTR("vValue"), kVariant)}, kNone,
        OLESTR("The smaller prime p as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::get_Q>(7, OLESTR("Q"), kGet, {}, kBytesVariant,
        OLESTR("The larger prime q as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::put_Q>(7, OLESTR("Q"), kPut,
        {In(OLESTR("vValue"), kVariant)}, kNone,
        OLESTR("The larger prime q as a byte array; text that it is set to is hexadecimal")),
    Row<&IRSACrypt::Encrypt>(8, OLESTR("Encrypt"), kMethod,
        {In(OLESTR("vData"), kVariant)}, kBytesVariant,
        OLESTR("Raises one number below the modulus to the public exponent; no padding")),
    Row<&IRSACrypt::Decrypt>(9, OLESTR("Decrypt"), kMethod,
        {In(OLESTR("vData"), kVariant)}, kBytesVariant,
        OLESTR("Raises one number to the secret exponent; no padding")),
    Row<&IRSACrypt::DecryptPQ>(10, OLESTR("DecryptPQ"), kMethod,
        {In(OLESTR("vData"), kVariant)}, kBytesVariant,
        OLESTR("Decrypts with the primes, faster than Decrypt; no padding")),
    Row<&IRSACrypt::Reset>(11, OLESTR("Reset"), kMethod, {}, kNone, OLESTR("Sets the whole key to zero")),
    Row<&IRSACrypt::get_BlockSize>(12, OLESTR("BlockSize"), kGet, {}, kLong,
        OLESTR("The most bytes whose every value is below the modulus")),
};
// clang-format on

inline constexpr InterfaceTable kRsaCryptInterface = {
    &IID_IRSACrypt, OLESTR("IRSACrypt"), OLESTR("Raw RSA, one number at a time"), kRsaCryptMembers,
    sizeof(kRsaCryptMembers) / sizeof(kRsaCryptMembers[0])};

}  // namespace mirolta
