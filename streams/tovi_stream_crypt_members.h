// The members of IToviStreamCrypt, in slot order.
#pragma once

#include "mirolta.h"
#include "seam/interface_table.h"

namespace mirolta {

// clang-format off
inline constexpr MemberRow kToviStreamCryptMembers[] = {
    Row<&IToviStreamCrypt::get_Stream>(1, OLESTR("Stream"), kGet, {}, kUnknown,
        OLESTR("The object that was bound; any object that is a stream or hands one out")),
    Row<&IToviStreamCrypt::putref_Stream>(1, OLESTR("Stream"), kPutRef,
        {In(OLESTR("pStream"), kUnknown)}, kNone,
        OLESTR("The object that was bound; any object that is a stream or hands one out")),
    Row<&IToviStreamCrypt::get_ReadAlgorithm>(2, OLESTR("ReadAlgorithm"), kGet, {}, kText,
        OLESTR("AES or DES, written exactly so, for bytes read; drops key and pad setting")),
    Row<&IToviStreamCrypt::put_ReadAlgorithm>(2, OLESTR("ReadAlgorithm"), kPut,
        {In(OLESTR("bstrAlg"), kText)}, kNone,
        OLESTR("AES or DES, written exactly so, for bytes read; drops key and pad setting")),
    Row<&IToviStreamCrypt::get_WriteAlgorithm>(3, OLESTR("WriteAlgorithm"), kGet, {}, kText,
        OLESTR("AES or DES, written exactly so, for bytes written; drops key and pad setting")),
    Row<&IToviStreamCrypt::put_WriteAlgorithm>(3, OLESTR("WriteAlgorithm"), kPut,
        {In(OLESTR("bstrAlg"), kText)}, kNone,
        OLESTR("AES or DES, written exactly so, for bytes written; drops key and pad setting")),
    Row<&IToviStreamCrypt::get_ReadKey>(4, OLESTR("ReadKey"), kGet, {}, kVariant,
        OLESTR("The key for bytes read: 16, 24 or 32 bytes for AES, 8, 16 or 24 for DES")),
    Row<&IToviStreamCrypt::put_ReadKey>(4, OLESTR("ReadKey"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The key for bytes read: 16, 24 or 32 bytes for AES, 8, 16 or 24 for DES")),
    Row<&IToviStreamCrypt::get_WriteKey>(5, OLESTR("WriteKey"), kGet, {}, kVariant,
        OLESTR("The key for bytes written: 16, 24 or 32 bytes for AES, 8, 16 or 24 for DES")),
    Row<&IToviStreamCrypt::put_WriteKey>(5, OLESTR("WriteKey"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The key for bytes written: 16, 24 or 32 bytes for AES, 8, 16 or 24 for DES")),
    Row<&IToviStreamCrypt::ReadReset>(6, OLESTR("ReadReset"), kMethod, {}, kNone,
        OLESTR("Drops what reading holds back")),
    Row<&IToviStreamCrypt::WriteReset>(7, OLESTR("WriteReset"), kMethod, {}, kNone,
        OLESTR("Drops what writing holds back")),
    Row<&IToviStreamCrypt::ReadResetKey>(8, OLESTR("ReadResetKey"), kMethod, {}, kNone,
        OLESTR("Drops the key for bytes read and what reading holds back")),
    Row<&IToviStreamCrypt::WriteResetKey>(9, OLESTR("WriteResetKey"), kMethod, {}, kNone,
        OLESTR("Drops the key for bytes written and what writing holds back")),
    Row<&IToviStreamCrypt::get_SeekingForbidden>(10, OLESTR("SeekingForbidden"), kGet, {}, kBool,
        OLESTR("Whether Seek only reports the position; true at first")),
    Row<&IToviStreamCrypt::put_SeekingForbidden>(10, OLESTR("SeekingForbidden"), kPut,
        {In(OLESTR("bForbidden"), kBool)}, kNone,
        OLESTR("Whether Seek only reports the position; true at first")),
    Row<&IToviStreamCrypt::get_codePage>(11, OLESTR("codePage"), kGet, {}, kLong,
        OLESTR("Character set for keys given as text: 0 system, 65001 UTF-8, negative UTF-16")),
    Row<&IToviStreamCrypt::put_codePage>(11, OLESTR("codePage"), kPut,
        {In(OLESTR("lCP"), kLong)}, kNone,
        OLESTR("Character set for keys given as text: 0 system, 65001 UTF-8, negative UTF-16")),
    Row<&IToviStreamCrypt::ReadFinalize>(12, OLESTR("ReadFinalize"), kMethod, {}, kNone,
        OLESTR("Ends the bytes read: later reads hand out the rest until one gives none")),
    Row<&IToviStreamCrypt::WriteFinalize>(13, OLESTR("WriteFinalize"), kMethod, {}, kNone,
        OLESTR("Ends the bytes written: fills up the last block and writes it")),
    Row<&IToviStreamCrypt::get_WriteDecrypt>(14, OLESTR("WriteDecrypt"), kGet, {}, kBool,
        OLESTR("Whether writing decrypts; false at first")),
    Row<&IToviStreamCrypt::put_WriteDecrypt>(14, OLESTR("WriteDecrypt"), kPut,
        {In(OLESTR("bDecrypt"), kBool)}, kNone,
        OLESTR("Whether writing decrypts; false at first")),
    Row<&IToviStreamCrypt::get_ReadDecrypt>(15, OLESTR("ReadDecrypt"), kGet, {}, kBool,
        OLESTR("Whether reading decrypts; true at first")),
    Row<&IToviStreamCrypt::put_ReadDecrypt>(15, OLESTR("ReadDecrypt"), kPut,
        {In(OLESTR("bDecrypt"), kBool)}, kNone,
        OLESTR("Whether reading decrypts; true at first")),
    Row<&IToviStreamCrypt::get_ReadPadType>(16, OLESTR("ReadPadType"), kGet, {}, kLong,
        OLESTR("The byte that fills up the last block of bytes read; -1 for random bytes")),
    Row<&IToviStreamCrypt::put_ReadPadType>(16, OLESTR("ReadPadType"), kPut,
        {In(OLESTR("lPadType"), kLong)}, kNone,
        OLESTR("The byte that fills up the last block of bytes read; -1 for random bytes")),
    Row<&IToviStreamCrypt::get_WritePadType>(17, OLESTR("WritePadType"), kGet, {}, kLong,
        OLESTR("The byte that fills up the last block of bytes written; -1 for random bytes")),
    Row<&IToviStreamCrypt::put_WritePadType>(17, OLESTR("WritePadType"), kPut,
        {In(OLESTR("lPadType"), kLong)}, kNone,
        OLESTR("The byte that fills up the last block of bytes written; -1 for random bytes")),
};
// clang-format on

inline constexpr InterfaceTable kToviStreamCryptInterface = {
    &IID_IToviStreamCrypt, OLESTR("IToviStreamCrypt"),
    OLESTR("A stream that encrypts or decrypts what passes through it"), kToviStreamCryptMembers,
    sizeof(kToviStreamCryptMembers) / sizeof(kToviStreamCryptMembers[0])};

}  // namespace mirolta
