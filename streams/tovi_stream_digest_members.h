// The members of IToviStreamDigest, in slot order.
#pragma once

#include "mirolta.h"
#include "seam/interface_table.h"

namespace mirolta {

// clang-format off
inline constexpr MemberRow kToviStreamDigestMembers[] = {
    Row<&IToviStreamDigest::get_Stream>(1, OLESTR("Stream"), kGet, {}, kUnknown,
        OLESTR("The object that was bound; any object that is a stream or hands one out")),
    Row<&IToviStreamDigest::putref_Stream>(1, OLESTR("Stream"), kPutRef,
        {In(OLESTR("pStream"), kUnknown)}, kNone,
        OLESTR("The object that was bound; any object that is a stream or hands one out")),
    Row<&IToviStreamDigest::get_ReadAlgorithm>(3, OLESTR("ReadAlgorithm"), kGet, {}, kText,
        OLESTR("MD5, SHA1 or SHA256, written exactly so, for bytes read; drops the key")),
    Row<&IToviStreamDigest::put_ReadAlgorithm>(3, OLESTR("ReadAlgorithm"), kPut,
        {In(OLESTR("bstrAlg"), kText)}, kNone,
        OLESTR("MD5, SHA1 or SHA256, written exactly so, for bytes read; drops the key")),
    Row<&IToviStreamDigest::get_WriteAlgorithm>(4, OLESTR("WriteAlgorithm"), kGet, {}, kText,
        OLESTR("MD5, SHA1 or SHA256, written exactly so, for bytes written; drops the key")),
    Row<&IToviStreamDigest::put_WriteAlgorithm>(4, OLESTR("WriteAlgorithm"), kPut,
        {In(OLESTR("bstrAlg"), kText)}, kNone,
        OLESTR("MD5, SHA1 or SHA256, written exactly so, for bytes written; drops the key")),
    Row<&IToviStreamDigest::get_WriteKey>(5, OLESTR("WriteKey"), kGet, {}, kVariant,
        OLESTR("The HMAC key for bytes written; setting it starts over")),
    Row<&IToviStreamDigest::put_WriteKey>(5, OLESTR("WriteKey"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The HMAC key for bytes written; setting it starts over")),
    Row<&IToviStreamDigest::get_ReadKey>(6, OLESTR("ReadKey"), kGet, {}, kVariant,
        OLESTR("The HMAC key for bytes read; setting it starts over")),
    Row<&IToviStreamDigest::put_ReadKey>(6, OLESTR("ReadKey"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The HMAC key for bytes read; setting it starts over")),
    Row<&IToviStreamDigest::get_ReadValue>(7, OLESTR("ReadValue"), kGet, {}, kText,
        OLESTR("The digest of the bytes read as uppercase hexadecimal; ends the computation")),
    Row<&IToviStreamDigest::get_WriteValue>(8, OLESTR("WriteValue"), kGet, {}, kText,
        OLESTR("The digest of the bytes written as uppercase hexadecimal; ends the computation")),
    Row<&IToviStreamDigest::ReadReset>(9, OLESTR("ReadReset"), kMethod, {}, kNone,
        OLESTR("Starts the digest of bytes read over, keeping the key")),
    Row<&IToviStreamDigest::WriteReset>(10, OLESTR("WriteReset"), kMethod, {}, kNone,
        OLESTR("Starts the digest of bytes written over, keeping the key")),
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
        OLESTR("Drops the key for bytes written and starts over")),
    Row<&IToviStreamDigest::ReadResetKey>(14, OLESTR("ReadResetKey"), kMethod, {}, kNone,
        OLESTR("Drops the key for bytes read and starts over")),
    Row<&IToviStreamDigest::get_SeekingForbidden>(15, OLESTR("SeekingForbidden"), kGet, {}, kBool,
        OLESTR("Whether Seek only reports the position; true at first")),
    Row<&IToviStreamDigest::put_SeekingForbidden>(15, OLESTR("SeekingForbidden"), kPut,
        {In(OLESTR("bForbidden"), kBool)}, kNone,
        OLESTR("Whether Seek only reports the position; true at first")),
    Row<&IToviStreamDigest::get_codePage>(16, OLESTR("codePage"), kGet, {}, kLong,
        OLESTR("Character set for keys given as text: 0 system, 65001 UTF-8, negative UTF-16")),
    Row<&IToviStreamDigest::put_codePage>(16, OLESTR("codePage"), kPut,
        {In(OLESTR("lCP"), kLong)}, kNone,
        OLESTR("Character set for keys given as text: 0 system, 65001 UTF-8, negative UTF-16")),
    Row<&IToviStreamDigest::WriteFinalize>(17, OLESTR("WriteFinalize"), kMethod, {}, kNone,
        OLESTR("Ends the digest of bytes written")),
    Row<&IToviStreamDigest::ReadFinalize>(18, OLESTR("ReadFinalize"), kMethod, {}, kNone,
        OLESTR("Ends the digest of bytes read")),
    Row<&IToviStreamDigest::get_ReadBinaryValue>(19, OLESTR("ReadBinaryValue"), kGet, {}, kVariant,
        OLESTR("The digest of the bytes read as a byte array; ends the computation")),
    Row<&IToviStreamDigest::get_WriteBinaryValue>(20, OLESTR("WriteBinaryValue"), kGet,
        {}, kVariant,
        OLESTR("The digest of the bytes written as a byte array; ends the computation")),
};
// clang-format on

inline constexpr InterfaceTable kToviStreamDigestInterface = {
    &IID_IToviStreamDigest, OLESTR("IToviStreamDigest"),
    OLESTR("A stream that digests what passes through it"), kToviStreamDigestMembers,
    sizeof(kToviStreamDigestMembers) / sizeof(kToviStreamDigestMembers[0])};

}  // namespace mirolta
