// Late-bound calls and type information.
#pragma once

#include "portable/variant.h"

inline constexpr IID IID_IDispatch = MIROLTA_OLE_IID(0x00020400);
inline constexpr IID IID_ITypeInfo = MIROLTA_OLE_IID(0x00020401);
inline constexpr IID IID_ITypeLib = MIROLTA_OLE_IID(0x00020402);
inline constexpr IID IID_ITypeComp = MIROLTA_OLE_IID(0x00020403);
inline constexpr IID IID_IEnumVARIANT = MIROLTA_OLE_IID(0x00020404);

constexpr DISPID DISPID_VALUE = 0;
constexpr DISPID DISPID_UNKNOWN = -1;
constexpr DISPID DISPID_PROPERTYPUT = -3;
constexpr DISPID DISPID_NEWENUM = -4;

constexpr WORD DISPATCH_METHOD = 1;
constexpr WORD DISPATCH_PROPERTYGET = 2;
constexpr WORD DISPATCH_PROPERTYPUT = 4;
constexpr WORD DISPATCH_PROPERTYPUTREF = 8;

// rgvarg holds the arguments in reverse order; named ones come first.
struct DISPPARAMS {
  VARIANTARG* rgvarg;
  DISPID* rgdispidNamedArgs;
  UINT cArgs;
  UINT cNamedArgs;
};

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

enum TYPEKIND : int32_t {
  TKIND_ENUM = 0,
  TKIND_RECORD = 1,
  TKIND_MODULE = 2,
  TKIND_INTERFACE = 3,
  TKIND_DISPATCH = 4,
  TKIND_COCLASS = 5,
  TKIND_ALIAS = 6,
  TKIND_UNION = 7,
};
enum INVOKEKIND : int32_t {
  INVOKE_FUNC = 1,
  INVOKE_PROPERTYGET = 2,
  INVOKE_PROPERTYPUT = 4,
  INVOKE_PROPERTYPUTREF = 8,
};
enum FUNCKIND : int32_t {
  FUNC_VIRTUAL = 0,
  FUNC_PUREVIRTUAL = 1,
  FUNC_NONVIRTUAL = 2,
  FUNC_STATIC = 3,
  FUNC_DISPATCH = 4,
};
enum CALLCONV : int32_t { CC_CDECL = 1, CC_STDCALL = 4 };
enum SYSKIND : int32_t { SYS_WIN16 = 0, SYS_WIN32 = 1, SYS_MAC = 2, SYS_WIN64 = 3 };
enum DESCKIND : int32_t { DESCKIND_NONE = 0, DESCKIND_FUNCDESC = 1, DESCKIND_VARDESC = 2 };

constexpr WORD TYPEFLAG_FCANCREATE = 0x0002;
constexpr WORD TYPEFLAG_FDUAL = 0x0040;
constexpr WORD TYPEFLAG_FOLEAUTOMATION = 0x0100;
constexpr WORD TYPEFLAG_FDISPATCHABLE = 0x1000;
constexpr USHORT PARAMFLAG_FIN = 0x0001;
constexpr USHORT PARAMFLAG_FOUT = 0x0002;
constexpr USHORT PARAMFLAG_FRETVAL = 0x0008;
constexpr USHORT PARAMFLAG_FOPT = 0x0010;
constexpr USHORT PARAMFLAG_FHASDEFAULT = 0x0020;
constexpr int32_t IMPLTYPEFLAG_FDEFAULT = 0x1;

struct TYPEDESC {
  __extension__ union {
    TYPEDESC* lptdesc;
    PVOID lpadesc;
    HREFTYPE hreftype;
  };
  VARTYPE vt;
};
struct IDLDESC {
  ULONG_PTR dwReserved;
  USHORT wIDLFlags;
};
struct PARAMDESCEX {
  ULONG cBytes;
  VARIANTARG varDefaultValue;
};
struct PARAMDESC {
  PARAMDESCEX* pparamdescex;
  USHORT wParamFlags;
};
struct ELEMDESC {
  TYPEDESC tdesc;
  __extension__ union {
    IDLDESC idldesc;
    PARAMDESC paramdesc;
  };
};
struct FUNCDESC {
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
};
struct TYPEATTR {
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
};
struct TLIBATTR {
  GUID guid;
  LCID lcid;
  SYSKIND syskind;
  WORD wMajorVerNum;
  WORD wMinorVerNum;
  WORD wLibFlags;
};

struct VARDESC;
struct ITypeInfo;
struct ITypeLib;
struct ITypeComp;

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
  virtual HRESULT STDMETHODCALLTYPE IsName(LPOLESTR name, ULONG hash, BOOL* found) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindName(LPOLESTR name, ULONG hash, ITypeInfo** infos,
                                             MEMBERID* ids, USHORT* found) = 0;
  virtual void STDMETHODCALLTYPE ReleaseTLibAttr(TLIBATTR* attributes) = 0;
};

extern "C" {
// LoadTypeLib reads the type library of the module file `file`: a module of this runtime, loaded
// for the time of the call if it is not loaded yet.
MIROLTA_RUNTIME HRESULT LoadTypeLib(const OLECHAR* file, ITypeLib** out);
MIROLTA_RUNTIME HRESULT LoadRegTypeLib(REFGUID library, WORD major, WORD minor, LCID locale,
                                       ITypeLib** out);
MIROLTA_RUNTIME HRESULT RegisterTypeLib(ITypeLib* library, OLECHAR* file, OLECHAR* help_directory);
MIROLTA_RUNTIME HRESULT UnRegisterTypeLib(REFGUID library, WORD major, WORD minor, LCID locale,
                                          SYSKIND kind);
}
