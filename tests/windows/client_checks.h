// What the early-bound clients share: checks that print where they fail, values made in one line.
#pragma once

#include <stdio.h>
#include <string.h>

#include "mirolta.h"

namespace client {

inline LONG volatile checks = 0;
inline LONG volatile failures = 0;

inline bool Check(bool holds, const char* text, const char* file, int line) {
  InterlockedIncrement(&checks);
  if (holds) return true;
  InterlockedIncrement(&failures);
  printf("%s:%d: failed: %s\n", file, line, text);
  return false;
}

inline bool CheckStatus(HRESULT status, HRESULT wanted, const char* text, const char* file,
                        int line) {
  if (Check(status == wanted, text, file, line)) return true;
  printf("  status %08X, not %08X\n", static_cast<unsigned>(status), static_cast<unsigned>(wanted));
  return false;
}

#define CHECK(condition) client::Check((condition), #condition, __FILE__, __LINE__)
#define CHECK_STATUS(call, wanted) client::CheckStatus((call), (wanted), #call, __FILE__, __LINE__)

// Pointer holds one reference.
template <typename Interface>
class Pointer {
 public:
  Pointer() = default;
  Pointer(const Pointer&) = delete;
  Pointer& operator=(const Pointer&) = delete;
  ~Pointer() { Reset(); }
  void Reset() {
    if (pointer_ != nullptr) pointer_->Release();
    pointer_ = nullptr;
  }
  Interface** Put() {
    Reset();
    return &pointer_;
  }
  void** PutVoid() { return reinterpret_cast<void**>(Put()); }
  Interface* Get() const { return pointer_; }
  Interface* operator->() const { return pointer_; }

 private:
  Interface* pointer_ = nullptr;
};

// Value owns a VARIANT.
class Value {
 public:
  Value() { VariantInit(&value_); }
  explicit Value(const OLECHAR* text) : Value() {
    V_VT(&value_) = VT_BSTR;
    V_BSTR(&value_) = SysAllocString(text);
  }
  Value(const BYTE* bytes, ULONG count) : Value() {
    V_VT(&value_) = VT_ARRAY | VT_UI1;
    SAFEARRAYBOUND bound = {count, 0};
    V_ARRAY(&value_) = SafeArrayCreate(VT_UI1, 1, &bound);
    void* data = nullptr;
    if (count == 0 || FAILED(SafeArrayAccessData(V_ARRAY(&value_), &data))) return;
    memcpy(data, bytes, count);
    SafeArrayUnaccessData(V_ARRAY(&value_));
  }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
  ~Value() { VariantClear(&value_); }

  operator VARIANT() const { return value_; }
  VARIANT* Put() {
    VariantClear(&value_);
    return &value_;
  }

  // Whether it is a byte array with these bytes.
  bool Holds(const BYTE* bytes, ULONG count) const {
    if (V_VT(&value_) != (VT_ARRAY | VT_UI1)) return false;
    LONG lower = 0;
    LONG upper = 0;
    SafeArrayGetLBound(V_ARRAY(&value_), 1, &lower);
    SafeArrayGetUBound(V_ARRAY(&value_), 1, &upper);
    if (static_cast<ULONG>(upper - lower + 1) != count) return false;
    void* data = nullptr;
    if (FAILED(SafeArrayAccessData(V_ARRAY(&value_), &data))) return false;
    const bool same = memcmp(data, bytes, count) == 0;
    SafeArrayUnaccessData(V_ARRAY(&value_));
    return same;
  }
  bool IsText(const OLECHAR* text) const {
    return V_VT(&value_) == VT_BSTR && wcscmp(V_BSTR(&value_), text) == 0;
  }

 private:
  VARIANT value_;
};

// String owns a BSTR.
class String {
 public:
  String() = default;
  explicit String(const OLECHAR* text) : text_(SysAllocString(text)) {}
  String(const String&) = delete;
  String& operator=(const String&) = delete;
  ~String() { SysFreeString(text_); }
  operator BSTR() const { return text_; }
  BSTR* Put() {
    SysFreeString(text_);
    text_ = nullptr;
    return &text_;
  }
  bool Is(const OLECHAR* text) const { return text_ != nullptr && wcscmp(text_, text) == 0; }

 private:
  BSTR text_ = nullptr;
};

constexpr const OLECHAR* kSha256OfAbc =
    L"BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD";

}  // namespace client
