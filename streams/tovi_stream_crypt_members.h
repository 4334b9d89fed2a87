// The members of IToviStreamCrypt, in slot order.
#pragma once

#include "mirolta.h"
#include "seam/interface_table.h"

namespace mirolta {

// clang-format off
inline constexpr MemberRow kToviStreamCryptMembers[] = {
    Row<&IToviStreamCrypt::get_Stream>(1, OLESTR("Stream"), kGet, {}, kUnknown,
        OLESTR("The bound object: any object that is a stream or supplies one")),
    Row<&IToviStreamCrypt::putref_Stream>(1, OLESTR("Stream"), kPutRef,
        {In(OLESTR("pStream"), kUnknown)}, kNone,
        OLESTR("The bound object: any object that is a stream or supplies one")),
    Row<&IToviStreamCrypt::get_ReadAlgorithm>(2, OLESTR("ReadAlgorithm"), kGet, {}, kText,
        OLESTR("AES or DES (case-sensitive) for bytes read; discards key and pad setting")),
    Row<&IToviStreamCrypt::put_ReadAlgorithm>(2, OLESTR("ReadAlgorithm"), kPut,
        {In(OLESTR("bstrAlg"), kText)}, kNone,
        OLESTR("AES or DES (case-sensitive) for bytes read; discards key and pad setting")),
    Row<&IToviStreamCrypt::get_WriteAlgorithm>(3, OLESTR("WriteAlgorithm"), kGet, {}, kText,
        OLESTR("AES or DES (case-sensitive) for bytes written; discards key and pad setting")),
    Row<&IToviStreamCrypt::put_WriteAlgorithm>(3, OLESTR("WriteAlgorithm"), kPut,
        {In(OLESTR("bstrAlg"), kText)}, kNone,
        OLESTR("AES or DES (case-sensitive) for bytes written; discards key and pad setting")),
    Row<&IToviStreamCrypt::get_ReadKey>(4, OLESTR("ReadKey"), kGet, {}, kBytesVariant,
        OLESTR("The key for bytes read: 16, 24 or 32 bytes for AES, 8, 16 or 24 for DES")),
    Row<&IToviStreamCrypt::put_ReadKey>(4, OLESTR("ReadKey"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The key for bytes read: 16, 24 or 32 bytes for AES, 8, 16 or 24 for DES")),
    Row<&IToviStreamCrypt::get_WriteKey>(5, OLESTR("WriteKey"), kGet, {}, kBytesVariant,
        OLESTR("The key for bytes written: 16, 24 or 32 bytes for AES, 8, 16 or 24 for DES")),
    Row<&IToviStreamCrypt::put_WriteKey>(5, OLESTR("WriteKey"), kPut,
        {In(OLESTR("vKey"), kVariant)}, kNone,
        OLESTR("The key for bytes written: 16, 24 or 32 bytes for AES, 8, 16 or 24 for DES")),
    Row<&IToviStreamCrypt::ReadReset>(6, OLESTR("ReadReset"), kMethod, {}, kNone,
        OLESTR("Discards the pending data of reading")),
    Row<&IToviStreamCrypt::WriteReset>(7, OLESTR("WriteReset"), kMethod, {}, kNone,
        OLESTR("Discards the pending data of writing")),
    Row<&IToviStreamCrypt::ReadResetKey>(8, OLESTR("ReadResetKey"), kMethod, {}, kNone,
        OLESTR("Discards the key and the pending data of reading")),
    Row<&IToviStreamCrypt::WriteResetKey>(9, OLESTR("WriteResetKey"), kMethod, {}, kNone,
        OLESTR("Discards the key and the pending data of writing")),
    Row<&IToviStreamCrypt::get_SeekingForbidden>(10, OLESTR("SeekingForbidden"), kGet, {}, kBool,
        OLESTR("Whether Seek only reports the position; initially true")),
    Row<&IToviStreamCrypt::put_SeekingForbidden>(10, OLESTR("SeekingForbidden"), kPut,
        {In(OLESTR("bForbidden"), kBool)}, kNone,
        OLESTR("Whether Seek only reports the position; initially true")),
    Row<&IToviStreamCrypt::get_codePage>(11, OLESTR("codePage"), kGet, {}, kLong,
        OLESTR("Character set for keys given as text: 0 system, 65001 UTF-8, negative UTF-16")),
    Row<&IToviStreamCrypt::put_codePage>(11, OLESTR("codePage"), kPut,
        {In(OLESTR("lCP"), kLong)}, kNone,
        OLESTR("Character set for keys given as text: 0 system, 65001 UTF-8, negative UTF-16")),
    Row<&IToviStreamCrypt::ReadFinalize>(12, OLESTR("ReadFinalize"), kMethod, {}, kNone,
        OLESTR("Ends the data read: later reads return the rest, until one returns no bytes")),
    Row<&IToviStreamCrypt::WriteFinalize>(13, OLESTR("WriteFinalize"), kMethod, {}, kNone,
        OLESTR("Ends the data written: pads the last block and writes it")),
    Row<&IToviStreamCrypt::get_WriteDecrypt>(14, OLESTR("WriteDecrypt"), kGet, {}, kBool,
        OLESTR("Whether writing decrypts; initially false")),
    Row<&IToviStreamCrypt::put_WriteDecrypt>(14, OLESTR("WriteDecrypt"), kPut,
        {In(OLESTR("bDecrypt"), kBool)}, kNone,
        OLESTR("Whether writing decrypts; initially false")),
    Row<&IToviStreamCrypt::get_ReadDecrypt>(15, OLESTR("ReadDecrypt"), kGet, {}, kBool,
        OLESTR("Whether reading decrypts; initially true")),
    Row<&IToviStreamCrypt::put_ReadDecrypt>(15, OLESTR("ReadDecrypt"), kPut,
        {In(OLESTR("bDecrypt"), kBool)}, kNone,
        OLESTR("Whether reading decrypts; initially true")),
    Row<&IToviStreamCrypt::get_ReadPadType>(16, OLESTR("ReadPadType"), kGet, {}, kLong,
        OLESTR("The pad byte of the last block of bytes read; -1 for random bytes")),
    Row<&IToviStreamCrypt::put_ReadPadType>(16, OLESTR("ReadPadType"), kPut,
        {In(OLESTR("lPadType"), kLong)}, kNone,
        OLESTR("The pad byte of the last block of bytes read; -1 for random bytes")),
    Row<&IToviStreamCrypt::get_WritePadType>(17, OLESTR("WritePadType"), kGet, {}, kLong,
        OLESTR("The pad byte of the last block of bytes written; -1 for random bytes")),
    Row<&IToviStreamCrypt::put_WritePadType>(17, OLESTR("WritePadType"), kPut,
        {In(OLESTR("lPadType"), kLong)}, kNone,
        OLESTR("The pad byte of the last block of bytes written; -1 for random bytes")),
};
// clang-format on

inline constexpr InterfaceTable kToviStreamCryptInterface = {
    &IID_IToviStreamCrypt, OLESTR("IToviStreamCrypt"),
    OLESTR("A stream filter that encrypts or decrypts"), kToviStreamCryptMembers,
    sizeof(kToviStreamCryptMembers) / sizeof(kToviStreamCryptMembers[0])};

}  // namespace mirolta
