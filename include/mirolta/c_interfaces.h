// SPDX-License-Identifier: MIT
// The interfaces of mirolta.h in C: structures of function pointers in slot order.
//
// An object is a pointer to a structure whose lpVtbl points to its functions; each is called with the
// object first: hash->lpVtbl->Reset(hash). With COBJMACROS defined, as for the platform's own
// interfaces, that is IHashObject_Reset(hash).
#pragma once

typedef struct IHashObjectVtbl IHashObjectVtbl;
typedef struct ISymmetricCryptObjectVtbl ISymmetricCryptObjectVtbl;
typedef struct IPexBigNumberVtbl IPexBigNumberVtbl;
typedef struct IRSACryptVtbl IRSACryptVtbl;
typedef struct IToviStreamDigestVtbl IToviStreamDigestVtbl;
typedef struct IToviStreamCryptVtbl IToviStreamCryptVtbl;
typedef struct IToviStreamSourceVtbl IToviStreamSourceVtbl;

// What every dual interface begins with.
#define MIROLTA_DISPATCH_SLOTS(name)                                                               \
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(name * self, REFIID iid, void** out);                 \
  ULONG(STDMETHODCALLTYPE* AddRef)(name * self);                                                   \
  ULONG(STDMETHODCALLTYPE* Release)(name * self);                                                  \
  HRESULT(STDMETHODCALLTYPE* GetTypeInfoCount)(name * self, UINT * count);                         \
  HRESULT(STDMETHODCALLTYPE* GetTypeInfo)(name * self, UINT index, LCID locale, ITypeInfo * *out); \
  HRESULT(STDMETHODCALLTYPE* GetIDsOfNames)                                                        \
  (name * self, REFIID iid, LPOLESTR * names, UINT count, LCID locale, DISPID * ids);              \
  HRESULT(STDMETHODCALLTYPE* Invoke)                                                               \
  (name * self, DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS * params,               \
   VARIANT * result, EXCEPINFO * exception, UINT * bad_argument);

// Digests and HMAC.
struct IHashObjectVtbl {
  MIROLTA_DISPATCH_SLOTS(IHashObject)
  HRESULT(STDMETHODCALLTYPE* get_Value)(IHashObject* self, BSTR* value);
  HRESULT(STDMETHODCALLTYPE* get_HashSize)(IHashObject* self, LONG* size);
  HRESULT(STDMETHODCALLTYPE* get_BlockSize)(IHashObject* self, LONG* size);
  HRESULT(STDMETHODCALLTYPE* InitHash)(IHashObject* self, BSTR bstrAlg);
  HRESULT(STDMETHODCALLTYPE* HashData)(IHashObject* self, VARIANT vData, LONG lCP);
  HRESULT(STDMETHODCALLTYPE* get_BinaryValue)(IHashObject* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* HashUpdate)(IHashObject* self, VARIANT vData, LONG lCP);
  HRESULT(STDMETHODCALLTYPE* HashFinalize)(IHashObject* self);
  HRESULT(STDMETHODCALLTYPE* get_codePage)(IHashObject* self, LONG* code_page);
  HRESULT(STDMETHODCALLTYPE* put_codePage)(IHashObject* self, LONG code_page);
  HRESULT(STDMETHODCALLTYPE* get_Key)(IHashObject* self, VARIANT* key);
  HRESULT(STDMETHODCALLTYPE* put_Key)(IHashObject* self, VARIANT key);
  HRESULT(STDMETHODCALLTYPE* Reset)(IHashObject* self);
  HRESULT(STDMETHODCALLTYPE* ResetKey)(IHashObject* self);
};

// AES and DES in ECB mode.
struct ISymmetricCryptObjectVtbl {
  MIROLTA_DISPATCH_SLOTS(ISymmetricCryptObject)
  HRESULT(STDMETHODCALLTYPE* get_Key)(ISymmetricCryptObject* self, VARIANT* key);
  HRESULT(STDMETHODCALLTYPE* put_Key)(ISymmetricCryptObject* self, VARIANT key);
  HRESULT(STDMETHODCALLTYPE* get_BlockSize)(ISymmetricCryptObject* self, LONG* size);
  HRESULT(STDMETHODCALLTYPE* get_codePage)(ISymmetricCryptObject* self, LONG* code_page);
  HRESULT(STDMETHODCALLTYPE* put_codePage)(ISymmetricCryptObject* self, LONG code_page);
  HRESULT(STDMETHODCALLTYPE* Encrypt)
  (ISymmetricCryptObject* self, VARIANT vData, VARIANT_BOOL bFinalize, VARIANT* pvResult);
  HRESULT(STDMETHODCALLTYPE* Decrypt)
  (ISymmetricCryptObject* self, VARIANT vData, VARIANT_BOOL bFinalize, VARIANT* pvResult);
  HRESULT(STDMETHODCALLTYPE* Reset)(ISymmetricCryptObject* self, LONG lWhat);
  HRESULT(STDMETHODCALLTYPE* ResetKey)(ISymmetricCryptObject* self);
  HRESULT(STDMETHODCALLTYPE* Init)(ISymmetricCryptObject* self, VARIANT vAlg);
  HRESULT(STDMETHODCALLTYPE* get_PadType)(ISymmetricCryptObject* self, LONG* pad_type);
  HRESULT(STDMETHODCALLTYPE* put_PadType)(ISymmetricCryptObject* self, LONG pad_type);
};

// Big integers.
struct IPexBigNumberVtbl {
  MIROLTA_DISPATCH_SLOTS(IPexBigNumber)
  HRESULT(STDMETHODCALLTYPE* get_Value)(IPexBigNumber* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* put_Value)(IPexBigNumber* self, VARIANT value);
  HRESULT(STDMETHODCALLTYPE* get_Hex)(IPexBigNumber* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* put_Hex)(IPexBigNumber* self, VARIANT value);
  HRESULT(STDMETHODCALLTYPE* get_Text)(IPexBigNumber* self, LONG lCP, BSTR* text);
  HRESULT(STDMETHODCALLTYPE* put_Text)(IPexBigNumber* self, LONG lCP, BSTR text);
  HRESULT(STDMETHODCALLTYPE* get_Binary)(IPexBigNumber* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* put_Binary)(IPexBigNumber* self, VARIANT value);
  HRESULT(STDMETHODCALLTYPE* Add)(IPexBigNumber* self, VARIANT v, IPexBigNumber** ppObj);
  HRESULT(STDMETHODCALLTYPE* Sub)(IPexBigNumber* self, VARIANT v, IPexBigNumber** ppObj);
  HRESULT(STDMETHODCALLTYPE* Mul)(IPexBigNumber* self, VARIANT v, IPexBigNumber** ppObj);
  HRESULT(STDMETHODCALLTYPE* Div)(IPexBigNumber* self, VARIANT v, IPexBigNumber** ppObj);
  HRESULT(STDMETHODCALLTYPE* Mod)(IPexBigNumber* self, VARIANT v, IPexBigNumber** ppObj);
  HRESULT(STDMETHODCALLTYPE* Inc)(IPexBigNumber* self, VARIANT v);
  HRESULT(STDMETHODCALLTYPE* Dec)(IPexBigNumber* self, VARIANT v);
  HRESULT(STDMETHODCALLTYPE* Cmp)(IPexBigNumber* self, VARIANT v, LONG* plResult);
  HRESULT(STDMETHODCALLTYPE* NewNumber)(IPexBigNumber* self, VARIANT v, IPexBigNumber** ppObj);
  HRESULT(STDMETHODCALLTYPE* Random)
  (IPexBigNumber* self, LONG lSize, VARIANT_BOOL bEnsureSize, VARIANT_BOOL bOdd);
  HRESULT(STDMETHODCALLTYPE* GCD)(IPexBigNumber* self, VARIANT v, IPexBigNumber** ppObj);
  HRESULT(STDMETHODCALLTYPE* ModExp)
  (IPexBigNumber* self, VARIANT ve, VARIANT vm, IPexBigNumber** ppObj);
  HRESULT(STDMETHODCALLTYPE* ModInv)(IPexBigNumber* self, VARIANT vm, IPexBigNumber** ppObj);
};

// Raw RSA, without padding.
struct IRSACryptVtbl {
  MIROLTA_DISPATCH_SLOTS(IRSACrypt)
  HRESULT(STDMETHODCALLTYPE* CreateKeys)(IRSACrypt* self, VARIANT v1, VARIANT v2);
  HRESULT(STDMETHODCALLTYPE* CreateRandKeys)
  (IRSACrypt* self, LONG lByteSize, VARIANT_BOOL bExactSize);
  HRESULT(STDMETHODCALLTYPE* get_Modulus)(IRSACrypt* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* put_Modulus)(IRSACrypt* self, VARIANT value);
  HRESULT(STDMETHODCALLTYPE* get_PublicExp)(IRSACrypt* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* put_PublicExp)(IRSACrypt* self, VARIANT value);
  HRESULT(STDMETHODCALLTYPE* get_SecretExp)(IRSACrypt* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* put_SecretExp)(IRSACrypt* self, VARIANT value);
  HRESULT(STDMETHODCALLTYPE* get_P)(IRSACrypt* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* put_P)(IRSACrypt* self, VARIANT value);
  HRESULT(STDMETHODCALLTYPE* get_Q)(IRSACrypt* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* put_Q)(IRSACrypt* self, VARIANT value);
  HRESULT(STDMETHODCALLTYPE* Encrypt)(IRSACrypt* self, VARIANT vData, VARIANT* pvOut);
  HRESULT(STDMETHODCALLTYPE* Decrypt)(IRSACrypt* self, VARIANT vData, VARIANT* pvOut);
  HRESULT(STDMETHODCALLTYPE* DecryptPQ)(IRSACrypt* self, VARIANT vData, VARIANT* pvOut);
  HRESULT(STDMETHODCALLTYPE* Reset)(IRSACrypt* self);
  HRESULT(STDMETHODCALLTYPE* get_BlockSize)(IRSACrypt* self, LONG* size);
};

// A stream filter that computes digests. The object is also an IStream.
struct IToviStreamDigestVtbl {
  MIROLTA_DISPATCH_SLOTS(IToviStreamDigest)
  HRESULT(STDMETHODCALLTYPE* get_Stream)(IToviStreamDigest* self, IUnknown** stream);
  HRESULT(STDMETHODCALLTYPE* putref_Stream)(IToviStreamDigest* self, IUnknown* stream);
  HRESULT(STDMETHODCALLTYPE* get_ReadAlgorithm)(IToviStreamDigest* self, BSTR* name);
  HRESULT(STDMETHODCALLTYPE* put_ReadAlgorithm)(IToviStreamDigest* self, BSTR name);
  HRESULT(STDMETHODCALLTYPE* get_WriteAlgorithm)(IToviStreamDigest* self, BSTR* name);
  HRESULT(STDMETHODCALLTYPE* put_WriteAlgorithm)(IToviStreamDigest* self, BSTR name);
  HRESULT(STDMETHODCALLTYPE* get_WriteKey)(IToviStreamDigest* self, VARIANT* key);
  HRESULT(STDMETHODCALLTYPE* put_WriteKey)(IToviStreamDigest* self, VARIANT key);
  HRESULT(STDMETHODCALLTYPE* get_ReadKey)(IToviStreamDigest* self, VARIANT* key);
  HRESULT(STDMETHODCALLTYPE* put_ReadKey)(IToviStreamDigest* self, VARIANT key);
  HRESULT(STDMETHODCALLTYPE* get_ReadValue)(IToviStreamDigest* self, BSTR* value);
  HRESULT(STDMETHODCALLTYPE* get_WriteValue)(IToviStreamDigest* self, BSTR* value);
  HRESULT(STDMETHODCALLTYPE* ReadReset)(IToviStreamDigest* self);
  HRESULT(STDMETHODCALLTYPE* WriteReset)(IToviStreamDigest* self);
  HRESULT(STDMETHODCALLTYPE* get_WriteHashEnable)(IToviStreamDigest* self, VARIANT_BOOL* value);
  HRESULT(STDMETHODCALLTYPE* put_WriteHashEnable)(IToviStreamDigest* self, VARIANT_BOOL value);
  HRESULT(STDMETHODCALLTYPE* get_ReadHashEnable)(IToviStreamDigest* self, VARIANT_BOOL* value);
  HRESULT(STDMETHODCALLTYPE* put_ReadHashEnable)(IToviStreamDigest* self, VARIANT_BOOL value);
  HRESULT(STDMETHODCALLTYPE* WriteResetKey)(IToviStreamDigest* self);
  HRESULT(STDMETHODCALLTYPE* ReadResetKey)(IToviStreamDigest* self);
  HRESULT(STDMETHODCALLTYPE* get_SeekingForbidden)(IToviStreamDigest* self, VARIANT_BOOL* value);
  HRESULT(STDMETHODCALLTYPE* put_SeekingForbidden)(IToviStreamDigest* self, VARIANT_BOOL value);
  HRESULT(STDMETHODCALLTYPE* get_codePage)(IToviStreamDigest* self, LONG* value);
  HRESULT(STDMETHODCALLTYPE* put_codePage)(IToviStreamDigest* self, LONG value);
  HRESULT(STDMETHODCALLTYPE* WriteFinalize)(IToviStreamDigest* self);
  HRESULT(STDMETHODCALLTYPE* ReadFinalize)(IToviStreamDigest* self);
  HRESULT(STDMETHODCALLTYPE* get_ReadBinaryValue)(IToviStreamDigest* self, VARIANT* value);
  HRESULT(STDMETHODCALLTYPE* get_WriteBinaryValue)(IToviStreamDigest* self, VARIANT* value);
};

// A stream filter that encrypts or decrypts. The object is also an IStream.
struct IToviStreamCryptVtbl {
  MIROLTA_DISPATCH_SLOTS(IToviStreamCrypt)
  HRESULT(STDMETHODCALLTYPE* get_Stream)(IToviStreamCrypt* self, IUnknown** stream);
  HRESULT(STDMETHODCALLTYPE* putref_Stream)(IToviStreamCrypt* self, IUnknown* stream);
  HRESULT(STDMETHODCALLTYPE* get_ReadAlgorithm)(IToviStreamCrypt* self, BSTR* name);
  HRESULT(STDMETHODCALLTYPE* put_ReadAlgorithm)(IToviStreamCrypt* self, BSTR name);
  HRESULT(STDMETHODCALLTYPE* get_WriteAlgorithm)(IToviStreamCrypt* self, BSTR* name);
  HRESULT(STDMETHODCALLTYPE* put_WriteAlgorithm)(IToviStreamCrypt* self, BSTR name);
  HRESULT(STDMETHODCALLTYPE* get_ReadKey)(IToviStreamCrypt* self, VARIANT* key);
  HRESULT(STDMETHODCALLTYPE* put_ReadKey)(IToviStreamCrypt* self, VARIANT key);
  HRESULT(STDMETHODCALLTYPE* get_WriteKey)(IToviStreamCrypt* self, VARIANT* key);
  HRESULT(STDMETHODCALLTYPE* put_WriteKey)(IToviStreamCrypt* self, VARIANT key);
  HRESULT(STDMETHODCALLTYPE* ReadReset)(IToviStreamCrypt* self);
  HRESULT(STDMETHODCALLTYPE* WriteReset)(IToviStreamCrypt* self);
  HRESULT(STDMETHODCALLTYPE* ReadResetKey)(IToviStreamCrypt* self);
  HRESULT(STDMETHODCALLTYPE* WriteResetKey)(IToviStreamCrypt* self);
  HRESULT(STDMETHODCALLTYPE* get_SeekingForbidden)(IToviStreamCrypt* self, VARIANT_BOOL* value);
  HRESULT(STDMETHODCALLTYPE* put_SeekingForbidden)(IToviStreamCrypt* self, VARIANT_BOOL value);
  HRESULT(STDMETHODCALLTYPE* get_codePage)(IToviStreamCrypt* self, LONG* value);
  HRESULT(STDMETHODCALLTYPE* put_codePage)(IToviStreamCrypt* self, LONG value);
  HRESULT(STDMETHODCALLTYPE* ReadFinalize)(IToviStreamCrypt* self);
  HRESULT(STDMETHODCALLTYPE* WriteFinalize)(IToviStreamCrypt* self);
  HRESULT(STDMETHODCALLTYPE* get_WriteDecrypt)(IToviStreamCrypt* self, VARIANT_BOOL* value);
  HRESULT(STDMETHODCALLTYPE* put_WriteDecrypt)(IToviStreamCrypt* self, VARIANT_BOOL value);
  HRESULT(STDMETHODCALLTYPE* get_ReadDecrypt)(IToviStreamCrypt* self, VARIANT_BOOL* value);
  HRESULT(STDMETHODCALLTYPE* put_ReadDecrypt)(IToviStreamCrypt* self, VARIANT_BOOL value);
  HRESULT(STDMETHODCALLTYPE* get_ReadPadType)(IToviStreamCrypt* self, LONG* value);
  HRESULT(STDMETHODCALLTYPE* put_ReadPadType)(IToviStreamCrypt* self, LONG value);
  HRESULT(STDMETHODCALLTYPE* get_WritePadType)(IToviStreamCrypt* self, LONG* value);
  HRESULT(STDMETHODCALLTYPE* put_WritePadType)(IToviStreamCrypt* self, LONG value);
};

// Implemented by objects that are not streams themselves but can return one.
struct IToviStreamSourceVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(IToviStreamSource* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(IToviStreamSource* self);
  ULONG(STDMETHODCALLTYPE* Release)(IToviStreamSource* self);
  HRESULT(STDMETHODCALLTYPE* GetStream)(IToviStreamSource* self, IStream** stream);
};

struct IHashObject {
  const IHashObjectVtbl* lpVtbl;
};
struct ISymmetricCryptObject {
  const ISymmetricCryptObjectVtbl* lpVtbl;
};
struct IPexBigNumber {
  const IPexBigNumberVtbl* lpVtbl;
};
struct IRSACrypt {
  const IRSACryptVtbl* lpVtbl;
};
struct IToviStreamDigest {
  const IToviStreamDigestVtbl* lpVtbl;
};
struct IToviStreamCrypt {
  const IToviStreamCryptVtbl* lpVtbl;
};
struct IToviStreamSource {
  const IToviStreamSourceVtbl* lpVtbl;
};

#ifdef COBJMACROS
  #define IHashObject_QueryInterface(self, iid, out) (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IHashObject_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IHashObject_Release(self) (self)->lpVtbl->Release(self)
  #define IHashObject_GetTypeInfoCount(self, count) (self)->lpVtbl->GetTypeInfoCount(self, count)
  #define IHashObject_GetTypeInfo(self, index, locale, out) \
    (self)->lpVtbl->GetTypeInfo(self, index, locale, out)
  #define IHashObject_GetIDsOfNames(self, iid, names, count, locale, ids) \
    (self)->lpVtbl->GetIDsOfNames(self, iid, names, count, locale, ids)
  #define IHashObject_Invoke(self, id, iid, locale, flags, params, result, exception, \
                             bad_argument)                                            \
    (self)->lpVtbl->Invoke(self, id, iid, locale, flags, params, result, exception, bad_argument)
  #define IHashObject_get_Value(self, value) (self)->lpVtbl->get_Value(self, value)
  #define IHashObject_get_HashSize(self, size) (self)->lpVtbl->get_HashSize(self, size)
  #define IHashObject_get_BlockSize(self, size) (self)->lpVtbl->get_BlockSize(self, size)
  #define IHashObject_InitHash(self, bstrAlg) (self)->lpVtbl->InitHash(self, bstrAlg)
  #define IHashObject_HashData(self, vData, lCP) (self)->lpVtbl->HashData(self, vData, lCP)
  #define IHashObject_get_BinaryValue(self, value) (self)->lpVtbl->get_BinaryValue(self, value)
  #define IHashObject_HashUpdate(self, vData, lCP) (self)->lpVtbl->HashUpdate(self, vData, lCP)
  #define IHashObject_HashFinalize(self) (self)->lpVtbl->HashFinalize(self)
  #define IHashObject_get_codePage(self, code_page) (self)->lpVtbl->get_codePage(self, code_page)
  #define IHashObject_put_codePage(self, code_page) (self)->lpVtbl->put_codePage(self, code_page)
  #define IHashObject_get_Key(self, key) (self)->lpVtbl->get_Key(self, key)
  #define IHashObject_put_Key(self, key) (self)->lpVtbl->put_Key(self, key)
  #define IHashObject_Reset(self) (self)->lpVtbl->Reset(self)
  #define IHashObject_ResetKey(self) (self)->lpVtbl->ResetKey(self)

  #define ISymmetricCryptObject_QueryInterface(self, iid, out) \
    (self)->lpVtbl->QueryInterface(self, iid, out)
  #define ISymmetricCryptObject_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define ISymmetricCryptObject_Release(self) (self)->lpVtbl->Release(self)
  #define ISymmetricCryptObject_GetTypeInfoCount(self, count) \
    (self)->lpVtbl->GetTypeInfoCount(self, count)
  #define ISymmetricCryptObject_GetTypeInfo(self, index, locale, out) \
    (self)->lpVtbl->GetTypeInfo(self, index, locale, out)
  #define ISymmetricCryptObject_GetIDsOfNames(self, iid, names, count, locale, ids) \
    (self)->lpVtbl->GetIDsOfNames(self, iid, names, count, locale, ids)
  #define ISymmetricCryptObject_Invoke(self, id, iid, locale, flags, params, result, exception, \
                                       bad_argument)                                            \
    (self)->lpVtbl->Invoke(self, id, iid, locale, flags, params, result, exception, bad_argument)
  #define ISymmetricCryptObject_get_Key(self, key) (self)->lpVtbl->get_Key(self, key)
  #define ISymmetricCryptObject_put_Key(self, key) (self)->lpVtbl->put_Key(self, key)
  #define ISymmetricCryptObject_get_BlockSize(self, size) (self)->lpVtbl->get_BlockSize(self, size)
  #define ISymmetricCryptObject_get_codePage(self, code_page) \
    (self)->lpVtbl->get_codePage(self, code_page)
  #define ISymmetricCryptObject_put_codePage(self, code_page) \
    (self)->lpVtbl->put_codePage(self, code_page)
  #define ISymmetricCryptObject_Encrypt(self, vData, bFinalize, pvResult) \
    (self)->lpVtbl->Encrypt(self, vData, bFinalize, pvResult)
  #define ISymmetricCryptObject_Decrypt(self, vData, bFinalize, pvResult) \
    (self)->lpVtbl->Decrypt(self, vData, bFinalize, pvResult)
  #define ISymmetricCryptObject_Reset(self, lWhat) (self)->lpVtbl->Reset(self, lWhat)
  #define ISymmetricCryptObject_ResetKey(self) (self)->lpVtbl->ResetKey(self)
  #define ISymmetricCryptObject_Init(self, vAlg) (self)->lpVtbl->Init(self, vAlg)
  #define ISymmetricCryptObject_get_PadType(self, pad_type) \
    (self)->lpVtbl->get_PadType(self, pad_type)
  #define ISymmetricCryptObject_put_PadType(self, pad_type) \
    (self)->lpVtbl->put_PadType(self, pad_type)

  #define IPexBigNumber_QueryInterface(self, iid, out) \
    (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IPexBigNumber_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IPexBigNumber_Release(self) (self)->lpVtbl->Release(self)
  #define IPexBigNumber_GetTypeInfoCount(self, count) (self)->lpVtbl->GetTypeInfoCount(self, count)
  #define IPexBigNumber_GetTypeInfo(self, index, locale, out) \
    (self)->lpVtbl->GetTypeInfo(self, index, locale, out)
  #define IPexBigNumber_GetIDsOfNames(self, iid, names, count, locale, ids) \
    (self)->lpVtbl->GetIDsOfNames(self, iid, names, count, locale, ids)
  #define IPexBigNumber_Invoke(self, id, iid, locale, flags, params, result, exception, \
                               bad_argument)                                            \
    (self)->lpVtbl->Invoke(self, id, iid, locale, flags, params, result, exception, bad_argument)
  #define IPexBigNumber_get_Value(self, value) (self)->lpVtbl->get_Value(self, value)
  #define IPexBigNumber_put_Value(self, value) (self)->lpVtbl->put_Value(self, value)
  #define IPexBigNumber_get_Hex(self, value) (self)->lpVtbl->get_Hex(self, value)
  #define IPexBigNumber_put_Hex(self, value) (self)->lpVtbl->put_Hex(self, value)
  #define IPexBigNumber_get_Text(self, lCP, text) (self)->lpVtbl->get_Text(self, lCP, text)
  #define IPexBigNumber_put_Text(self, lCP, text) (self)->lpVtbl->put_Text(self, lCP, text)
  #define IPexBigNumber_get_Binary(self, value) (self)->lpVtbl->get_Binary(self, value)
  #define IPexBigNumber_put_Binary(self, value) (self)->lpVtbl->put_Binary(self, value)
  #define IPexBigNumber_Add(self, v, ppObj) (self)->lpVtbl->Add(self, v, ppObj)
  #define IPexBigNumber_Sub(self, v, ppObj) (self)->lpVtbl->Sub(self, v, ppObj)
  #define IPexBigNumber_Mul(self, v, ppObj) (self)->lpVtbl->Mul(self, v, ppObj)
  #define IPexBigNumber_Div(self, v, ppObj) (self)->lpVtbl->Div(self, v, ppObj)
  #define IPexBigNumber_Mod(self, v, ppObj) (self)->lpVtbl->Mod(self, v, ppObj)
  #define IPexBigNumber_Inc(self, v) (self)->lpVtbl->Inc(self, v)
  #define IPexBigNumber_Dec(self, v) (self)->lpVtbl->Dec(self, v)
  #define IPexBigNumber_Cmp(self, v, plResult) (self)->lpVtbl->Cmp(self, v, plResult)
  #define IPexBigNumber_NewNumber(self, v, ppObj) (self)->lpVtbl->NewNumber(self, v, ppObj)
  #define IPexBigNumber_Random(self, lSize, bEnsureSize, bOdd) \
    (self)->lpVtbl->Random(self, lSize, bEnsureSize, bOdd)
  #define IPexBigNumber_GCD(self, v, ppObj) (self)->lpVtbl->GCD(self, v, ppObj)
  #define IPexBigNumber_ModExp(self, ve, vm, ppObj) (self)->lpVtbl->ModExp(self, ve, vm, ppObj)
  #define IPexBigNumber_ModInv(self, vm, ppObj) (self)->lpVtbl->ModInv(self, vm, ppObj)

  #define IRSACrypt_QueryInterface(self, iid, out) (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IRSACrypt_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IRSACrypt_Release(self) (self)->lpVtbl->Release(self)
  #define IRSACrypt_GetTypeInfoCount(self, count) (self)->lpVtbl->GetTypeInfoCount(self, count)
  #define IRSACrypt_GetTypeInfo(self, index, locale, out) \
    (self)->lpVtbl->GetTypeInfo(self, index, locale, out)
  #define IRSACrypt_GetIDsOfNames(self, iid, names, count, locale, ids) \
    (self)->lpVtbl->GetIDsOfNames(self, iid, names, count, locale, ids)
  #define IRSACrypt_Invoke(self, id, iid, locale, flags, params, result, exception, bad_argument) \
    (self)->lpVtbl->Invoke(self, id, iid, locale, flags, params, result, exception, bad_argument)
  #define IRSACrypt_CreateKeys(self, v1, v2) (self)->lpVtbl->CreateKeys(self, v1, v2)
  #define IRSACrypt_CreateRandKeys(self, lByteSize, bExactSize) \
    (self)->lpVtbl->CreateRandKeys(self, lByteSize, bExactSize)
  #define IRSACrypt_get_Modulus(self, value) (self)->lpVtbl->get_Modulus(self, value)
  #define IRSACrypt_put_Modulus(self, value) (self)->lpVtbl->put_Modulus(self, value)
  #define IRSACrypt_get_PublicExp(self, value) (self)->lpVtbl->get_PublicExp(self, value)
  #define IRSACrypt_put_PublicExp(self, value) (self)->lpVtbl->put_PublicExp(self, value)
  #define IRSACrypt_get_SecretExp(self, value) (self)->lpVtbl->get_SecretExp(self, value)
  #define IRSACrypt_put_SecretExp(self, value) (self)->lpVtbl->put_SecretExp(self, value)
  #define IRSACrypt_get_P(self, value) (self)->lpVtbl->get_P(self, value)
  #define IRSACrypt_put_P(self, value) (self)->lpVtbl->put_P(self, value)
  #define IRSACrypt_get_Q(self, value) (self)->lpVtbl->get_Q(self, value)
  #define IRSACrypt_put_Q(self, value) (self)->lpVtbl->put_Q(self, value)
  #define IRSACrypt_Encrypt(self, vData, pvOut) (self)->lpVtbl->Encrypt(self, vData, pvOut)
  #define IRSACrypt_Decrypt(self, vData, pvOut) (self)->lpVtbl->Decrypt(self, vData, pvOut)
  #define IRSACrypt_DecryptPQ(self, vData, pvOut) (self)->lpVtbl->DecryptPQ(self, vData, pvOut)
  #define IRSACrypt_Reset(self) (self)->lpVtbl->Reset(self)
  #define IRSACrypt_get_BlockSize(self, size) (self)->lpVtbl->get_BlockSize(self, size)

  #define IToviStreamDigest_QueryInterface(self, iid, out) \
    (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IToviStreamDigest_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IToviStreamDigest_Release(self) (self)->lpVtbl->Release(self)
  #define IToviStreamDigest_GetTypeInfoCount(self, count) \
    (self)->lpVtbl->GetTypeInfoCount(self, count)
  #define IToviStreamDigest_GetTypeInfo(self, index, locale, out) \
    (self)->lpVtbl->GetTypeInfo(self, index, locale, out)
  #define IToviStreamDigest_GetIDsOfNames(self, iid, names, count, locale, ids) \
    (self)->lpVtbl->GetIDsOfNames(self, iid, names, count, locale, ids)
  #define IToviStreamDigest_Invoke(self, id, iid, locale, flags, params, result, exception, \
                                   bad_argument)                                            \
    (self)->lpVtbl->Invoke(self, id, iid, locale, flags, params, result, exception, bad_argument)
  #define IToviStreamDigest_get_Stream(self, stream) (self)->lpVtbl->get_Stream(self, stream)
  #define IToviStreamDigest_putref_Stream(self, stream) (self)->lpVtbl->putref_Stream(self, stream)
  #define IToviStreamDigest_get_ReadAlgorithm(self, name) \
    (self)->lpVtbl->get_ReadAlgorithm(self, name)
  #define IToviStreamDigest_put_ReadAlgorithm(self, name) \
    (self)->lpVtbl->put_ReadAlgorithm(self, name)
  #define IToviStreamDigest_get_WriteAlgorithm(self, name) \
    (self)->lpVtbl->get_WriteAlgorithm(self, name)
  #define IToviStreamDigest_put_WriteAlgorithm(self, name) \
    (self)->lpVtbl->put_WriteAlgorithm(self, name)
  #define IToviStreamDigest_get_WriteKey(self, key) (self)->lpVtbl->get_WriteKey(self, key)
  #define IToviStreamDigest_put_WriteKey(self, key) (self)->lpVtbl->put_WriteKey(self, key)
  #define IToviStreamDigest_get_ReadKey(self, key) (self)->lpVtbl->get_ReadKey(self, key)
  #define IToviStreamDigest_put_ReadKey(self, key) (self)->lpVtbl->put_ReadKey(self, key)
  #define IToviStreamDigest_get_ReadValue(self, value) (self)->lpVtbl->get_ReadValue(self, value)
  #define IToviStreamDigest_get_WriteValue(self, value) (self)->lpVtbl->get_WriteValue(self, value)
  #define IToviStreamDigest_ReadReset(self) (self)->lpVtbl->ReadReset(self)
  #define IToviStreamDigest_WriteReset(self) (self)->lpVtbl->WriteReset(self)
  #define IToviStreamDigest_get_WriteHashEnable(self, value) \
    (self)->lpVtbl->get_WriteHashEnable(self, value)
  #define IToviStreamDigest_put_WriteHashEnable(self, value) \
    (self)->lpVtbl->put_WriteHashEnable(self, value)
  #define IToviStreamDigest_get_ReadHashEnable(self, value) \
    (self)->lpVtbl->get_ReadHashEnable(self, value)
  #define IToviStreamDigest_put_ReadHashEnable(self, value) \
    (self)->lpVtbl->put_ReadHashEnable(self, value)
  #define IToviStreamDigest_WriteResetKey(self) (self)->lpVtbl->WriteResetKey(self)
  #define IToviStreamDigest_ReadResetKey(self) (self)->lpVtbl->ReadResetKey(self)
  #define IToviStreamDigest_get_SeekingForbidden(self, value) \
    (self)->lpVtbl->get_SeekingForbidden(self, value)
  #define IToviStreamDigest_put_SeekingForbidden(self, value) \
    (self)->lpVtbl->put_SeekingForbidden(self, value)
  #define IToviStreamDigest_get_codePage(self, value) (self)->lpVtbl->get_codePage(self, value)
  #define IToviStreamDigest_put_codePage(self, value) (self)->lpVtbl->put_codePage(self, value)
  #define IToviStreamDigest_WriteFinalize(self) (self)->lpVtbl->WriteFinalize(self)
  #define IToviStreamDigest_ReadFinalize(self) (self)->lpVtbl->ReadFinalize(self)
  #define IToviStreamDigest_get_ReadBinaryValue(self, value) \
    (self)->lpVtbl->get_ReadBinaryValue(self, value)
  #define IToviStreamDigest_get_WriteBinaryValue(self, value) \
    (self)->lpVtbl->get_WriteBinaryValue(self, value)

  #define IToviStreamCrypt_QueryInterface(self, iid, out) \
    (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IToviStreamCrypt_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IToviStreamCrypt_Release(self) (self)->lpVtbl->Release(self)
  #define IToviStreamCrypt_GetTypeInfoCount(self, count) \
    (self)->lpVtbl->GetTypeInfoCount(self, count)
  #define IToviStreamCrypt_GetTypeInfo(self, index, locale, out) \
    (self)->lpVtbl->GetTypeInfo(self, index, locale, out)
  #define IToviStreamCrypt_GetIDsOfNames(self, iid, names, count, locale, ids) \
    (self)->lpVtbl->GetIDsOfNames(self, iid, names, count, locale, ids)
  #define IToviStreamCrypt_Invoke(self, id, iid, locale, flags, params, result, exception, \
                                  bad_argument)                                            \
    (self)->lpVtbl->Invoke(self, id, iid, locale, flags, params, result, exception, bad_argument)
  #define IToviStreamCrypt_get_Stream(self, stream) (self)->lpVtbl->get_Stream(self, stream)
  #define IToviStreamCrypt_putref_Stream(self, stream) (self)->lpVtbl->putref_Stream(self, stream)
  #define IToviStreamCrypt_get_ReadAlgorithm(self, name) \
    (self)->lpVtbl->get_ReadAlgorithm(self, name)
  #define IToviStreamCrypt_put_ReadAlgorithm(self, name) \
    (self)->lpVtbl->put_ReadAlgorithm(self, name)
  #define IToviStreamCrypt_get_WriteAlgorithm(self, name) \
    (self)->lpVtbl->get_WriteAlgorithm(self, name)
  #define IToviStreamCrypt_put_WriteAlgorithm(self, name) \
    (self)->lpVtbl->put_WriteAlgorithm(self, name)
  #define IToviStreamCrypt_get_ReadKey(self, key) (self)->lpVtbl->get_ReadKey(self, key)
  #define IToviStreamCrypt_put_ReadKey(self, key) (self)->lpVtbl->put_ReadKey(self, key)
  #define IToviStreamCrypt_get_WriteKey(self, key) (self)->lpVtbl->get_WriteKey(self, key)
  #define IToviStreamCrypt_put_WriteKey(self, key) (self)->lpVtbl->put_WriteKey(self, key)
  #define IToviStreamCrypt_ReadReset(self) (self)->lpVtbl->ReadReset(self)
  #define IToviStreamCrypt_WriteReset(self) (self)->lpVtbl->WriteReset(self)
  #define IToviStreamCrypt_ReadResetKey(self) (self)->lpVtbl->ReadResetKey(self)
  #define IToviStreamCrypt_WriteResetKey(self) (self)->lpVtbl->WriteResetKey(self)
  #define IToviStreamCrypt_get_SeekingForbidden(self, value) \
    (self)->lpVtbl->get_SeekingForbidden(self, value)
  #define IToviStreamCrypt_put_SeekingForbidden(self, value) \
    (self)->lpVtbl->put_SeekingForbidden(self, value)
  #define IToviStreamCrypt_get_codePage(self, value) (self)->lpVtbl->get_codePage(self, value)
  #define IToviStreamCrypt_put_codePage(self, value) (self)->lpVtbl->put_codePage(self, value)
  #define IToviStreamCrypt_ReadFinalize(self) (self)->lpVtbl->ReadFinalize(self)
  #define IToviStreamCrypt_WriteFinalize(self) (self)->lpVtbl->WriteFinalize(self)
  #define IToviStreamCrypt_get_WriteDecrypt(self, value) \
    (self)->lpVtbl->get_WriteDecrypt(self, value)
  #define IToviStreamCrypt_put_WriteDecrypt(self, value) \
    (self)->lpVtbl->put_WriteDecrypt(self, value)
  #define IToviStreamCrypt_get_ReadDecrypt(self, value) (self)->lpVtbl->get_ReadDecrypt(self, value)
  #define IToviStreamCrypt_put_ReadDecrypt(self, value) (self)->lpVtbl->put_ReadDecrypt(self, value)
  #define IToviStreamCrypt_get_ReadPadType(self, value) (self)->lpVtbl->get_ReadPadType(self, value)
  #define IToviStreamCrypt_put_ReadPadType(self, value) (self)->lpVtbl->put_ReadPadType(self, value)
  #define IToviStreamCrypt_get_WritePadType(self, value) \
    (self)->lpVtbl->get_WritePadType(self, value)
  #define IToviStreamCrypt_put_WritePadType(self, value) \
    (self)->lpVtbl->put_WritePadType(self, value)

  #define IToviStreamSource_QueryInterface(self, iid, out) \
    (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IToviStreamSource_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IToviStreamSource_Release(self) (self)->lpVtbl->Release(self)
  #define IToviStreamSource_GetStream(self, stream) (self)->lpVtbl->GetStream(self, stream)
#endif
