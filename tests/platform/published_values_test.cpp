// The numbers of constants and identifiers, which callers and files rely on. The sources and the
// other tests use their names.
#include <gtest/gtest.h>

#include <string>

#include "platform.h"

namespace {

struct Published {
  const char* name;
  uint32_t value;
  uint32_t published;
};

const Published kPublished[] = {
    {"LOCALE_SYSTEM_DEFAULT", static_cast<uint32_t>(LOCALE_SYSTEM_DEFAULT), 0x0800u},
    {"LOCALE_USER_DEFAULT", static_cast<uint32_t>(LOCALE_USER_DEFAULT), 0x0400u},
    {"S_OK", static_cast<uint32_t>(S_OK), 0x00000000u},
    {"S_FALSE", static_cast<uint32_t>(S_FALSE), 0x00000001u},
    {"E_NOTIMPL", static_cast<uint32_t>(E_NOTIMPL), 0x80004001u},
    {"E_NOINTERFACE", static_cast<uint32_t>(E_NOINTERFACE), 0x80004002u},
    {"E_POINTER", static_cast<uint32_t>(E_POINTER), 0x80004003u},
    {"E_ABORT", static_cast<uint32_t>(E_ABORT), 0x80004004u},
    {"E_FAIL", static_cast<uint32_t>(E_FAIL), 0x80004005u},
    {"E_UNEXPECTED", static_cast<uint32_t>(E_UNEXPECTED), 0x8000FFFFu},
    {"E_ACCESSDENIED", static_cast<uint32_t>(E_ACCESSDENIED), 0x80070005u},
    {"E_OUTOFMEMORY", static_cast<uint32_t>(E_OUTOFMEMORY), 0x8007000Eu},
    {"E_INVALIDARG", static_cast<uint32_t>(E_INVALIDARG), 0x80070057u},
    {"DISP_E_UNKNOWNINTERFACE", static_cast<uint32_t>(DISP_E_UNKNOWNINTERFACE), 0x80020001u},
    {"DISP_E_MEMBERNOTFOUND", static_cast<uint32_t>(DISP_E_MEMBERNOTFOUND), 0x80020003u},
    {"DISP_E_PARAMNOTFOUND", static_cast<uint32_t>(DISP_E_PARAMNOTFOUND), 0x80020004u},
    {"DISP_E_TYPEMISMATCH", static_cast<uint32_t>(DISP_E_TYPEMISMATCH), 0x80020005u},
    {"DISP_E_UNKNOWNNAME", static_cast<uint32_t>(DISP_E_UNKNOWNNAME), 0x80020006u},
    {"DISP_E_NONAMEDARGS", static_cast<uint32_t>(DISP_E_NONAMEDARGS), 0x80020007u},
    {"DISP_E_BADVARTYPE", static_cast<uint32_t>(DISP_E_BADVARTYPE), 0x80020008u},
    {"DISP_E_EXCEPTION", static_cast<uint32_t>(DISP_E_EXCEPTION), 0x80020009u},
    {"DISP_E_OVERFLOW", static_cast<uint32_t>(DISP_E_OVERFLOW), 0x8002000Au},
    {"DISP_E_BADINDEX", static_cast<uint32_t>(DISP_E_BADINDEX), 0x8002000Bu},
    {"DISP_E_UNKNOWNLCID", static_cast<uint32_t>(DISP_E_UNKNOWNLCID), 0x8002000Cu},
    {"DISP_E_ARRAYISLOCKED", static_cast<uint32_t>(DISP_E_ARRAYISLOCKED), 0x8002000Du},
    {"DISP_E_BADPARAMCOUNT", static_cast<uint32_t>(DISP_E_BADPARAMCOUNT), 0x8002000Eu},
    {"DISP_E_PARAMNOTOPTIONAL", static_cast<uint32_t>(DISP_E_PARAMNOTOPTIONAL), 0x8002000Fu},
    {"DISP_E_NOTACOLLECTION", static_cast<uint32_t>(DISP_E_NOTACOLLECTION), 0x80020011u},
    {"DISP_E_DIVBYZERO", static_cast<uint32_t>(DISP_E_DIVBYZERO), 0x80020012u},
    {"TYPE_E_CANTLOADLIBRARY", static_cast<uint32_t>(TYPE_E_CANTLOADLIBRARY), 0x80029C4Au},
    {"TYPE_E_LIBNOTREGISTERED", static_cast<uint32_t>(TYPE_E_LIBNOTREGISTERED), 0x8002801Du},
    {"TYPE_E_ELEMENTNOTFOUND", static_cast<uint32_t>(TYPE_E_ELEMENTNOTFOUND), 0x8002802Bu},
    {"TYPE_E_REGISTRYACCESS", static_cast<uint32_t>(TYPE_E_REGISTRYACCESS), 0x8002801Cu},
    {"CLASS_E_NOAGGREGATION", static_cast<uint32_t>(CLASS_E_NOAGGREGATION), 0x80040110u},
    {"CLASS_E_CLASSNOTAVAILABLE", static_cast<uint32_t>(CLASS_E_CLASSNOTAVAILABLE), 0x80040111u},
    {"REGDB_E_CLASSNOTREG", static_cast<uint32_t>(REGDB_E_CLASSNOTREG), 0x80040154u},
    {"CO_E_CLASSSTRING", static_cast<uint32_t>(CO_E_CLASSSTRING), 0x800401F3u},
    {"CO_E_DLLNOTFOUND", static_cast<uint32_t>(CO_E_DLLNOTFOUND), 0x800401F8u},
    {"CO_E_ERRORINDLL", static_cast<uint32_t>(CO_E_ERRORINDLL), 0x800401F9u},
    {"STG_E_INVALIDFUNCTION", static_cast<uint32_t>(STG_E_INVALIDFUNCTION), 0x80030001u},
    {"STG_E_FILENOTFOUND", static_cast<uint32_t>(STG_E_FILENOTFOUND), 0x80030002u},
    {"STG_E_TOOMANYOPENFILES", static_cast<uint32_t>(STG_E_TOOMANYOPENFILES), 0x80030004u},
    {"STG_E_ACCESSDENIED", static_cast<uint32_t>(STG_E_ACCESSDENIED), 0x80030005u},
    {"STG_E_INSUFFICIENTMEMORY", static_cast<uint32_t>(STG_E_INSUFFICIENTMEMORY), 0x80030008u},
    {"STG_E_INVALIDPOINTER", static_cast<uint32_t>(STG_E_INVALIDPOINTER), 0x80030009u},
    {"STG_E_SEEKERROR", static_cast<uint32_t>(STG_E_SEEKERROR), 0x80030019u},
    {"STG_E_WRITEFAULT", static_cast<uint32_t>(STG_E_WRITEFAULT), 0x8003001Du},
    {"STG_E_READFAULT", static_cast<uint32_t>(STG_E_READFAULT), 0x8003001Eu},
    {"STG_E_FILEALREADYEXISTS", static_cast<uint32_t>(STG_E_FILEALREADYEXISTS), 0x80030050u},
    {"STG_E_INVALIDPARAMETER", static_cast<uint32_t>(STG_E_INVALIDPARAMETER), 0x80030057u},
    {"STG_E_MEDIUMFULL", static_cast<uint32_t>(STG_E_MEDIUMFULL), 0x80030070u},
    {"STG_E_INVALIDFLAG", static_cast<uint32_t>(STG_E_INVALIDFLAG), 0x800300FFu},
    {"STG_E_REVERTED", static_cast<uint32_t>(STG_E_REVERTED), 0x80030102u},
    {"STG_E_CANTSAVE", static_cast<uint32_t>(STG_E_CANTSAVE), 0x80030103u},
    {"ERROR_SUCCESS", static_cast<uint32_t>(ERROR_SUCCESS), 0u},
    {"ERROR_FILE_NOT_FOUND", static_cast<uint32_t>(ERROR_FILE_NOT_FOUND), 2u},
    {"ERROR_WRITE_PROTECT", static_cast<uint32_t>(ERROR_WRITE_PROTECT), 19u},
    {"ERROR_ACCESS_DENIED", static_cast<uint32_t>(ERROR_ACCESS_DENIED), 5u},
    {"ERROR_INVALID_HANDLE", static_cast<uint32_t>(ERROR_INVALID_HANDLE), 6u},
    {"ERROR_OUTOFMEMORY", static_cast<uint32_t>(ERROR_OUTOFMEMORY), 14u},
    {"ERROR_INVALID_PARAMETER", static_cast<uint32_t>(ERROR_INVALID_PARAMETER), 87u},
    {"ERROR_MORE_DATA", static_cast<uint32_t>(ERROR_MORE_DATA), 234u},
    {"ERROR_NO_MORE_ITEMS", static_cast<uint32_t>(ERROR_NO_MORE_ITEMS), 259u},
    {"ERROR_BADDB", static_cast<uint32_t>(ERROR_BADDB), 1009u},
    {"ERROR_CANTWRITE", static_cast<uint32_t>(ERROR_CANTWRITE), 1013u},
    {"FADF_AUTO", static_cast<uint32_t>(FADF_AUTO), 0x0001u},
    {"FADF_STATIC", static_cast<uint32_t>(FADF_STATIC), 0x0002u},
    {"FADF_EMBEDDED", static_cast<uint32_t>(FADF_EMBEDDED), 0x0004u},
    {"FADF_FIXEDSIZE", static_cast<uint32_t>(FADF_FIXEDSIZE), 0x0010u},
    {"FADF_HAVEIID", static_cast<uint32_t>(FADF_HAVEIID), 0x0040u},
    {"FADF_HAVEVARTYPE", static_cast<uint32_t>(FADF_HAVEVARTYPE), 0x0080u},
    {"FADF_BSTR", static_cast<uint32_t>(FADF_BSTR), 0x0100u},
    {"FADF_UNKNOWN", static_cast<uint32_t>(FADF_UNKNOWN), 0x0200u},
    {"FADF_DISPATCH", static_cast<uint32_t>(FADF_DISPATCH), 0x0400u},
    {"FADF_VARIANT", static_cast<uint32_t>(FADF_VARIANT), 0x0800u},
    {"FADF_CREATEVECTOR", static_cast<uint32_t>(FADF_CREATEVECTOR), 0x2000u},
    {"DECIMAL_NEG", static_cast<uint32_t>(DECIMAL_NEG), 0x80u},
    {"VARIANT_NOVALUEPROP", static_cast<uint32_t>(VARIANT_NOVALUEPROP), 0x01u},
    {"VARIANT_ALPHABOOL", static_cast<uint32_t>(VARIANT_ALPHABOOL), 0x02u},
    {"VARIANT_NOUSEROVERRIDE", static_cast<uint32_t>(VARIANT_NOUSEROVERRIDE), 0x04u},
    {"VARIANT_LOCALBOOL", static_cast<uint32_t>(VARIANT_LOCALBOOL), 0x10u},
    {"VT_EMPTY", static_cast<uint32_t>(VT_EMPTY), 0u},
    {"VT_NULL", static_cast<uint32_t>(VT_NULL), 1u},
    {"VT_I2", static_cast<uint32_t>(VT_I2), 2u},
    {"VT_I4", static_cast<uint32_t>(VT_I4), 3u},
    {"VT_R4", static_cast<uint32_t>(VT_R4), 4u},
    {"VT_R8", static_cast<uint32_t>(VT_R8), 5u},
    {"VT_CY", static_cast<uint32_t>(VT_CY), 6u},
    {"VT_DATE", static_cast<uint32_t>(VT_DATE), 7u},
    {"VT_BSTR", static_cast<uint32_t>(VT_BSTR), 8u},
    {"VT_DISPATCH", static_cast<uint32_t>(VT_DISPATCH), 9u},
    {"VT_ERROR", static_cast<uint32_t>(VT_ERROR), 10u},
    {"VT_BOOL", static_cast<uint32_t>(VT_BOOL), 11u},
    {"VT_VARIANT", static_cast<uint32_t>(VT_VARIANT), 12u},
    {"VT_UNKNOWN", static_cast<uint32_t>(VT_UNKNOWN), 13u},
    {"VT_DECIMAL", static_cast<uint32_t>(VT_DECIMAL), 14u},
    {"VT_I1", static_cast<uint32_t>(VT_I1), 16u},
    {"VT_UI1", static_cast<uint32_t>(VT_UI1), 17u},
    {"VT_UI2", static_cast<uint32_t>(VT_UI2), 18u},
    {"VT_UI4", static_cast<uint32_t>(VT_UI4), 19u},
    {"VT_I8", static_cast<uint32_t>(VT_I8), 20u},
    {"VT_UI8", static_cast<uint32_t>(VT_UI8), 21u},
    {"VT_INT", static_cast<uint32_t>(VT_INT), 22u},
    {"VT_UINT", static_cast<uint32_t>(VT_UINT), 23u},
    {"VT_VOID", static_cast<uint32_t>(VT_VOID), 24u},
    {"VT_HRESULT", static_cast<uint32_t>(VT_HRESULT), 25u},
    {"VT_PTR", static_cast<uint32_t>(VT_PTR), 26u},
    {"VT_SAFEARRAY", static_cast<uint32_t>(VT_SAFEARRAY), 27u},
    {"VT_USERDEFINED", static_cast<uint32_t>(VT_USERDEFINED), 29u},
    {"VT_RECORD", static_cast<uint32_t>(VT_RECORD), 36u},
    {"VT_ARRAY", static_cast<uint32_t>(VT_ARRAY), 0x2000u},
    {"VT_BYREF", static_cast<uint32_t>(VT_BYREF), 0x4000u},
    {"VT_TYPEMASK", static_cast<uint32_t>(VT_TYPEMASK), 0x0FFFu},
    {"DISPID_VALUE", static_cast<uint32_t>(DISPID_VALUE), 0u},
    {"DISPID_UNKNOWN", static_cast<uint32_t>(DISPID_UNKNOWN), static_cast<uint32_t>(-1)},
    {"DISPID_PROPERTYPUT", static_cast<uint32_t>(DISPID_PROPERTYPUT), static_cast<uint32_t>(-3)},
    {"DISPID_NEWENUM", static_cast<uint32_t>(DISPID_NEWENUM), static_cast<uint32_t>(-4)},
    {"DISPATCH_METHOD", static_cast<uint32_t>(DISPATCH_METHOD), 1u},
    {"DISPATCH_PROPERTYGET", static_cast<uint32_t>(DISPATCH_PROPERTYGET), 2u},
    {"DISPATCH_PROPERTYPUT", static_cast<uint32_t>(DISPATCH_PROPERTYPUT), 4u},
    {"DISPATCH_PROPERTYPUTREF", static_cast<uint32_t>(DISPATCH_PROPERTYPUTREF), 8u},
    {"TYPEFLAG_FCANCREATE", static_cast<uint32_t>(TYPEFLAG_FCANCREATE), 0x0002u},
    {"TYPEFLAG_FDUAL", static_cast<uint32_t>(TYPEFLAG_FDUAL), 0x0040u},
    {"TYPEFLAG_FOLEAUTOMATION", static_cast<uint32_t>(TYPEFLAG_FOLEAUTOMATION), 0x0100u},
    {"TYPEFLAG_FDISPATCHABLE", static_cast<uint32_t>(TYPEFLAG_FDISPATCHABLE), 0x1000u},
    {"PARAMFLAG_FIN", static_cast<uint32_t>(PARAMFLAG_FIN), 0x0001u},
    {"PARAMFLAG_FOUT", static_cast<uint32_t>(PARAMFLAG_FOUT), 0x0002u},
    {"PARAMFLAG_FRETVAL", static_cast<uint32_t>(PARAMFLAG_FRETVAL), 0x0008u},
    {"PARAMFLAG_FOPT", static_cast<uint32_t>(PARAMFLAG_FOPT), 0x0010u},
    {"PARAMFLAG_FHASDEFAULT", static_cast<uint32_t>(PARAMFLAG_FHASDEFAULT), 0x0020u},
    {"IMPLTYPEFLAG_FDEFAULT", static_cast<uint32_t>(IMPLTYPEFLAG_FDEFAULT), 0x1u},
    {"TKIND_ENUM", static_cast<uint32_t>(TKIND_ENUM), 0u},
    {"TKIND_RECORD", static_cast<uint32_t>(TKIND_RECORD), 1u},
    {"TKIND_MODULE", static_cast<uint32_t>(TKIND_MODULE), 2u},
    {"TKIND_INTERFACE", static_cast<uint32_t>(TKIND_INTERFACE), 3u},
    {"TKIND_DISPATCH", static_cast<uint32_t>(TKIND_DISPATCH), 4u},
    {"TKIND_COCLASS", static_cast<uint32_t>(TKIND_COCLASS), 5u},
    {"TKIND_ALIAS", static_cast<uint32_t>(TKIND_ALIAS), 6u},
    {"TKIND_UNION", static_cast<uint32_t>(TKIND_UNION), 7u},
    {"INVOKE_FUNC", static_cast<uint32_t>(INVOKE_FUNC), 1u},
    {"INVOKE_PROPERTYGET", static_cast<uint32_t>(INVOKE_PROPERTYGET), 2u},
    {"INVOKE_PROPERTYPUT", static_cast<uint32_t>(INVOKE_PROPERTYPUT), 4u},
    {"INVOKE_PROPERTYPUTREF", static_cast<uint32_t>(INVOKE_PROPERTYPUTREF), 8u},
    {"FUNC_VIRTUAL", static_cast<uint32_t>(FUNC_VIRTUAL), 0u},
    {"FUNC_PUREVIRTUAL", static_cast<uint32_t>(FUNC_PUREVIRTUAL), 1u},
    {"FUNC_NONVIRTUAL", static_cast<uint32_t>(FUNC_NONVIRTUAL), 2u},
    {"FUNC_STATIC", static_cast<uint32_t>(FUNC_STATIC), 3u},
    {"FUNC_DISPATCH", static_cast<uint32_t>(FUNC_DISPATCH), 4u},
    {"CLSCTX_INPROC_SERVER", static_cast<uint32_t>(CLSCTX_INPROC_SERVER), 1u},
    {"DLL_PROCESS_DETACH", static_cast<uint32_t>(DLL_PROCESS_DETACH), 0u},
    {"DLL_PROCESS_ATTACH", static_cast<uint32_t>(DLL_PROCESS_ATTACH), 1u},
    {"COINIT_MULTITHREADED", static_cast<uint32_t>(COINIT_MULTITHREADED), 0u},
    {"COINIT_APARTMENTTHREADED", static_cast<uint32_t>(COINIT_APARTMENTTHREADED), 2u},
    {"MAX_PATH", static_cast<uint32_t>(MAX_PATH), 260u},
    {"REG_NONE", static_cast<uint32_t>(REG_NONE), 0u},
    {"REG_SZ", static_cast<uint32_t>(REG_SZ), 1u},
    {"REG_EXPAND_SZ", static_cast<uint32_t>(REG_EXPAND_SZ), 2u},
    {"REG_BINARY", static_cast<uint32_t>(REG_BINARY), 3u},
    {"REG_DWORD", static_cast<uint32_t>(REG_DWORD), 4u},
    {"REG_OPTION_NON_VOLATILE", static_cast<uint32_t>(REG_OPTION_NON_VOLATILE), 0u},
    {"REG_CREATED_NEW_KEY", static_cast<uint32_t>(REG_CREATED_NEW_KEY), 1u},
    {"REG_OPENED_EXISTING_KEY", static_cast<uint32_t>(REG_OPENED_EXISTING_KEY), 2u},
    {"KEY_READ", static_cast<uint32_t>(KEY_READ), 0x00020019u},
    {"KEY_WRITE", static_cast<uint32_t>(KEY_WRITE), 0x00020006u},
    {"KEY_ALL_ACCESS", static_cast<uint32_t>(KEY_ALL_ACCESS), 0x000F003Fu},
    {"STGM_READ", static_cast<uint32_t>(STGM_READ), 0x00000000u},
    {"STGM_WRITE", static_cast<uint32_t>(STGM_WRITE), 0x00000001u},
    {"STGM_READWRITE", static_cast<uint32_t>(STGM_READWRITE), 0x00000002u},
    {"STGM_CREATE", static_cast<uint32_t>(STGM_CREATE), 0x00001000u},
    {"STREAM_SEEK_SET", static_cast<uint32_t>(STREAM_SEEK_SET), 0u},
    {"STREAM_SEEK_CUR", static_cast<uint32_t>(STREAM_SEEK_CUR), 1u},
    {"STREAM_SEEK_END", static_cast<uint32_t>(STREAM_SEEK_END), 2u},
    {"STGTY_STORAGE", static_cast<uint32_t>(STGTY_STORAGE), 1u},
    {"STGTY_STREAM", static_cast<uint32_t>(STGTY_STREAM), 2u},
    {"STGTY_LOCKBYTES", static_cast<uint32_t>(STGTY_LOCKBYTES), 3u},
    {"STATFLAG_DEFAULT", static_cast<uint32_t>(STATFLAG_DEFAULT), 0u},
    {"STATFLAG_NONAME", static_cast<uint32_t>(STATFLAG_NONAME), 1u},
    {"STGC_DEFAULT", static_cast<uint32_t>(STGC_DEFAULT), 0u},
    {"CP_ACP", static_cast<uint32_t>(CP_ACP), 0u},
    {"CP_UTF8", static_cast<uint32_t>(CP_UTF8), 65001u},
    {"VARIANT_TRUE", static_cast<uint32_t>(VARIANT_TRUE), 0xFFFFFFFFu},
    {"VARIANT_FALSE", static_cast<uint32_t>(VARIANT_FALSE), 0u},
    {"CC_CDECL", static_cast<uint32_t>(CC_CDECL), 1u},
    {"CC_STDCALL", static_cast<uint32_t>(CC_STDCALL), 4u},
    {"SYS_WIN16", static_cast<uint32_t>(SYS_WIN16), 0u},
    {"SYS_WIN32", static_cast<uint32_t>(SYS_WIN32), 1u},
    {"SYS_MAC", static_cast<uint32_t>(SYS_MAC), 2u},
    {"SYS_WIN64", static_cast<uint32_t>(SYS_WIN64), 3u},
    {"DESCKIND_NONE", static_cast<uint32_t>(DESCKIND_NONE), 0u},
    {"DESCKIND_FUNCDESC", static_cast<uint32_t>(DESCKIND_FUNCDESC), 1u},
    {"DESCKIND_VARDESC", static_cast<uint32_t>(DESCKIND_VARDESC), 2u},
    {"REG_MULTI_SZ", static_cast<uint32_t>(REG_MULTI_SZ), 7u},
    {"KEY_QUERY_VALUE", static_cast<uint32_t>(KEY_QUERY_VALUE), 0x0001u},
    {"KEY_SET_VALUE", static_cast<uint32_t>(KEY_SET_VALUE), 0x0002u},
    {"KEY_CREATE_SUB_KEY", static_cast<uint32_t>(KEY_CREATE_SUB_KEY), 0x0004u},
    {"KEY_ENUMERATE_SUB_KEYS", static_cast<uint32_t>(KEY_ENUMERATE_SUB_KEYS), 0x0008u},
    {"MAXIMUM_ALLOWED", static_cast<uint32_t>(MAXIMUM_ALLOWED), 0x02000000u},
    {"NOERROR", static_cast<uint32_t>(NOERROR), 0u},
    {"ERROR_DISK_FULL", static_cast<uint32_t>(ERROR_DISK_FULL), 112u},
    {"ERROR_CANTREAD", static_cast<uint32_t>(ERROR_CANTREAD), 1012u},
    {"ERROR_KEY_DELETED", static_cast<uint32_t>(ERROR_KEY_DELETED), 1018u},
    {"MB_ERR_INVALID_CHARS", static_cast<uint32_t>(MB_ERR_INVALID_CHARS), 0x0008u},
    {"WC_ERR_INVALID_CHARS", static_cast<uint32_t>(WC_ERR_INVALID_CHARS), 0x0080u},
};

TEST(PublishedValues, AreThePlatforms) {
  for (const Published& row : kPublished) EXPECT_EQ(row.value, row.published) << row.name;
}

struct PublishedId {
  const OLECHAR* text;
  const IID& id;
};

const PublishedId kIds[] = {
    {OLESTR("{00000000-0000-0000-0000-000000000000}"), GUID_NULL},
    {OLESTR("{00000000-0000-0000-C000-000000000046}"), IID_IUnknown},
    {OLESTR("{00000001-0000-0000-C000-000000000046}"), IID_IClassFactory},
    {OLESTR("{0000000C-0000-0000-C000-000000000046}"), IID_IStream},
    {OLESTR("{0C733A30-2A1C-11CE-ADE5-00AA0044773D}"), IID_ISequentialStream},
    {OLESTR("{00020400-0000-0000-C000-000000000046}"), IID_IDispatch},
    {OLESTR("{00020401-0000-0000-C000-000000000046}"), IID_ITypeInfo},
    {OLESTR("{00020402-0000-0000-C000-000000000046}"), IID_ITypeLib},
    {OLESTR("{00020403-0000-0000-C000-000000000046}"), IID_ITypeComp},
    {OLESTR("{1CF2B120-547D-101B-8E65-08002B2BD119}"), IID_IErrorInfo},
    {OLESTR("{22F03340-547D-101B-8E65-08002B2BD119}"), IID_ICreateErrorInfo},
    {OLESTR("{DF0B3D60-548F-101B-8E65-08002B2BD119}"), IID_ISupportErrorInfo},
};

TEST(PublishedValues, IdentifiersAreThePlatforms) {
  for (const PublishedId& row : kIds) {
    OLECHAR text[40] = {};
    ASSERT_EQ(StringFromGUID2(row.id, text, 40), 39);
    EXPECT_EQ(std::basic_string<OLECHAR>(text), row.text) << &row - kIds;
  }
}

TEST(PublishedValues, IdentifiersAreEqualInAllTheirParts) {
  const GUID id = {0x01234567, 0x89AB, 0xCDEF, {1, 2, 3, 4, 5, 6, 7, 8}};
  EXPECT_TRUE(IsEqualGUID(id, GUID(id)));
  GUID others[11] = {id, id, id, id, id, id, id, id, id, id, id};
  ++others[0].Data1;
  ++others[1].Data2;
  ++others[2].Data3;
  for (int i = 0; i < 8; ++i) ++others[3 + i].Data4[i];
  for (const GUID& other : others) EXPECT_FALSE(IsEqualGUID(id, other)) << &other - others;
}

TEST(PublishedValues, ErrorNumbersBecomeStatuses) {
  EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_SUCCESS), S_OK);
  EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED), E_ACCESSDENIED);
  EXPECT_EQ(static_cast<uint32_t>(HRESULT_FROM_WIN32(0x12345)), 0x80072345u);
  // Statuses stay.
  EXPECT_EQ(HRESULT_FROM_WIN32(static_cast<DWORD>(E_NOTIMPL)), E_NOTIMPL);
}

}  // namespace
