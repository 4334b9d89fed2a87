// SPDX-License-Identifier: MIT
// Late-bound calls and type information.
#pragma once

#include "mirolta/variant.h"

MIROLTA_IDENTIFIER IID IID_IDispatch = MIROLTA_OLE_IID(0x00020400);
MIROLTA_IDENTIFIER IID IID_ITypeInfo = MIROLTA_OLE_IID(0x00020401);
MIROLTA_IDENTIFIER IID IID_ITypeLib = MIROLTA_OLE_IID(0x00020402);
MIROLTA_IDENTIFIER IID IID_ITypeComp = MIROLTA_OLE_IID(0x00020403);
MIROLTA_IDENTIFIER IID IID_IEnumVARIANT = MIROLTA_OLE_IID(0x00020404);

MIROLTA_CONSTANT(DISPID, DISPID_VALUE, 0);
MIROLTA_CONSTANT(DISPID, DISPID_UNKNOWN, -1);
MIROLTA_CONSTANT(DISPID, DISPID_PROPERTYPUT, -3);
MIROLTA_CONSTANT(DISPID, DISPID_NEWENUM, -4);

MIROLTA_CONSTANT(WORD, DISPATCH_METHOD, 1);
MIROLTA_CONSTANT(WORD, DISPATCH_PROPERTYGET, 2);
MIROLTA_CONSTANT(WORD, DISPATCH_PROPERTYPUT, 4);
MIROLTA_CONSTANT(WORD, DISPATCH_PROPERTYPUTREF, 8);

// rgvarg holds the arguments in reverse order; named ones come first.
typedef struct DISPPARAMS {
  VARIANTARG* rgvarg;
  DISPID* rgdispidNamedArgs;
  UINT cArgs;
  UINT cNamedArgs;
} DISPPARAMS;

typedef struct EXCEPINFO EXCEPINFO;
struct EXCEPINFO {
  WORD wCode;
  WORD wReserved;
  BSTR bstrSource;
  BSTR bstrDescription;
  BSTR bstrHelpFile;
  DWORD dwHelpContext;
  PVOID pvReserved;
  HRESULT(STDMETHODCALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
  SCODE scode;
};

typedef enum TYPEKIND MIROLTA_ENUM(int32_t){
    TKIND_ENUM = 0,     TKIND_RECORD = 1,  TKIND_MODULE = 2, TKIND_INTERFACE = 3,
    TKIND_DISPATCH = 4, TKIND_COCLASS = 5, TKIND_ALIAS = 6,  TKIND_UNION = 7,
} TYPEKIND;
typedef enum INVOKEKIND MIROLTA_ENUM(int32_t){
    INVOKE_FUNC = 1,
    INVOKE_PROPERTYGET = 2,
    INVOKE_PROPERTYPUT = 4,
    INVOKE_PROPERTYPUTREF = 8,
} INVOKEKIND;
typedef enum FUNCKIND MIROLTA_ENUM(int32_t){
    FUNC_VIRTUAL = 0, FUNC_PUREVIRTUAL = 1, FUNC_NONVIRTUAL = 2, FUNC_STATIC = 3, FUNC_DISPATCH = 4,
} FUNCKIND;
typedef enum CALLCONV MIROLTA_ENUM(int32_t){CC_CDECL = 1, CC_STDCALL = 4} CALLCONV;
typedef enum SYSKIND MIROLTA_ENUM(int32_t){SYS_WIN16 = 0, SYS_WIN32 = 1, SYS_MAC = 2,
                                           SYS_WIN64 = 3} SYSKIND;
typedef enum DESCKIND MIROLTA_ENUM(int32_t){DESCKIND_NONE = 0, DESCKIND_FUNCDESC = 1,
                                            DESCKIND_VARDESC = 2} DESCKIND;

MIROLTA_CONSTANT(WORD, TYPEFLAG_FCANCREATE, 0x0002);
MIROLTA_CONSTANT(WORD, TYPEFLAG_FDUAL, 0x0040);
MIROLTA_CONSTANT(WORD, TYPEFLAG_FOLEAUTOMATION, 0x0100);
MIROLTA_CONSTANT(WORD, TYPEFLAG_FDISPATCHABLE, 0x1000);
MIROLTA_CONSTANT(USHORT, PARAMFLAG_FIN, 0x0001);
MIROLTA_CONSTANT(USHORT, PARAMFLAG_FOUT, 0x0002);
MIROLTA_CONSTANT(USHORT, PARAMFLAG_FRETVAL, 0x0008);
MIROLTA_CONSTANT(USHORT, PARAMFLAG_FOPT, 0x0010);
MIROLTA_CONSTANT(USHORT, PARAMFLAG_FHASDEFAULT, 0x0020);
MIROLTA_CONSTANT(int32_t, IMPLTYPEFLAG_FDEFAULT, 0x1);

typedef struct TYPEDESC TYPEDESC;
struct TYPEDESC {
  __extension__ union {
    TYPEDESC* lptdesc;
    PVOID lpadesc;
    HREFTYPE hreftype;
  };
  VARTYPE vt;
};
typedef struct IDLDESC {
  ULONG_PTR dwReserved;
  USHORT wIDLFlags;
} IDLDESC;
typedef struct PARAMDESCEX {
  ULONG cBytes;
  VARIANTARG varDefaultValue;
} PARAMDESCEX;
typedef struct PARAMDESC {
  PARAMDESCEX* pparamdescex;
  USHORT wParamFlags;
} PARAMDESC;
typedef struct ELEMDESC {
  TYPEDESC tdesc;
  __extension__ union {
    IDLDESC idldesc;
    PARAMDESC paramdesc;
  };
} ELEMDESC;
typedef struct FUNCDESC {
  MEMBERID memid;
  SCODE* lprgscode;
  ELEMDESC* lprgelemdescParam;
  FUNCKIND funckind;
  INVOKEKIND invkind;
  CALLCONV callconv;
  SHORT cParams;
  SHORT cParamsOpt;
  SHORT oVft;
  SHORT cScodes;
  ELEMDESC elemdescFunc;
  WORD wFuncFlags;
} FUNCDESC;
typedef struct TYPEATTR {
  GUID guid;
  LCID lcid;
  DWORD dwReserved;
  MEMBERID memidConstructor;
  MEMBERID memidDestructor;
  LPOLESTR lpstrSchema;
  ULONG cbSizeInstance;
  TYPEKIND typekind;
  WORD cFuncs;
  WORD cVars;
  WORD cImplTypes;
  WORD cbSizeVft;
  WORD cbAlignment;
  WORD wTypeFlags;
  WORD wMajorVerNum;
  WORD wMinorVerNum;
  TYPEDESC tdescAlias;
  IDLDESC idldescType;
} TYPEATTR;
typedef struct TLIBATTR {
  GUID guid;
  LCID lcid;
  SYSKIND syskind;
  WORD wMajorVerNum;
  WORD wMinorVerNum;
  WORD wLibFlags;
} TLIBATTR;

typedef struct VARDESC VARDESC;
typedef struct IEnumVARIANT IEnumVARIANT;
typedef struct ITypeInfo ITypeInfo;
typedef struct ITypeLib ITypeLib;
typedef struct ITypeComp ITypeComp;

#ifdef __cplusplus
struct IDispatch : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** out) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count,
                                                  LCID locale, DISPID* ids) = 0;
  virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags,
                                           DISPPARAMS* params, VARIANT* result,
                                           EXCEPINFO* exception, UINT* bad_argument) = 0;
};

struct IEnumVARIANT : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* values, ULONG* fetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** out) = 0;
};

struct ITypeInfo : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetTypeAttr(TYPEATTR** attributes) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp** out) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetFuncDesc(UINT index, FUNCDESC** description) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetVarDesc(UINT index, VARDESC** description) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetNames(MEMBERID id, BSTR* names, UINT capacity,
                                             UINT* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRefTypeOfImplType(UINT index, HREFTYPE* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetImplTypeFlags(UINT index, INT* flags) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) = 0;
  virtual HRESULT STDMETHODCALLTYPE Invoke(PVOID instance, MEMBERID id, WORD flags,
                                           DISPPARAMS* params, VARIANT* result,
                                           EXCEPINFO* exception, UINT* bad_argument) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDocumentation(MEMBERID id, BSTR* name, BSTR* help,
                                                     DWORD* help_context, BSTR* help_file) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDllEntry(MEMBERID id, INVOKEKIND kind, BSTR* dll, BSTR* name,
                                                WORD* ordinal) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRefTypeInfo(HREFTYPE type, ITypeInfo** out) = 0;
  virtual HRESULT STDMETHODCALLTYPE AddressOfMember(MEMBERID id, INVOKEKIND kind,
                                                    PVOID* address) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, PVOID* out) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMops(MEMBERID id, BSTR* mops) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetContainingTypeLib(ITypeLib** library, UINT* index) = 0;
  virtual void STDMETHODCALLTYPE ReleaseTypeAttr(TYPEATTR* attributes) = 0;
  virtual void STDMETHODCALLTYPE ReleaseFuncDesc(FUNCDESC* description) = 0;
  virtual void STDMETHODCALLTYPE ReleaseVarDesc(VARDESC* description) = 0;
};

struct ITypeLib : IUnknown {
  virtual UINT STDMETHODCALLTYPE GetTypeInfoCount() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, ITypeInfo** out) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfoType(UINT index, TYPEKIND* kind) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** out) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLibAttr(TLIBATTR** attributes) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp** out) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDocumentation(INT index, BSTR* name, BSTR* help,
                                                     DWORD* help_context, BSTR* help_file) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsName(LPOLESTR name, ULONG hash, INT* found) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindName(LPOLESTR name, ULONG hash, ITypeInfo** infos,
                                             MEMBERID* ids, USHORT* found) = 0;
  virtual void STDMETHODCALLTYPE ReleaseTLibAttr(TLIBATTR* attributes) = 0;
};

MIROLTA_BIND_IID(IDispatch);
MIROLTA_BIND_IID(IEnumVARIANT);
MIROLTA_BIND_IID(ITypeInfo);
MIROLTA_BIND_IID(ITypeLib);
#endif

// LoadTypeLib reads the type library of the module file `file`: a module of this runtime, loaded
// for the time of the call if it is not loaded yet.
MIROLTA_RUNTIME HRESULT LoadTypeLib(const OLECHAR* file, ITypeLib** out);
MIROLTA_RUNTIME HRESULT LoadRegTypeLib(REFGUID library, WORD major, WORD minor, LCID locale,
                                       ITypeLib** out);
MIROLTA_RUNTIME HRESULT RegisterTypeLib(ITypeLib* library, OLECHAR* file, OLECHAR* help_directory);
MIROLTA_RUNTIME HRESULT UnRegisterTypeLib(REFGUID library, WORD major, WORD minor, LCID locale,
                                          SYSKIND kind);
