// SPDX-License-Identifier: MIT
// Automation values: VARIANT, SAFEARRAY, DECIMAL, BSTR, and the operations on them.
#pragma once

#include "mirolta/unknown.h"

typedef enum VARENUM MIROLTA_ENUM(VARTYPE){
    VT_EMPTY = 0,    VT_NULL = 1,       VT_I2 = 2,         VT_I4 = 3,
    VT_R4 = 4,       VT_R8 = 5,         VT_CY = 6,         VT_DATE = 7,
    VT_BSTR = 8,     VT_DISPATCH = 9,   VT_ERROR = 10,     VT_BOOL = 11,
    VT_VARIANT = 12, VT_UNKNOWN = 13,   VT_DECIMAL = 14,   VT_I1 = 16,
    VT_UI1 = 17,     VT_UI2 = 18,       VT_UI4 = 19,       VT_I8 = 20,
    VT_UI8 = 21,     VT_INT = 22,       VT_UINT = 23,      VT_VOID = 24,
    VT_HRESULT = 25, VT_PTR = 26,       VT_SAFEARRAY = 27, VT_USERDEFINED = 29,
    VT_RECORD = 36,  VT_ARRAY = 0x2000, VT_BYREF = 0x4000, VT_TYPEMASK = 0x0FFF,
} VARENUM;

typedef struct SAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
} SAFEARRAYBOUND;

// rgsabound holds the rightmost dimension first; more bounds follow the structure in memory.
typedef struct SAFEARRAY {
  USHORT cDims;
  USHORT fFeatures;
  ULONG cbElements;
  ULONG cLocks;
  PVOID pvData;
  SAFEARRAYBOUND rgsabound[1];
} SAFEARRAY;
typedef SAFEARRAY* LPSAFEARRAY;

MIROLTA_CONSTANT(USHORT, FADF_AUTO, 0x0001);
MIROLTA_CONSTANT(USHORT, FADF_STATIC, 0x0002);
MIROLTA_CONSTANT(USHORT, FADF_EMBEDDED, 0x0004);
MIROLTA_CONSTANT(USHORT, FADF_FIXEDSIZE, 0x0010);
MIROLTA_CONSTANT(USHORT, FADF_HAVEIID, 0x0040);
MIROLTA_CONSTANT(USHORT, FADF_HAVEVARTYPE, 0x0080);
MIROLTA_CONSTANT(USHORT, FADF_BSTR, 0x0100);
MIROLTA_CONSTANT(USHORT, FADF_UNKNOWN, 0x0200);
MIROLTA_CONSTANT(USHORT, FADF_DISPATCH, 0x0400);
MIROLTA_CONSTANT(USHORT, FADF_VARIANT, 0x0800);
MIROLTA_CONSTANT(USHORT, FADF_CREATEVECTOR, 0x2000);

// sign 0x80 is minus; the value is Hi32:Mid32:Lo32 / 10^scale.
typedef struct DECIMAL {
  USHORT wReserved;
  __extension__ union {
    struct {
      BYTE scale;
      BYTE sign;
    };
    USHORT signscale;
  };
  ULONG Hi32;
  __extension__ union {
    struct {
      ULONG Lo32;
      ULONG Mid32;
    };
    ULONGLONG Lo64;
  };
} DECIMAL;
MIROLTA_CONSTANT(BYTE, DECIMAL_NEG, 0x80);

typedef struct IDispatch IDispatch;

typedef struct VARIANT VARIANT;
struct VARIANT {
  __extension__ union {
    struct {
      VARTYPE vt;
      WORD wReserved1;
      WORD wReserved2;
      WORD wReserved3;
      union {
        LONGLONG llVal;
        LONG lVal;
        BYTE bVal;
        SHORT iVal;
        FLOAT fltVal;
        DOUBLE dblVal;
        VARIANT_BOOL boolVal;
        SCODE scode;
        CY cyVal;
        DATE date;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        SAFEARRAY* parray;
        BYTE* pbVal;
        SHORT* piVal;
        LONG* plVal;
        LONGLONG* pllVal;
        FLOAT* pfltVal;
        DOUBLE* pdblVal;
        VARIANT_BOOL* pboolVal;
        SCODE* pscode;
        CY* pcyVal;
        DATE* pdate;
        BSTR* pbstrVal;
        IUnknown** ppunkVal;
        IDispatch** ppdispVal;
        SAFEARRAY** pparray;
        VARIANT* pvarVal;
        PVOID byref;
        CHAR cVal;
        USHORT uiVal;
        ULONG ulVal;
        ULONGLONG ullVal;
        INT intVal;
        UINT uintVal;
        DECIMAL* pdecVal;
        CHAR* pcVal;
        USHORT* puiVal;
        ULONG* pulVal;
        ULONGLONG* pullVal;
        INT* pintVal;
        UINT* puintVal;
        struct {
          PVOID pvRecord;
          PVOID pRecInfo;
        };
      };
    };
    DECIMAL decVal;  // its reserved word is the type tag
  };
};
typedef VARIANT VARIANTARG;
typedef VARIANT* LPVARIANT;

#ifdef __cplusplus
static_assert(sizeof(VARIANT) == 8 + 2 * sizeof(void*), "the platform's layout");
static_assert(sizeof(DECIMAL) == 16, "the platform's layout");
#endif

#define V_VT(v) ((v)->vt)
#define V_ISBYREF(v) (V_VT(v) & VT_BYREF)
#define V_ISARRAY(v) (V_VT(v) & VT_ARRAY)
#define V_BSTR(v) ((v)->bstrVal)
#define V_I4(v) ((v)->lVal)
#define V_I2(v) ((v)->iVal)
#define V_I1(v) ((v)->cVal)
#define V_I8(v) ((v)->llVal)
#define V_UI1(v) ((v)->bVal)
#define V_UI2(v) ((v)->uiVal)
#define V_UI4(v) ((v)->ulVal)
#define V_UI8(v) ((v)->ullVal)
#define V_INT(v) ((v)->intVal)
#define V_UINT(v) ((v)->uintVal)
#define V_R4(v) ((v)->fltVal)
#define V_R8(v) ((v)->dblVal)
#define V_CY(v) ((v)->cyVal)
#define V_DATE(v) ((v)->date)
#define V_BOOL(v) ((v)->boolVal)
#define V_ERROR(v) ((v)->scode)
#define V_DECIMAL(v) ((v)->decVal)
#define V_UNKNOWN(v) ((v)->punkVal)
#define V_DISPATCH(v) ((v)->pdispVal)
#define V_ARRAY(v) ((v)->parray)
#define V_VARIANTREF(v) ((v)->pvarVal)
#define V_BYREF(v) ((v)->byref)
#define V_BSTRREF(v) ((v)->pbstrVal)
#define V_ARRAYREF(v) ((v)->pparray)

// VariantChangeTypeEx flags.
MIROLTA_CONSTANT(USHORT, VARIANT_NOVALUEPROP, 0x01);
MIROLTA_CONSTANT(USHORT, VARIANT_ALPHABOOL, 0x02);
MIROLTA_CONSTANT(USHORT, VARIANT_NOUSEROVERRIDE, 0x04);
MIROLTA_CONSTANT(USHORT, VARIANT_LOCALBOOL, 0x10);

MIROLTA_RUNTIME BSTR SysAllocString(const OLECHAR* text);
MIROLTA_RUNTIME BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
MIROLTA_RUNTIME BSTR SysAllocStringByteLen(LPCSTR bytes, UINT length);
MIROLTA_RUNTIME INT SysReAllocString(BSTR* text, const OLECHAR* from);
MIROLTA_RUNTIME INT SysReAllocStringLen(BSTR* text, const OLECHAR* from, UINT length);
MIROLTA_RUNTIME void SysFreeString(BSTR text);
MIROLTA_RUNTIME UINT SysStringLen(BSTR text);
MIROLTA_RUNTIME UINT SysStringByteLen(BSTR text);

MIROLTA_RUNTIME void VariantInit(VARIANT* value);
MIROLTA_RUNTIME HRESULT VariantClear(VARIANT* value);
MIROLTA_RUNTIME HRESULT VariantCopy(VARIANT* to, const VARIANT* from);
MIROLTA_RUNTIME HRESULT VariantCopyInd(VARIANT* to, const VARIANT* from);
MIROLTA_RUNTIME HRESULT VariantChangeType(VARIANT* to, const VARIANT* from, USHORT flags,
                                          VARTYPE type);
MIROLTA_RUNTIME HRESULT VariantChangeTypeEx(VARIANT* to, const VARIANT* from, LCID locale,
                                            USHORT flags, VARTYPE type);

MIROLTA_RUNTIME SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);
MIROLTA_RUNTIME SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lower, ULONG elements);
MIROLTA_RUNTIME HRESULT SafeArrayDestroy(SAFEARRAY* array);
MIROLTA_RUNTIME HRESULT SafeArrayCopy(SAFEARRAY* from, SAFEARRAY** to);
MIROLTA_RUNTIME HRESULT SafeArrayLock(SAFEARRAY* array);
MIROLTA_RUNTIME HRESULT SafeArrayUnlock(SAFEARRAY* array);
MIROLTA_RUNTIME HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
MIROLTA_RUNTIME HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
MIROLTA_RUNTIME UINT SafeArrayGetDim(SAFEARRAY* array);
MIROLTA_RUNTIME UINT SafeArrayGetElemsize(SAFEARRAY* array);
MIROLTA_RUNTIME HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
MIROLTA_RUNTIME HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
MIROLTA_RUNTIME HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
MIROLTA_RUNTIME HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* element);
MIROLTA_RUNTIME HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* element);
MIROLTA_RUNTIME HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, LONG* indices, void** element);
