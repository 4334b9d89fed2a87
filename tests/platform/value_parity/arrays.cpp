// Arrays: types, bounds, elements, locks and copies.
#include <climits>
#include <vector>

#include "object.h"
#include "printing.h"
#include "sections.h"
#include "values.h"

namespace mirolta::value_parity {
namespace {

void Describe(const std::string& what, SAFEARRAY* array) {
  Print(what, ShowArray(array));
}

void Elements(const std::string& what, SAFEARRAY* array,
              const std::vector<std::vector<LONG>>& places) {
  for (std::vector<LONG> place : places) {
    std::string name = what;
    for (const LONG index : place) name += " " + Decimal(index);
    void* address = nullptr;
    const HRESULT status = SafeArrayPtrOfIndex(array, place.data(), &address);
    Print(name, Status(status) + " " +
                    (FAILED(status) ? std::string("-")
                                    : Decimal(static_cast<BYTE*>(address) -
                                              static_cast<BYTE*>(array->pvData))));
  }
}

}  // namespace

void Arrays() {
  Section("array");
  for (unsigned type = 0; type < 80; ++type) {
    SAFEARRAY* array = SafeArrayCreateVector(static_cast<VARTYPE>(type), 1, 2);
    Describe("vector of " + Decimal(type), array);
    SafeArrayDestroy(array);
    SAFEARRAYBOUND bound = {2, -7};
    array = SafeArrayCreate(static_cast<VARTYPE>(type), 1, &bound);
    Describe("array of " + Decimal(type), array);
    SAFEARRAY* copy = nullptr;
    const HRESULT status = SafeArrayCopy(array, &copy);
    Describe("copy of " + Decimal(type) + " " + Status(status), copy);
    SafeArrayDestroy(copy);
    SafeArrayDestroy(array);
  }
  SAFEARRAYBOUND bounds[3] = {{2, 10}, {3, -1}, {4, 0}};
  SAFEARRAY* array = SafeArrayCreate(VT_I4, 3, bounds);
  Describe("three dimensions", array);
  Print("stored bounds", Decimal(array->rgsabound[0].cElements) + " " +
                             Decimal(array->rgsabound[0].lLbound) + " " + Decimal(array->cDims) +
                             " " + Decimal(SafeArrayGetDim(array)));
  Elements("element", array,
           {{10, -1, 0},
            {11, -1, 0},
            {10, 0, 0},
            {10, 1, 0},
            {10, -1, 1},
            {11, 1, 3},
            {9, -1, 0},
            {12, -1, 0},
            {10, -2, 0},
            {10, 2, 0},
            {10, -1, -1},
            {10, -1, 4},
            {INT_MAX, -1, 0},
            {INT_MIN, -1, 0}});
  for (UINT dimension = 0; dimension < 5; ++dimension) {
    LONG lower = 99;
    LONG upper = 99;
    const HRESULT first = SafeArrayGetLBound(array, dimension, &lower);
    const HRESULT second = SafeArrayGetUBound(array, dimension, &upper);
    Print("bounds " + Decimal(dimension),
          Status(first) + " " + Decimal(lower) + " " + Status(second) + " " + Decimal(upper));
  }
  LONG place[3] = {11, 1, 3};
  LONG value = 1234567;
  Print("put", Status(SafeArrayPutElement(array, place, &value)));
  value = 0;
  HRESULT status = SafeArrayGetElement(array, place, &value);
  Print("get", Status(status) + " " + Decimal(value));
  place[0] = 12;
  Print("put outside",
        Status(SafeArrayPutElement(array, place, &value)) + " locks " + Decimal(array->cLocks));
  Print("get outside",
        Status(SafeArrayGetElement(array, place, &value)) + " locks " + Decimal(array->cLocks));
  void* data = nullptr;
  Print("lock", Status(SafeArrayLock(array)) + " " + Decimal(array->cLocks));
  Print("access", Status(SafeArrayAccessData(array, &data)) + " " + Decimal(array->cLocks) + " " +
                      Decimal(data == array->pvData));
  Print("destroy locked", Status(SafeArrayDestroy(array)));
  SAFEARRAY* copy = nullptr;
  status = SafeArrayCopy(array, &copy);
  Describe("copy locked " + Status(status), copy);
  Elements("copied element", copy, {{11, 1, 3}});
  SafeArrayDestroy(copy);
  Print("unaccess", Status(SafeArrayUnaccessData(array)) + " " + Decimal(array->cLocks));
  Print("unlock", Status(SafeArrayUnlock(array)) + " " + Decimal(array->cLocks));
  Print("unlock too often", Status(SafeArrayUnlock(array)) + " " + Decimal(array->cLocks));
  Print("destroy", Status(SafeArrayDestroy(array)));

  for (const ULONG count : {0u, 1u, 5u}) {
    for (const LONG lower : {0, 1, -1, INT_MIN, INT_MAX}) {
      SAFEARRAYBOUND bound = {count, lower};
      array = SafeArrayCreate(VT_UI1, 1, &bound);
      Describe("count " + Decimal(count) + " from " + Decimal(lower), array);
      if (array != nullptr) {
        Elements("  element", array, {{lower}});
        SafeArrayDestroy(array);
      }
    }
  }
  SAFEARRAYBOUND huge[2] = {{0x10000, 0}, {0x10000, 0}};
  Describe("too large", SafeArrayCreate(VT_I4, 2, huge));
  Describe("too large bytes", SafeArrayCreate(VT_UI1, 2, huge));
  Describe("no dimensions", SafeArrayCreate(VT_I4, 0, bounds));
  SAFEARRAYBOUND with_empty[2] = {{0, 3}, {2, 1}};
  array = SafeArrayCreate(VT_I4, 2, with_empty);
  Describe("an empty dimension", array);
  SafeArrayDestroy(array);

  array = SafeArrayCreateVector(VT_BSTR, 0, 3);
  BSTR text = SysAllocStringLen(OLESTR("x\0y"), 3);
  LONG index = 1;
  Print("put text", Status(SafeArrayPutElement(array, &index, text)));
  Print("put text again", Status(SafeArrayPutElement(array, &index, text)));
  SysFreeString(text);
  text = nullptr;
  status = SafeArrayGetElement(array, &index, &text);
  Print("get text", Status(status) + " " + Quoted(text));
  SysFreeString(text);
  index = 2;
  text = SysAllocString(OLESTR("former"));
  BSTR former = text;
  status = SafeArrayGetElement(array, &index, &text);
  Print("get null text", Status(status) + " " + Quoted(text));
  SysFreeString(former);
  Print("put null text", Status(SafeArrayPutElement(array, &index, nullptr)));
  status = SafeArrayCopy(array, &copy);
  index = 1;
  status = SafeArrayGetElement(copy, &index, &text);
  Print("text of the copy", Status(status) + " " + Quoted(text));
  SysFreeString(text);
  SafeArrayDestroy(copy);
  SafeArrayDestroy(array);

  array = SafeArrayCreateVector(VT_VARIANT, 0, 2);
  VARIANT element = Words(OLESTR("in a value"));
  index = 0;
  Print("put value", Status(SafeArrayPutElement(array, &index, &element)));
  VariantClear(&element);
  element = Of(15);
  Print("put invalid value", Status(SafeArrayPutElement(array, &index, &element)));
  element = Of(VT_EMPTY);
  status = SafeArrayGetElement(array, &index, &element);
  Print("get value", status, element);
  VariantClear(&element);
  element = Integer(VT_I4, 1);
  VARIANT reference = Reference(&element);
  Print("put reference", Status(SafeArrayPutElement(array, &index, &reference)));
  VARIANT read = Of(VT_EMPTY);
  status = SafeArrayGetElement(array, &index, &read);
  Print("get reference", status, read);
  VARIANT inner = Of(VT_ARRAY | VT_UI1);
  inner.parray = SafeArrayCreateVector(VT_UI1, 0, 2);
  Print("put array", Status(SafeArrayPutElement(array, &index, &inner)));
  SafeArrayDestroy(inner.parray);
  Print("destroy values", Status(SafeArrayDestroy(array)));

  Object object;
  for (const VARTYPE type : {VT_UNKNOWN, VT_DISPATCH}) {
    array = SafeArrayCreateVector(type, 0, 2);
    index = 0;
    Print("put object",
          Status(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&object))) + " " +
              Decimal(object.references));
    Print("put object again",
          Status(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&object))) + " " +
              Decimal(object.references));
    IUnknown* found = nullptr;
    status = SafeArrayGetElement(array, &index, &found);
    Print("get object",
          Status(status) + " " + Decimal(found == &object) + " " + Decimal(object.references));
    if (found != nullptr) found->Release();
    status = SafeArrayCopy(array, &copy);
    Print("copy objects", Status(status) + " " + Decimal(object.references));
    SafeArrayDestroy(copy);
    Print("put no object",
          Status(SafeArrayPutElement(array, &index, nullptr)) + " " + Decimal(object.references));
    SafeArrayDestroy(array);
    Print("after objects", Decimal(object.references));
  }

  Print("null dim",
        Decimal(SafeArrayGetDim(nullptr)) + " " + Decimal(SafeArrayGetElemsize(nullptr)));
  LONG bound = 5;
  VARTYPE vartype = 5;
  Print("null", Status(SafeArrayDestroy(nullptr)) + " " + Status(SafeArrayLock(nullptr)) + " " +
                    Status(SafeArrayUnlock(nullptr)) + " " +
                    Status(SafeArrayGetLBound(nullptr, 1, &bound)) + " " +
                    Status(SafeArrayGetUBound(nullptr, 1, &bound)) + " " +
                    Status(SafeArrayGetVartype(nullptr, &vartype)) + " " +
                    Status(SafeArrayAccessData(nullptr, &data)) + " " +
                    Status(SafeArrayUnaccessData(nullptr)) + " " +
                    Status(SafeArrayPtrOfIndex(nullptr, &bound, &data)) + " " +
                    Status(SafeArrayGetElement(nullptr, &bound, &data)) + " " +
                    Status(SafeArrayPutElement(nullptr, &bound, &data)));
  copy = array;
  status = SafeArrayCopy(nullptr, &copy);
  Print("copy null", Status(status) + " " + Decimal(copy == nullptr));
}

}  // namespace mirolta::value_parity
