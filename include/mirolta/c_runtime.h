// SPDX-License-Identifier: MIT
// The platform's interfaces in C: structures of function pointers in slot order. With COBJMACROS
// defined, IStream_Read(stream, ...) calls stream->lpVtbl->Read(stream, ...).
#pragma once

typedef struct IUnknownVtbl IUnknownVtbl;
typedef struct IClassFactoryVtbl IClassFactoryVtbl;
typedef struct IDispatchVtbl IDispatchVtbl;
typedef struct IEnumVARIANTVtbl IEnumVARIANTVtbl;
typedef struct ITypeInfoVtbl ITypeInfoVtbl;
typedef struct ITypeLibVtbl ITypeLibVtbl;
typedef struct ISequentialStreamVtbl ISequentialStreamVtbl;
typedef struct IStreamVtbl IStreamVtbl;
typedef struct IErrorInfoVtbl IErrorInfoVtbl;
typedef struct ICreateErrorInfoVtbl ICreateErrorInfoVtbl;
typedef struct ISupportErrorInfoVtbl ISupportErrorInfoVtbl;

struct IUnknownVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(IUnknown* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(IUnknown* self);
  ULONG(STDMETHODCALLTYPE* Release)(IUnknown* self);
};

struct IClassFactoryVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(IClassFactory* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(IClassFactory* self);
  ULONG(STDMETHODCALLTYPE* Release)(IClassFactory* self);
  HRESULT(STDMETHODCALLTYPE* CreateInstance)
  (IClassFactory* self, IUnknown* outer, REFIID iid, void** out);
  HRESULT(STDMETHODCALLTYPE* LockServer)(IClassFactory* self, INT lock);
};

struct IDispatchVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(IDispatch* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(IDispatch* self);
  ULONG(STDMETHODCALLTYPE* Release)(IDispatch* self);
  HRESULT(STDMETHODCALLTYPE* GetTypeInfoCount)(IDispatch* self, UINT* count);
  HRESULT(STDMETHODCALLTYPE* GetTypeInfo)
  (IDispatch* self, UINT index, LCID locale, ITypeInfo** out);
  HRESULT(STDMETHODCALLTYPE* GetIDsOfNames)
  (IDispatch* self, REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids);
  HRESULT(STDMETHODCALLTYPE* Invoke)
  (IDispatch* self, DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params,
   VARIANT* result, EXCEPINFO* exception, UINT* bad_argument);
};

struct IEnumVARIANTVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(IEnumVARIANT* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(IEnumVARIANT* self);
  ULONG(STDMETHODCALLTYPE* Release)(IEnumVARIANT* self);
  HRESULT(STDMETHODCALLTYPE* Next)
  (IEnumVARIANT* self, ULONG count, VARIANT* values, ULONG* fetched);
  HRESULT(STDMETHODCALLTYPE* Skip)(IEnumVARIANT* self, ULONG count);
  HRESULT(STDMETHODCALLTYPE* Reset)(IEnumVARIANT* self);
  HRESULT(STDMETHODCALLTYPE* Clone)(IEnumVARIANT* self, IEnumVARIANT** out);
};

struct ITypeInfoVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(ITypeInfo* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(ITypeInfo* self);
  ULONG(STDMETHODCALLTYPE* Release)(ITypeInfo* self);
  HRESULT(STDMETHODCALLTYPE* GetTypeAttr)(ITypeInfo* self, TYPEATTR** attributes);
  HRESULT(STDMETHODCALLTYPE* GetTypeComp)(ITypeInfo* self, ITypeComp** out);
  HRESULT(STDMETHODCALLTYPE* GetFuncDesc)(ITypeInfo* self, UINT index, FUNCDESC** description);
  HRESULT(STDMETHODCALLTYPE* GetVarDesc)(ITypeInfo* self, UINT index, VARDESC** description);
  HRESULT(STDMETHODCALLTYPE* GetNames)
  (ITypeInfo* self, MEMBERID id, BSTR* names, UINT capacity, UINT* count);
  HRESULT(STDMETHODCALLTYPE* GetRefTypeOfImplType)(ITypeInfo* self, UINT index, HREFTYPE* type);
  HRESULT(STDMETHODCALLTYPE* GetImplTypeFlags)(ITypeInfo* self, UINT index, INT* flags);
  HRESULT(STDMETHODCALLTYPE* GetIDsOfNames)
  (ITypeInfo* self, LPOLESTR* names, UINT count, MEMBERID* ids);
  HRESULT(STDMETHODCALLTYPE* Invoke)
  (ITypeInfo* self, PVOID instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
   EXCEPINFO* exception, UINT* bad_argument);
  HRESULT(STDMETHODCALLTYPE* GetDocumentation)
  (ITypeInfo* self, MEMBERID id, BSTR* name, BSTR* help, DWORD* help_context, BSTR* help_file);
  HRESULT(STDMETHODCALLTYPE* GetDllEntry)
  (ITypeInfo* self, MEMBERID id, INVOKEKIND kind, BSTR* dll, BSTR* name, WORD* ordinal);
  HRESULT(STDMETHODCALLTYPE* GetRefTypeInfo)(ITypeInfo* self, HREFTYPE type, ITypeInfo** out);
  HRESULT(STDMETHODCALLTYPE* AddressOfMember)
  (ITypeInfo* self, MEMBERID id, INVOKEKIND kind, PVOID* address);
  HRESULT(STDMETHODCALLTYPE* CreateInstance)
  (ITypeInfo* self, IUnknown* outer, REFIID iid, PVOID* out);
  HRESULT(STDMETHODCALLTYPE* GetMops)(ITypeInfo* self, MEMBERID id, BSTR* mops);
  HRESULT(STDMETHODCALLTYPE* GetContainingTypeLib)
  (ITypeInfo* self, ITypeLib** library, UINT* index);
  void(STDMETHODCALLTYPE* ReleaseTypeAttr)(ITypeInfo* self, TYPEATTR* attributes);
  void(STDMETHODCALLTYPE* ReleaseFuncDesc)(ITypeInfo* self, FUNCDESC* description);
  void(STDMETHODCALLTYPE* ReleaseVarDesc)(ITypeInfo* self, VARDESC* description);
};

struct ITypeLibVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(ITypeLib* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(ITypeLib* self);
  ULONG(STDMETHODCALLTYPE* Release)(ITypeLib* self);
  UINT(STDMETHODCALLTYPE* GetTypeInfoCount)(ITypeLib* self);
  HRESULT(STDMETHODCALLTYPE* GetTypeInfo)(ITypeLib* self, UINT index, ITypeInfo** out);
  HRESULT(STDMETHODCALLTYPE* GetTypeInfoType)(ITypeLib* self, UINT index, TYPEKIND* kind);
  HRESULT(STDMETHODCALLTYPE* GetTypeInfoOfGuid)(ITypeLib* self, REFGUID guid, ITypeInfo** out);
  HRESULT(STDMETHODCALLTYPE* GetLibAttr)(ITypeLib* self, TLIBATTR** attributes);
  HRESULT(STDMETHODCALLTYPE* GetTypeComp)(ITypeLib* self, ITypeComp** out);
  HRESULT(STDMETHODCALLTYPE* GetDocumentation)
  (ITypeLib* self, INT index, BSTR* name, BSTR* help, DWORD* help_context, BSTR* help_file);
  HRESULT(STDMETHODCALLTYPE* IsName)(ITypeLib* self, LPOLESTR name, ULONG hash, INT* found);
  HRESULT(STDMETHODCALLTYPE* FindName)
  (ITypeLib* self, LPOLESTR name, ULONG hash, ITypeInfo** infos, MEMBERID* ids, USHORT* found);
  void(STDMETHODCALLTYPE* ReleaseTLibAttr)(ITypeLib* self, TLIBATTR* attributes);
};

struct ISequentialStreamVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(ISequentialStream* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(ISequentialStream* self);
  ULONG(STDMETHODCALLTYPE* Release)(ISequentialStream* self);
  HRESULT(STDMETHODCALLTYPE* Read)(ISequentialStream* self, void* bytes, ULONG count, ULONG* read);
  HRESULT(STDMETHODCALLTYPE* Write)
  (ISequentialStream* self, const void* bytes, ULONG count, ULONG* written);
};

struct IStreamVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(IStream* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(IStream* self);
  ULONG(STDMETHODCALLTYPE* Release)(IStream* self);
  HRESULT(STDMETHODCALLTYPE* Read)(IStream* self, void* bytes, ULONG count, ULONG* read);
  HRESULT(STDMETHODCALLTYPE* Write)(IStream* self, const void* bytes, ULONG count, ULONG* written);
  HRESULT(STDMETHODCALLTYPE* Seek)
  (IStream* self, LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position);
  HRESULT(STDMETHODCALLTYPE* SetSize)(IStream* self, ULARGE_INTEGER size);
  HRESULT(STDMETHODCALLTYPE* CopyTo)
  (IStream* self, IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read, ULARGE_INTEGER* written);
  HRESULT(STDMETHODCALLTYPE* Commit)(IStream* self, DWORD flags);
  HRESULT(STDMETHODCALLTYPE* Revert)(IStream* self);
  HRESULT(STDMETHODCALLTYPE* LockRegion)
  (IStream* self, ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type);
  HRESULT(STDMETHODCALLTYPE* UnlockRegion)
  (IStream* self, ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type);
  HRESULT(STDMETHODCALLTYPE* Stat)(IStream* self, STATSTG* statistics, DWORD flags);
  HRESULT(STDMETHODCALLTYPE* Clone)(IStream* self, IStream** out);
};

struct IErrorInfoVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(IErrorInfo* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(IErrorInfo* self);
  ULONG(STDMETHODCALLTYPE* Release)(IErrorInfo* self);
  HRESULT(STDMETHODCALLTYPE* GetGUID)(IErrorInfo* self, GUID* guid);
  HRESULT(STDMETHODCALLTYPE* GetSource)(IErrorInfo* self, BSTR* source);
  HRESULT(STDMETHODCALLTYPE* GetDescription)(IErrorInfo* self, BSTR* description);
  HRESULT(STDMETHODCALLTYPE* GetHelpFile)(IErrorInfo* self, BSTR* help_file);
  HRESULT(STDMETHODCALLTYPE* GetHelpContext)(IErrorInfo* self, DWORD* help_context);
};

struct ICreateErrorInfoVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(ICreateErrorInfo* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(ICreateErrorInfo* self);
  ULONG(STDMETHODCALLTYPE* Release)(ICreateErrorInfo* self);
  HRESULT(STDMETHODCALLTYPE* SetGUID)(ICreateErrorInfo* self, REFGUID guid);
  HRESULT(STDMETHODCALLTYPE* SetSource)(ICreateErrorInfo* self, LPOLESTR source);
  HRESULT(STDMETHODCALLTYPE* SetDescription)(ICreateErrorInfo* self, LPOLESTR description);
  HRESULT(STDMETHODCALLTYPE* SetHelpFile)(ICreateErrorInfo* self, LPOLESTR help_file);
  HRESULT(STDMETHODCALLTYPE* SetHelpContext)(ICreateErrorInfo* self, DWORD help_context);
};

struct ISupportErrorInfoVtbl {
  HRESULT(STDMETHODCALLTYPE* QueryInterface)(ISupportErrorInfo* self, REFIID iid, void** out);
  ULONG(STDMETHODCALLTYPE* AddRef)(ISupportErrorInfo* self);
  ULONG(STDMETHODCALLTYPE* Release)(ISupportErrorInfo* self);
  HRESULT(STDMETHODCALLTYPE* InterfaceSupportsErrorInfo)(ISupportErrorInfo* self, REFIID iid);
};

struct IUnknown {
  const IUnknownVtbl* lpVtbl;
};
struct IClassFactory {
  const IClassFactoryVtbl* lpVtbl;
};
struct IDispatch {
  const IDispatchVtbl* lpVtbl;
};
struct IEnumVARIANT {
  const IEnumVARIANTVtbl* lpVtbl;
};
struct ITypeInfo {
  const ITypeInfoVtbl* lpVtbl;
};
struct ITypeLib {
  const ITypeLibVtbl* lpVtbl;
};
struct ISequentialStream {
  const ISequentialStreamVtbl* lpVtbl;
};
struct IStream {
  const IStreamVtbl* lpVtbl;
};
struct IErrorInfo {
  const IErrorInfoVtbl* lpVtbl;
};
struct ICreateErrorInfo {
  const ICreateErrorInfoVtbl* lpVtbl;
};
struct ISupportErrorInfo {
  const ISupportErrorInfoVtbl* lpVtbl;
};

#ifdef COBJMACROS
  #define IUnknown_QueryInterface(self, iid, out) (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IUnknown_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IUnknown_Release(self) (self)->lpVtbl->Release(self)

  #define IClassFactory_QueryInterface(self, iid, out) \
    (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IClassFactory_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IClassFactory_Release(self) (self)->lpVtbl->Release(self)
  #define IClassFactory_CreateInstance(self, outer, iid, out) \
    (self)->lpVtbl->CreateInstance(self, outer, iid, out)
  #define IClassFactory_LockServer(self, lock) (self)->lpVtbl->LockServer(self, lock)

  #define IDispatch_QueryInterface(self, iid, out) (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IDispatch_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IDispatch_Release(self) (self)->lpVtbl->Release(self)
  #define IDispatch_GetTypeInfoCount(self, count) (self)->lpVtbl->GetTypeInfoCount(self, count)
  #define IDispatch_GetTypeInfo(self, index, locale, out) \
    (self)->lpVtbl->GetTypeInfo(self, index, locale, out)
  #define IDispatch_GetIDsOfNames(self, iid, names, count, locale, ids) \
    (self)->lpVtbl->GetIDsOfNames(self, iid, names, count, locale, ids)
  #define IDispatch_Invoke(self, id, iid, locale, flags, params, result, exception, bad_argument) \
    (self)->lpVtbl->Invoke(self, id, iid, locale, flags, params, result, exception, bad_argument)

  #define IEnumVARIANT_QueryInterface(self, iid, out) (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IEnumVARIANT_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IEnumVARIANT_Release(self) (self)->lpVtbl->Release(self)
  #define IEnumVARIANT_Next(self, count, values, fetched) \
    (self)->lpVtbl->Next(self, count, values, fetched)
  #define IEnumVARIANT_Skip(self, count) (self)->lpVtbl->Skip(self, count)
  #define IEnumVARIANT_Reset(self) (self)->lpVtbl->Reset(self)
  #define IEnumVARIANT_Clone(self, out) (self)->lpVtbl->Clone(self, out)

  #define ITypeInfo_QueryInterface(self, iid, out) (self)->lpVtbl->QueryInterface(self, iid, out)
  #define ITypeInfo_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define ITypeInfo_Release(self) (self)->lpVtbl->Release(self)
  #define ITypeInfo_GetTypeAttr(self, attributes) (self)->lpVtbl->GetTypeAttr(self, attributes)
  #define ITypeInfo_GetTypeComp(self, out) (self)->lpVtbl->GetTypeComp(self, out)
  #define ITypeInfo_GetFuncDesc(self, index, description) \
    (self)->lpVtbl->GetFuncDesc(self, index, description)
  #define ITypeInfo_GetVarDesc(self, index, description) \
    (self)->lpVtbl->GetVarDesc(self, index, description)
  #define ITypeInfo_GetNames(self, id, names, capacity, count) \
    (self)->lpVtbl->GetNames(self, id, names, capacity, count)
  #define ITypeInfo_GetRefTypeOfImplType(self, index, type) \
    (self)->lpVtbl->GetRefTypeOfImplType(self, index, type)
  #define ITypeInfo_GetImplTypeFlags(self, index, flags) \
    (self)->lpVtbl->GetImplTypeFlags(self, index, flags)
  #define ITypeInfo_GetIDsOfNames(self, names, count, ids) \
    (self)->lpVtbl->GetIDsOfNames(self, names, count, ids)
  #define ITypeInfo_Invoke(self, instance, id, flags, params, result, exception, bad_argument) \
    (self)->lpVtbl->Invoke(self, instance, id, flags, params, result, exception, bad_argument)
  #define ITypeInfo_GetDocumentation(self, id, name, help, help_context, help_file) \
    (self)->lpVtbl->GetDocumentation(self, id, name, help, help_context, help_file)
  #define ITypeInfo_GetDllEntry(self, id, kind, dll, name, ordinal) \
    (self)->lpVtbl->GetDllEntry(self, id, kind, dll, name, ordinal)
  #define ITypeInfo_GetRefTypeInfo(self, type, out) (self)->lpVtbl->GetRefTypeInfo(self, type, out)
  #define ITypeInfo_AddressOfMember(self, id, kind, address) \
    (self)->lpVtbl->AddressOfMember(self, id, kind, address)
  #define ITypeInfo_CreateInstance(self, outer, iid, out) \
    (self)->lpVtbl->CreateInstance(self, outer, iid, out)
  #define ITypeInfo_GetMops(self, id, mops) (self)->lpVtbl->GetMops(self, id, mops)
  #define ITypeInfo_GetContainingTypeLib(self, library, index) \
    (self)->lpVtbl->GetContainingTypeLib(self, library, index)
  #define ITypeInfo_ReleaseTypeAttr(self, attributes) \
    (self)->lpVtbl->ReleaseTypeAttr(self, attributes)
  #define ITypeInfo_ReleaseFuncDesc(self, description) \
    (self)->lpVtbl->ReleaseFuncDesc(self, description)
  #define ITypeInfo_ReleaseVarDesc(self, description) \
    (self)->lpVtbl->ReleaseVarDesc(self, description)

  #define ITypeLib_QueryInterface(self, iid, out) (self)->lpVtbl->QueryInterface(self, iid, out)
  #define ITypeLib_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define ITypeLib_Release(self) (self)->lpVtbl->Release(self)
  #define ITypeLib_GetTypeInfoCount(self) (self)->lpVtbl->GetTypeInfoCount(self)
  #define ITypeLib_GetTypeInfo(self, index, out) (self)->lpVtbl->GetTypeInfo(self, index, out)
  #define ITypeLib_GetTypeInfoType(self, index, kind) \
    (self)->lpVtbl->GetTypeInfoType(self, index, kind)
  #define ITypeLib_GetTypeInfoOfGuid(self, guid, out) \
    (self)->lpVtbl->GetTypeInfoOfGuid(self, guid, out)
  #define ITypeLib_GetLibAttr(self, attributes) (self)->lpVtbl->GetLibAttr(self, attributes)
  #define ITypeLib_GetTypeComp(self, out) (self)->lpVtbl->GetTypeComp(self, out)
  #define ITypeLib_GetDocumentation(self, index, name, help, help_context, help_file) \
    (self)->lpVtbl->GetDocumentation(self, index, name, help, help_context, help_file)
  #define ITypeLib_IsName(self, name, hash, found) (self)->lpVtbl->IsName(self, name, hash, found)
  #define ITypeLib_FindName(self, name, hash, infos, ids, found) \
    (self)->lpVtbl->FindName(self, name, hash, infos, ids, found)
  #define ITypeLib_ReleaseTLibAttr(self, attributes) \
    (self)->lpVtbl->ReleaseTLibAttr(self, attributes)

  #define ISequentialStream_QueryInterface(self, iid, out) \
    (self)->lpVtbl->QueryInterface(self, iid, out)
  #define ISequentialStream_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define ISequentialStream_Release(self) (self)->lpVtbl->Release(self)
  #define ISequentialStream_Read(self, bytes, count, read) \
    (self)->lpVtbl->Read(self, bytes, count, read)
  #define ISequentialStream_Write(self, bytes, count, written) \
    (self)->lpVtbl->Write(self, bytes, count, written)

  #define IStream_QueryInterface(self, iid, out) (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IStream_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IStream_Release(self) (self)->lpVtbl->Release(self)
  #define IStream_Read(self, bytes, count, read) (self)->lpVtbl->Read(self, bytes, count, read)
  #define IStream_Write(self, bytes, count, written) \
    (self)->lpVtbl->Write(self, bytes, count, written)
  #define IStream_Seek(self, move, origin, position) \
    (self)->lpVtbl->Seek(self, move, origin, position)
  #define IStream_SetSize(self, size) (self)->lpVtbl->SetSize(self, size)
  #define IStream_CopyTo(self, to, count, read, written) \
    (self)->lpVtbl->CopyTo(self, to, count, read, written)
  #define IStream_Commit(self, flags) (self)->lpVtbl->Commit(self, flags)
  #define IStream_Revert(self) (self)->lpVtbl->Revert(self)
  #define IStream_LockRegion(self, offset, count, type) \
    (self)->lpVtbl->LockRegion(self, offset, count, type)
  #define IStream_UnlockRegion(self, offset, count, type) \
    (self)->lpVtbl->UnlockRegion(self, offset, count, type)
  #define IStream_Stat(self, statistics, flags) (self)->lpVtbl->Stat(self, statistics, flags)
  #define IStream_Clone(self, out) (self)->lpVtbl->Clone(self, out)

  #define IErrorInfo_QueryInterface(self, iid, out) (self)->lpVtbl->QueryInterface(self, iid, out)
  #define IErrorInfo_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define IErrorInfo_Release(self) (self)->lpVtbl->Release(self)
  #define IErrorInfo_GetGUID(self, guid) (self)->lpVtbl->GetGUID(self, guid)
  #define IErrorInfo_GetSource(self, source) (self)->lpVtbl->GetSource(self, source)
  #define IErrorInfo_GetDescription(self, description) \
    (self)->lpVtbl->GetDescription(self, description)
  #define IErrorInfo_GetHelpFile(self, help_file) (self)->lpVtbl->GetHelpFile(self, help_file)
  #define IErrorInfo_GetHelpContext(self, help_context) \
    (self)->lpVtbl->GetHelpContext(self, help_context)

  #define ICreateErrorInfo_QueryInterface(self, iid, out) \
    (self)->lpVtbl->QueryInterface(self, iid, out)
  #define ICreateErrorInfo_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define ICreateErrorInfo_Release(self) (self)->lpVtbl->Release(self)
  #define ICreateErrorInfo_SetGUID(self, guid) (self)->lpVtbl->SetGUID(self, guid)
  #define ICreateErrorInfo_SetSource(self, source) (self)->lpVtbl->SetSource(self, source)
  #define ICreateErrorInfo_SetDescription(self, description) \
    (self)->lpVtbl->SetDescription(self, description)
  #define ICreateErrorInfo_SetHelpFile(self, help_file) (self)->lpVtbl->SetHelpFile(self, help_file)
  #define ICreateErrorInfo_SetHelpContext(self, help_context) \
    (self)->lpVtbl->SetHelpContext(self, help_context)

  #define ISupportErrorInfo_QueryInterface(self, iid, out) \
    (self)->lpVtbl->QueryInterface(self, iid, out)
  #define ISupportErrorInfo_AddRef(self) (self)->lpVtbl->AddRef(self)
  #define ISupportErrorInfo_Release(self) (self)->lpVtbl->Release(self)
  #define ISupportErrorInfo_InterfaceSupportsErrorInfo(self, iid) \
    (self)->lpVtbl->InterfaceSupportsErrorInfo(self, iid)
#endif
