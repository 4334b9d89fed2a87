// SPDX-License-Identifier: MIT
// mirolta.h: declarations for early-bound callers in C++17 or C11, on every platform: identifiers of
// the classes and interfaces, and the interfaces with their functions in order. Late-bound callers do
// not need it: they create objects by ProgID ("Vardeko.crypt.HashObject", ...) and call members by
// name.
//
// It needs this one include folder. On Windows it includes the system's headers and defines none of
// the macros that change them (UNICODE, NOMINMAX, WIN32_LEAN_AND_MEAN). Elsewhere mirolta/runtime.h
// declares the same names, which live beside X11's (mirolta/base_types.h).
//
// Every member returns a status. The caller owns values returned through pointers and keeps
// ownership of values that it passes. docs/ has a page for each class.
#pragma once

#ifdef _WIN32
  #include <objbase.h>
  #include <oleauto.h>
  #include <olectl.h>

  #include "mirolta/interface_id.h"
#else
  #include "mirolta/runtime.h"
#endif

// The six classes, for callers of any threading model.
MIROLTA_IDENTIFIER CLSID CLSID_ToviStreamDigest = {
    0x77EFB331, 0x3043, 0x4FD6, {0x85, 0x3B, 0x15, 0x2D, 0xB6, 0xBE, 0x4F, 0xC4}};
MIROLTA_IDENTIFIER CLSID CLSID_HashObject = {
    0x9D56F139, 0x1F04, 0x4283, {0xAE, 0xD7, 0x3D, 0xB8, 0x9A, 0xFF, 0x00, 0xFD}};
MIROLTA_IDENTIFIER CLSID CLSID_SymmetricCryptObject = {
    0x6977BAED, 0x8AA9, 0x4ED5, {0xA4, 0x3B, 0x0E, 0x99, 0x13, 0xD4, 0x3A, 0xD2}};
MIROLTA_IDENTIFIER CLSID CLSID_RSACrypt = {
    0xC962B164, 0x2D40, 0x42A0, {0x8B, 0x3B, 0x41, 0xDA, 0xAF, 0xEC, 0xF3, 0xF4}};
MIROLTA_IDENTIFIER CLSID CLSID_PexBigNumber = {
    0x2C83BBAC, 0xAE2B, 0x46CB, {0xB1, 0x26, 0xF5, 0xB8, 0xE1, 0xA4, 0x1A, 0x38}};
MIROLTA_IDENTIFIER CLSID CLSID_ToviStreamCrypt = {
    0x5BF7B652, 0x3B78, 0x4422, {0x94, 0xAD, 0x3D, 0x49, 0x44, 0xF3, 0xB5, 0x84}};

// The same classes, registered as free-threaded; the objects are identical.
MIROLTA_IDENTIFIER CLSID CLSID_ToviStreamDigestFree = {
    0x25FC5E57, 0xC4C2, 0x4461, {0xA9, 0x68, 0xE5, 0x95, 0x9B, 0x5F, 0x11, 0xF8}};
MIROLTA_IDENTIFIER CLSID CLSID_HashObjectFree = {
    0xFECAFCBB, 0xA8C3, 0x404D, {0xA4, 0x2B, 0x53, 0xAD, 0x9F, 0xD4, 0x77, 0x37}};
MIROLTA_IDENTIFIER CLSID CLSID_SymmetricCryptObjectFree = {
    0x4EDA294F, 0x1980, 0x4785, {0xA7, 0xA4, 0x08, 0x18, 0x49, 0x8B, 0xD7, 0x4C}};
MIROLTA_IDENTIFIER CLSID CLSID_RSACryptFree = {
    0x11483538, 0x0E59, 0x418F, {0x9E, 0xDD, 0x96, 0xF9, 0xC8, 0x7B, 0xB0, 0xC1}};
MIROLTA_IDENTIFIER CLSID CLSID_PexBigNumberFree = {
    0x902482D4, 0x4104, 0x4239, {0x94, 0x97, 0xA6, 0x19, 0x4C, 0x6C, 0xCA, 0x0E}};
MIROLTA_IDENTIFIER CLSID CLSID_ToviStreamCryptFree = {
    0xE7367C2D, 0xF8AA, 0x4A66, {0x96, 0xEA, 0x57, 0xB5, 0xD3, 0xC0, 0x6F, 0x72}};

MIROLTA_IDENTIFIER GUID LIBID_MIROLTALib = {
    0xD0503D72, 0xC0D7, 0x4CDA, {0xBD, 0x03, 0x8D, 0x74, 0x96, 0xF9, 0x36, 0xDA}};

MIROLTA_INTERFACE_ID(IHashObject, 0x2572A734, 0xB2F1, 0x4513, 0x9C, 0xCC, 0x05, 0xFD, 0x65, 0x91,
                     0x83, 0x37);
MIROLTA_INTERFACE_ID(ISymmetricCryptObject, 0xB038212F, 0xD9EB, 0x464F, 0xB4, 0xCB, 0x33, 0x37,
                     0xFC, 0x06, 0x08, 0xF8);
MIROLTA_INTERFACE_ID(IPexBigNumber, 0x65340385, 0x06EA, 0x4727, 0xB2, 0xF7, 0x8F, 0x1B, 0xF1, 0x96,
                     0x75, 0xC4);
MIROLTA_INTERFACE_ID(IRSACrypt, 0x303A999E, 0x48F7, 0x47C8, 0xA4, 0x34, 0x3F, 0x11, 0xF7, 0x5C,
                     0x60, 0xE6);
MIROLTA_INTERFACE_ID(IToviStreamDigest, 0xE1499109, 0x17E8, 0x4587, 0xB4, 0xC2, 0x26, 0x66, 0x55,
                     0x2B, 0xCC, 0xDD);
MIROLTA_INTERFACE_ID(IToviStreamCrypt, 0x7301AD97, 0x53F6, 0x45C1, 0x8E, 0xE0, 0x5D, 0xA7, 0x90,
                     0xD0, 0xA9, 0xE2);
MIROLTA_INTERFACE_ID(IToviStreamSource, 0x2FEA9B58, 0xF3F3, 0x490A, 0xB1, 0x22, 0x62, 0x5C, 0x86,
                     0x24, 0x23, 0x43);

#ifdef __cplusplus

  #ifdef _MSC_VER
// What __uuidof returns with this compiler.
struct __declspec(uuid("2572A734-B2F1-4513-9CCC-05FD65918337")) IHashObject;
struct __declspec(uuid("B038212F-D9EB-464F-B4CB-3337FC0608F8")) ISymmetricCryptObject;
struct __declspec(uuid("65340385-06EA-4727-B2F7-8F1BF19675C4")) IPexBigNumber;
struct __declspec(uuid("303A999E-48F7-47C8-A434-3F11F75C60E6")) IRSACrypt;
struct __declspec(uuid("E1499109-17E8-4587-B4C2-2666552BCCDD")) IToviStreamDigest;
struct __declspec(uuid("7301AD97-53F6-45C1-8EE0-5DA790D0A9E2")) IToviStreamCrypt;
struct __declspec(uuid("2FEA9B58-F3F3-490A-B122-625C86242343")) IToviStreamSource;
  #endif

// Digests and HMAC.
struct IHashObject : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_Value(BSTR* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_HashSize(LONG* size) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BlockSize(LONG* size) = 0;
  virtual HRESULT STDMETHODCALLTYPE InitHash(BSTR bstrAlg) = 0;
  virtual HRESULT STDMETHODCALLTYPE HashData(VARIANT vData, LONG lCP) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BinaryValue(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE HashUpdate(VARIANT vData, LONG lCP) = 0;
  virtual HRESULT STDMETHODCALLTYPE HashFinalize() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_codePage(LONG* code_page) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_codePage(LONG code_page) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Key(VARIANT* key) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Key(VARIANT key) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE ResetKey() = 0;
};

// AES and DES in ECB mode.
struct ISymmetricCryptObject : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_Key(VARIANT* key) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Key(VARIANT key) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BlockSize(LONG* size) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_codePage(LONG* code_page) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_codePage(LONG code_page) = 0;
  virtual HRESULT STDMETHODCALLTYPE Encrypt(VARIANT vData, VARIANT_BOOL bFinalize,
                                            VARIANT* pvResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE Decrypt(VARIANT vData, VARIANT_BOOL bFinalize,
                                            VARIANT* pvResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset(LONG lWhat) = 0;
  virtual HRESULT STDMETHODCALLTYPE ResetKey() = 0;
  virtual HRESULT STDMETHODCALLTYPE Init(VARIANT vAlg) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PadType(LONG* pad_type) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_PadType(LONG pad_type) = 0;
};

// Big integers.
struct IPexBigNumber : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_Value(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Value(VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Hex(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Hex(VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Text(LONG lCP, BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Text(LONG lCP, BSTR text) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Binary(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Binary(VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE Add(VARIANT v, IPexBigNumber** ppObj) = 0;
  virtual HRESULT STDMETHODCALLTYPE Sub(VARIANT v, IPexBigNumber** ppObj) = 0;
  virtual HRESULT STDMETHODCALLTYPE Mul(VARIANT v, IPexBigNumber** ppObj) = 0;
  virtual HRESULT STDMETHODCALLTYPE Div(VARIANT v, IPexBigNumber** ppObj) = 0;
  virtual HRESULT STDMETHODCALLTYPE Mod(VARIANT v, IPexBigNumber** ppObj) = 0;
  virtual HRESULT STDMETHODCALLTYPE Inc(VARIANT v) = 0;
  virtual HRESULT STDMETHODCALLTYPE Dec(VARIANT v) = 0;
  virtual HRESULT STDMETHODCALLTYPE Cmp(VARIANT v, LONG* plResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE NewNumber(VARIANT v, IPexBigNumber** ppObj) = 0;
  virtual HRESULT STDMETHODCALLTYPE Random(LONG lSize, VARIANT_BOOL bEnsureSize,
                                           VARIANT_BOOL bOdd) = 0;
  virtual HRESULT STDMETHODCALLTYPE GCD(VARIANT v, IPexBigNumber** ppObj) = 0;
  virtual HRESULT STDMETHODCALLTYPE ModExp(VARIANT ve, VARIANT vm, IPexBigNumber** ppObj) = 0;
  virtual HRESULT STDMETHODCALLTYPE ModInv(VARIANT vm, IPexBigNumber** ppObj) = 0;
};

// Raw RSA, without padding.
struct IRSACrypt : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE CreateKeys(VARIANT v1, VARIANT v2) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateRandKeys(LONG lByteSize, VARIANT_BOOL bExactSize) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Modulus(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Modulus(VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PublicExp(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_PublicExp(VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SecretExp(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_SecretExp(VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_P(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_P(VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Q(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Q(VARIANT value) = 0;
  virtual HRESULT STDMETHODCALLTYPE Encrypt(VARIANT vData, VARIANT* pvOut) = 0;
  virtual HRESULT STDMETHODCALLTYPE Decrypt(VARIANT vData, VARIANT* pvOut) = 0;
  virtual HRESULT STDMETHODCALLTYPE DecryptPQ(VARIANT vData, VARIANT* pvOut) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BlockSize(LONG* size) = 0;
};

// A stream filter that computes digests. The object is also an IStream.
struct IToviStreamDigest : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_Stream(IUnknown** stream) = 0;
  virtual HRESULT STDMETHODCALLTYPE putref_Stream(IUnknown* stream) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReadAlgorithm(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ReadAlgorithm(BSTR name) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WriteAlgorithm(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_WriteAlgorithm(BSTR name) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WriteKey(VARIANT* key) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_WriteKey(VARIANT key) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReadKey(VARIANT* key) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ReadKey(VARIANT key) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReadValue(BSTR* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WriteValue(BSTR* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE ReadReset() = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteReset() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WriteHashEnable(VARIANT_BOOL* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_WriteHashEnable(VARIANT_BOOL value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReadHashEnable(VARIANT_BOOL* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ReadHashEnable(VARIANT_BOOL value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteResetKey() = 0;
  virtual HRESULT STDMETHODCALLTYPE ReadResetKey() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SeekingForbidden(VARIANT_BOOL* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_SeekingForbidden(VARIANT_BOOL value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_codePage(LONG* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_codePage(LONG value) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteFinalize() = 0;
  virtual HRESULT STDMETHODCALLTYPE ReadFinalize() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReadBinaryValue(VARIANT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WriteBinaryValue(VARIANT* value) = 0;
};

// A stream filter that encrypts or decrypts. The object is also an IStream.
struct IToviStreamCrypt : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_Stream(IUnknown** stream) = 0;
  virtual HRESULT STDMETHODCALLTYPE putref_Stream(IUnknown* stream) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReadAlgorithm(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ReadAlgorithm(BSTR name) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WriteAlgorithm(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_WriteAlgorithm(BSTR name) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReadKey(VARIANT* key) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ReadKey(VARIANT key) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WriteKey(VARIANT* key) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_WriteKey(VARIANT key) = 0;
  virtual HRESULT STDMETHODCALLTYPE ReadReset() = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteReset() = 0;
  virtual HRESULT STDMETHODCALLTYPE ReadResetKey() = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteResetKey() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SeekingForbidden(VARIANT_BOOL* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_SeekingForbidden(VARIANT_BOOL value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_codePage(LONG* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_codePage(LONG value) = 0;
  virtual HRESULT STDMETHODCALLTYPE ReadFinalize() = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteFinalize() = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WriteDecrypt(VARIANT_BOOL* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_WriteDecrypt(VARIANT_BOOL value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReadDecrypt(VARIANT_BOOL* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ReadDecrypt(VARIANT_BOOL value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ReadPadType(LONG* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_ReadPadType(LONG value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WritePadType(LONG* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_WritePadType(LONG value) = 0;
};

// Implemented by objects that are not streams themselves but can return one.
struct IToviStreamSource : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetStream(IStream** stream) = 0;
};

#else

typedef struct IHashObject IHashObject;
typedef struct ISymmetricCryptObject ISymmetricCryptObject;
typedef struct IPexBigNumber IPexBigNumber;
typedef struct IRSACrypt IRSACrypt;
typedef struct IToviStreamDigest IToviStreamDigest;
typedef struct IToviStreamCrypt IToviStreamCrypt;
typedef struct IToviStreamSource IToviStreamSource;

  #include "mirolta/c_interfaces.h"

#endif

// The module's entry points, for programs that link it: DllGetClassObject creates objects without any
// registration. On Windows the system's headers declare them, and a program looks them up in the DLL.
#ifndef _WIN32
MIROLTA_RUNTIME HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* out);
MIROLTA_RUNTIME HRESULT STDAPICALLTYPE DllCanUnloadNow(MIROLTA_NO_PARAMETERS);
MIROLTA_RUNTIME HRESULT STDAPICALLTYPE DllRegisterServer(MIROLTA_NO_PARAMETERS);
MIROLTA_RUNTIME HRESULT STDAPICALLTYPE DllUnregisterServer(MIROLTA_NO_PARAMETERS);
#endif
