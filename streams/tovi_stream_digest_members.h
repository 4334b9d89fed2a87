// The members of IToviStreamDigest, in slot order.
#pragma once

#include "mirolta.h"
#include "seam/interface_table.h"

namespace mirolta {

// clang-format off
inline constexpr MemberRow kToviStreamDigestMembers[] = {
    Row<&IToviStreamDigest::get_Stream>(1, OLESTR("Stream"), kGet, {}, kUnknown,
        OLESTR("The bound object: any object that is a stream or supplies one")),
    Row<&IToviStreamDigest::putref_Stream>(1, OLESTR("Stream"), kPutRef,
        {In(OLESTR("pStream"), kUnknown)}, kNone,
        OLESTR("The bound object: any object that is a stream or supplies one")),
    Row<&IToviStreamDigest::get_ReadAlgorithm>(3, OLESTR("ReadAlgorithm"), kGet, {}, kText,
        OLESTR("MD5, SHA1 or SHA256 (case-sensitive) for bytes read; discards the key")),
    Row<&IToviStreamDigest::put_ReadAlgorithm>(3, OLESTR("ReadAlgorithm"), kPut,
        {In(OLESTR("bstrAlg"), kText)}, kNone,
        OLESTR("MD5, SHA1 or SHA256 (case-sensitive) for bytes read; discards the key")),
    Row<&IToviStreamDigest::get_WriteAlgorithm>(4, OLESTR("WriteAlgorithm"), kGet, {}, kText,
        OLESTR("MD5, SHA1 or SHA256 (case-sensitive) for bytes written; discards the key")),
    Row<&IToviStreamDigest::put_WriteAlgorithm>(4, OLESTR("WriteAlgorithm"), kPut,
        {In(OLESTR("bstrAlg"), kText)}, kNone,
        OLESTR("MD5, SHA1 or SHA256 (case-sensitive) for bytes written; discards the key")),
    Row<&IToviStreamDigest::get_WriteKey>(5, OLESTR("WriteKey"), kGet, {}, kBytesVariant,
        OLESTR("The HMAC key for bytes written; setting it restarts the digest")),
    Row<&IToviStreamDigest::put_WriteKey>(5, OLESTR("WriteKey"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The HMAC key for bytes written; setting it restarts the digest")),
    Row<&IToviStreamDigest::get_ReadKey>(6, OLESTR("ReadKey"), kGet, {}, kBytesVariant,
        OLESTR("The HMAC key for bytes read; setting it restarts the digest")),
    Row<&IToviStreamDigest::put_ReadKey>(6, OLESTR("ReadKey"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The HMAC key for bytes read; setting it restarts the digest")),
    Row<&IToviStreamDigest::get_ReadValue>(7, OLESTR("ReadValue"), kGet, {}, kText,
        OLESTR("The digest of the bytes read as uppercase hexadecimal; finishes the computation")),
    Row<&IToviStreamDigest::get_WriteValue>(8, OLESTR("WriteValue"), kGet, {}, kText,
        OLESTR("The digest of the bytes written as uppercase hexadecimal; finishes the computation")),
    Row<&IToviStreamDigest::ReadReset>(9, OLESTR("ReadReset"), kMethod, {}, kNone,
        OLESTR("Restarts the digest of bytes read, keeping the key")),
    Row<&IToviStreamDigest::WriteReset>(10, OLESTR("WriteReset"), kMethod, {}, kNone,
        OLESTR("Restarts the digest of bytes written, keeping the key")),
    Row<&IToviStreamDigest::get_WriteHashEnable>(11, OLESTR("WriteHashEnable"), kGet, {}, kBool,
        OLESTR("Whether bytes written are digested; set by choosing an algorithm")),
    Row<&IToviStreamDigest::put_WriteHashEnable>(11, OLESTR("WriteHashEnable"), kPut,
        {In(OLESTR("bEnable"), kBool)}, kNone,
        OLESTR("Whether bytes written are digested; set by choosing an algorithm")),
    Row<&IToviStreamDigest::get_ReadHashEnable>(12, OLESTR("ReadHashEnable"), kGet, {}, kBool,
        OLESTR("Whether bytes read are digested; set by choosing an algorithm")),
    Row<&IToviStreamDigest::put_ReadHashEnable>(12, OLESTR("ReadHashEnable"), kPut,
        {In(OLESTR("bEnable"), kBool)}, kNone,
        OLESTR("Whether bytes read are digested; set by choosing an algorithm")),
    Row<&IToviStreamDigest::WriteResetKey>(13, OLESTR("WriteResetKey"), kMethod, {}, kNone,
        OLESTR("Discards the key for bytes written and restarts the digest")),
    Row<&IToviStreamDigest::ReadResetKey>(14, OLESTR("ReadResetKey"), kMethod, {}, kNone,
        OLESTR("Discards the key for bytes read and restarts the digest")),
    Row<&IToviStreamDigest::get_SeekingForbidden>(15, OLESTR("SeekingForbidden"), kGet, {}, kBool,
        OLESTR("Whether Seek only reports the position; initially true")),
    Row<&IToviStreamDigest::put_SeekingForbidden>(15, OLESTR("SeekingForbidden"), kPut,
        {In(OLESTR("bForbidden"), kBool)}, kNone,
        OLESTR("Whether Seek only reports the position; initially true")),
    Row<&IToviStreamDigest::get_codePage>(16, OLESTR("codePage"), kGet, {}, kLong,
        OLESTR("Character set for keys given as text: 0 system, 65001 UTF-8, negative UTF-16")),
    Row<&IToviStreamDigest::put_codePage>(16, OLESTR("codePage"), kPut,
        {In(OLESTR("lCP"), kLong)}, kNone,
        OLESTR("Character set for keys given as text: 0 system, 65001 UTF-8, negative UTF-16")),
    Row<&IToviStreamDigest::WriteFinalize>(17, OLESTR("WriteFinalize"), kMethod, {}, kNone,
        OLESTR("Finishes the digest of bytes written")),
    Row<&IToviStreamDigest::ReadFinalize>(18, OLESTR("ReadFinalize"), kMethod, {}, kNone,
        OLESTR("Finishes the digest of bytes read")),
    Row<&IToviStreamDigest::get_ReadBinaryValue>(19, OLESTR("ReadBinaryValue"), kGet, {}, kBytesVariant,
        OLESTR("The digest of the bytes read as a byte array; finishes the computation")),
    Row<&IToviStreamDigest::get_WriteBinaryValue>(20, OLESTR("WriteBinaryValue"), kGet,
        {}, kBytesVariant,
        OLESTR("The digest of the bytes written as a byte array; finishes the computation")),
};
// clang-format on

inline constexpr InterfaceTable kToviStreamDigestInterface = {
    &IID_IToviStreamDigest, OLESTR("IToviStreamDigest"),
    OLESTR("A stream filter that computes digests"), kToviStreamDigestMembers,
    sizeof(kToviStreamDigestMembers) / sizeof(kToviStreamDigestMembers[0])};

}  // namespace mirolta
