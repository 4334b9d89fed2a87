// Copies of values and of references to them; conversions through references and of arrays.
#include <cstring>
#include <vector>

#include "printing.h"
#include "sections.h"
#include "values.h"

namespace mirolta::value_parity {

namespace {

std::vector<VARIANT> Values() {
  // clang-format off
  std::vector<VARIANT> values = {
      Of(VT_EMPTY), Of(VT_NULL),
      Integer(VT_I1, -3), Integer(VT_UI1, 200), Integer(VT_I2, -300), Integer(VT_UI2, 60000),
      Integer(VT_I4, -70000), Integer(VT_UI4, 4000000000ll),
      Integer(VT_I8, -5000000000ll), Integer(VT_UI8, 5000000000ll),
      Integer(VT_INT, -1), Integer(VT_UINT, 1), Real(VT_R4, 1.5), Real(VT_R8, -2.25),
      Integer(VT_BOOL, -1), Integer(VT_CY, 12345), Real(VT_DATE, 36526.5), Dec(3, true, 1, 2),
      Integer(VT_ERROR, -7), Words(OLESTR("text")), Words(OLESTR("")),
      Of(VT_BSTR), Of(VT_DISPATCH), Of(VT_UNKNOWN)};
  // clang-format on
  VARIANT text = Of(VT_BSTR);
  text.bstrVal = SysAllocStringLen(OLESTR("a\0b\0"), 4);
  values.push_back(text);
  text.bstrVal = SysAllocStringByteLen("odd", 3);
  values.push_back(text);
  VARIANT array = Of(VT_ARRAY | VT_UI1);
  array.parray = SafeArrayCreateVector(VT_UI1, -5, 7);
  values.push_back(array);
  values.push_back(Of(VT_ARRAY | VT_BSTR));
  return values;
}

// Copies and converts references to the value, and references to those.
void ReferencesTo(VARIANT* value, VARIANT* to) {
  const std::string what = Show(*value);
  VARIANT direct = Reference(value);
  VARIANT twice = ReferenceToVariant(&direct);
  VARIANT thrice = ReferenceToVariant(&twice);
  HRESULT status = VariantCopy(to, &direct);
  Print("reference " + what, status, *to);
  status = VariantCopyInd(to, &direct);
  Print("referenceind " + what, status, *to);
  status = VariantCopyInd(to, &twice);
  Print("twice " + what, status, *to);
  status = VariantCopyInd(to, &thrice);
  Print("thrice " + what, status, *to);
  struct Row {
    const char* name;
    VARIANT* from;
  };
  for (const VARTYPE type : {VT_I4, VT_BSTR, VT_R8, VT_VARIANT}) {
    VARIANT changed = Sentinel();
    for (const Row& row :
         {Row{"reference ", &direct}, Row{"twice ", &twice}, Row{"thrice ", &thrice}}) {
      status = VariantChangeTypeEx(&changed, row.from, kEnglish, 0, type);
      Print("change " + (row.name + what) + " -> " + Decimal(type), status, changed);
      VariantClear(&changed);
    }
  }
  VARIANT same = direct;
  status = VariantCopyInd(&same, &same);
  Print("in place " + what, status, same);
  VariantClear(&same);
  same = direct;
  status = VariantChangeTypeEx(&same, &same, kEnglish, 0, VT_BSTR);
  Print("change in place " + what, status, same);
  VariantClear(&same);
  VARIANT to_reference = Sentinel();
  status = VariantChangeTypeEx(&to_reference, &direct, kEnglish, 0, direct.vt);
  Print("to the same reference " + what, status, to_reference);
}

// Copies the value, and what refers to it as VT_VARIANT, over each other's result.
void CopiesOf(VARIANT* value) {
  const std::string what = Show(*value);
  VARIANT to = Sentinel();
  HRESULT status = VariantCopy(&to, value);
  Print("copy " + what, status, to);
  status = VariantCopyInd(&to, value);
  Print("copyind " + what, status, to);
  status = VariantCopy(&to, &to);
  Print("itself " + what, status, to);
  status = VariantCopyInd(&to, &to);
  Print("itselfind " + what, status, to);
  VARIANT in_variant = ReferenceToVariant(value);
  status = VariantCopyInd(&to, &in_variant);
  Print("variant " + what, status, to);
  if (value->vt > VT_NULL) ReferencesTo(value, &to);
  for (const VARTYPE type : {VT_BSTR, VT_I4, VT_EMPTY, VT_NULL}) {
    VARIANT copy = Of(VT_EMPTY);
    VariantCopy(&copy, value);
    status = VariantChangeTypeEx(&copy, &copy, kEnglish, 0, type);
    Print("in place " + what + " -> " + Decimal(type), status, copy);
    VariantClear(&copy);
  }
}

void NullReferences() {
  for (const int type : {+VT_I4, +VT_BSTR, +VT_VARIANT, VT_ARRAY | VT_I4, +VT_DISPATCH}) {
    VARIANT null_reference = Of(static_cast<VARTYPE>(type | VT_BYREF));
    VARIANT to = Sentinel();
    const HRESULT status = VariantCopy(&to, &null_reference);
    Print("null reference copy " + Decimal(type), status, to);
  }
}

// Arrays to texts and back, locked ones too.
void ArraysAndTexts() {
  for (const VARTYPE type : {VT_UI1, VT_I1, VT_I2, VT_UI2, VT_BSTR, VT_VARIANT}) {
    SAFEARRAYBOUND bounds[2] = {{3, -1}, {2, 5}};
    for (const UINT dimensions : {1u, 2u}) {
      VARIANT array = Of(static_cast<VARTYPE>(VT_ARRAY | type));
      array.parray = SafeArrayCreate(type, dimensions, bounds);
      if (type == VT_UI1) memset(array.parray->pvData, 65, 3 * dimensions);
      for (int locked = 0; locked < 2; ++locked) {
        Change(array, 0, VT_BSTR);
        Change(array, 0, VT_ARRAY | VT_UI1);
        Change(array, 0, VT_ARRAY | VT_VARIANT);
        SafeArrayLock(array.parray);
      }
    }
    for (BSTR text : {SysAllocString(OLESTR("text")), SysAllocString(nullptr),
                      SysAllocString(OLESTR("")), SysAllocStringByteLen("odd", 3)}) {
      VARIANT from = Of(VT_BSTR);
      from.bstrVal = text;
      Change(from, 0, static_cast<VARTYPE>(VT_ARRAY | type));
    }
  }
  VARIANT no_array = Of(VT_ARRAY | VT_UI1);
  Change(no_array, 0, VT_BSTR);
}

// What a copy or a conversion does to a value that cannot be cleared.
void OverWhatCannotBeCleared() {
  VARIANT array = Of(VT_ARRAY | VT_UI1);
  array.parray = SafeArrayCreateVector(VT_UI1, 0, 3);
  SafeArrayLock(array.parray);
  VARIANT one = Integer(VT_I4, 1);
  HRESULT status = VariantClear(&array);
  Print("clear locked", status, array);
  status = VariantCopy(&array, &one);
  Print("copy over locked", status, array);
  status = VariantCopyInd(&array, &one);
  Print("copyind over locked", status, array);
  status = VariantChangeType(&array, &one, 0, VT_BSTR);
  Print("change over locked", status, array);
  VARIANT invalid = Of(15);
  status = VariantCopy(&invalid, &one);
  Print("copy over an invalid tag", status, invalid);
  invalid = Of(15);
  status = VariantChangeType(&invalid, &one, 0, VT_BSTR);
  Print("change over an invalid tag", status, invalid);
}

}  // namespace

void Copies() {
  Section("copy");
  std::vector<VARIANT> values = Values();
  for (VARIANT& value : values) CopiesOf(&value);
  NullReferences();
  ArraysAndTexts();
  OverWhatCannotBeCleared();
}

}  // namespace mirolta::value_parity
