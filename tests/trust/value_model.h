// What a value is to the members by the rules of automation, worked out from its type and content
// alone: what references and objects stand for, and which number, text or bytes it holds. A part of
// the model of statuses (status_model.h), and as independent of module and runtime.
#pragma once

#include "fake_object.h"
#include "member_calls.h"

namespace mirolta::test {

// A status, and what there is if it is a success.
template <typename T>
struct Result {
  HRESULT status;
  T value = T();

  bool failed() const { return FAILED(status); }
};

constexpr VARTYPE kBytesType = VT_ARRAY | VT_UI1;

bool IsObject(const VARIANT& value);
// Types that a value may have: the numbered ones below VT_VOID, which include none of number 15,
// and no arrays of or references to nothing.
bool IsType(VARTYPE type);

// As a copy that follows references: one to a value, and what that refers to, but no further. The
// result is borrowed.
Result<VARIANT> Followed(const VARIANT& value);
// As Followed, for a copy of all that the value owns: there is none of an array that counts
// elements and has no data.
Result<VARIANT> Copied(const VARIANT& value);
// The plain value that is read instead of an object, however it is reached.
Result<VARIANT> Resolved(const VARIANT& value);
// Whether the value is one of the module's numbers. Those of the tests hold zero, whose text cannot
// be read.
bool IsZeroNumber(const VARIANT& value);

// The number in a value of a type that holds one.
// Errors: DISP_E_TYPEMISMATCH.
Result<double> NumberIn(const VARIANT& value);
Text TextIn(BSTR text);

// The number that a late-bound argument becomes.
Result<double> CoercedNumber(const VARIANT& value);
Result<LONG> CoercedInteger(const VARIANT& value);

struct CoercedText {
  Text text;
  // In UTF-8, which is the system's character set here, up to the first zero.
  size_t ByteCount() const;
};
// The text of a value that is neither a reference nor an object.
Result<CoercedText> TextFrom(const VARIANT& plain);
// The text that a late-bound argument becomes.
Result<CoercedText> CoercedToText(const VARIANT& value);

// How many bytes an array gives: the elements of its first dimension, none if any dimension is
// empty.
Result<size_t> ArrayByteCount(const SAFEARRAY* array, HRESULT status_of_null);

}  // namespace mirolta::test
