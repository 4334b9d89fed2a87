#include "values/byte_loan.h"

#include <string.h>

namespace mirolta::host {

SAFEARRAY* SpareArray::Take() noexcept {
  SAFEARRAY* const array = array_;
  array_ = nullptr;
  return array != nullptr ? array : SafeArrayCreateVector(VT_UI1, 0, 0);
}

void SpareArray::Return(SAFEARRAY* array) noexcept {
  if (array_ == nullptr) {
    array_ = array;
  } else {
    SafeArrayDestroy(array);
  }
}

namespace {

// Gives the array the data of another one, a copy of its bytes, and returns the other one; null without
// memory, when the array is left without data.
SAFEARRAY* LeaveCopy(SAFEARRAY* array) noexcept {
  const ULONG size = array->rgsabound[0].cElements;
  SAFEARRAY* const other = SafeArrayCreateVector(VT_UI1, 0, size);
  if (other != nullptr) memcpy(other->pvData, array->pvData, size);
  array->pvData = other != nullptr ? other->pvData : nullptr;
  return other;
}

}  // namespace

bool ByteLoan::Begin(SpareArray* spare, const uint8_t* bytes, size_t size,
                     VARIANT* argument) noexcept {
  SAFEARRAY* const array = spare->Take();
  if (array == nullptr) return false;
  own_data_ = array->pvData;
  array->pvData = const_cast<uint8_t*>(bytes);  // a callee may only read its arguments
  array->rgsabound[0].cElements = static_cast<ULONG>(size);
  // A callee that frees its argument, which it may not do, frees and clears nothing that is locked.
  array->cLocks = 1;
  argument->vt = VT_ARRAY | VT_UI1;
  argument->parray = array;
  spare_ = spare;
  argument_ = argument;
  array_ = array;
  return true;
}

void ByteLoan::TakeBack() noexcept {
  SAFEARRAY* array = array_;
  argument_->vt = VT_EMPTY;
  array_ = nullptr;
  if (--array->cLocks != 0) array = LeaveCopy(array);
  if (array == nullptr) return;
  array->pvData = own_data_;
  array->rgsabound[0].cElements = 0;
  spare_->Return(array);
}

}  // namespace mirolta::host
