// Values of every kind, for comparing conversions with each other.
#pragma once

#include <string>

#include "fake_object.h"

namespace mirolta::test {

// ValueCases owns values and what they refer to; the list lives as long as it does.
class ValueCases {
 public:
  struct Case {
    std::string name;
    VARIANT value;  // borrowed
  };

  ValueCases() {
    text_ = TextValue(OLESTR("te\u00E4xt"));
    split_text_ = TextValue(OLESTR("ab\0cd"));
    array_ = BytesValue({0, 1, 2, 0xFF}, 3);
    empty_array_ = BytesValue({});
    words_ = ArrayValue(VT_UI4, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    shorts_ = ArrayValue(VT_I2, 2, {1, 2, 3, 4});
    // The descriptor counts elements and points to no data.
    hollow_ = BytesValue({1, 2, 3, 4});
    hollow_data_ = std::exchange(hollow_->parray->pvData, nullptr);
    hollow_words_ = ArrayValue(VT_UI4, 2, {1});
    hollow_words_data_ = std::exchange(hollow_words_->parray->pvData, nullptr);
    text_object_.value = TextValue(OLESTR("abc"));
    array_object_.value = BytesValue({5, 6});
    *&hollow_object_.value = ReferenceTo(VT_ARRAY | VT_UI1, &hollow_->parray);
    failing_object_.status = DISP_E_MEMBERNOTFOUND;
    undispatched_.has_dispatch = false;

    Add("text", text_);
    Add("text with zero", split_text_);
    Add("empty text", TextValue(OLESTR("")));
    Add("null text", TestValue(VT_BSTR));
    Add("empty", TestValue());
    Add("null", TestValue(VT_NULL));
    Add("number", NumberValue(255));
    Add("array", array_);
    Add("empty array", empty_array_);
    Add("null array", TestValue(VT_ARRAY | VT_UI1));
    Add("array without data", hollow_);
    Add("array of words without data", hollow_words_);
    Add("object with array without data", ObjectValue(&hollow_object_));
    Add("array of words", words_);
    Add("array of eight bytes", ArrayValue(VT_UI8, 2, {9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3}));
    Add("array of unsigned", ArrayValue(VT_UINT, 2, {9, 8, 7, 6, 5, 4, 3, 2}));
    Add("array of shorts", shorts_);
    Add("null array of words", TestValue(VT_ARRAY | VT_UI4));
    Add("object with text", ObjectValue(&text_object_));
    Add("object with array", ObjectValue(&array_object_));
    Add("failing object", ObjectValue(&failing_object_));
    Add("object without dispatch", UnknownValue(&undispatched_));
    Add("null object", TestValue(VT_DISPATCH));

    null_array_ = nullptr;
    null_text_ = nullptr;
    inner_ = ReferenceTo(VT_ARRAY | VT_UI1, &array_->parray);
    AddReference("array reference", VT_ARRAY | VT_UI1, &array_->parray);
    AddReference("empty array reference", VT_ARRAY | VT_UI1, &empty_array_->parray);
    AddReference("null array reference", VT_ARRAY | VT_UI1, &null_array_);
    AddReference("reference to array without data", VT_ARRAY | VT_UI1, &hollow_->parray);
    AddReference("value reference to array without data", VT_VARIANT, &hollow_);
    AddReference("words reference", VT_ARRAY | VT_UI4, &words_->parray);
    AddReference("shorts reference", VT_ARRAY | VT_I2, &shorts_->parray);
    AddReference("text reference", VT_BSTR, &text_->bstrVal);
    AddReference("null text reference", VT_BSTR, &null_text_);
    AddReference("number reference", VT_I4, &number_);
    AddReference("value reference to array", VT_VARIANT, &array_);
    AddReference("value reference to text", VT_VARIANT, &text_);
    AddReference("value reference to array reference", VT_VARIANT, &inner_);
#ifndef _WIN32  // where the system itself follows them
    AddReference("array reference to nowhere", VT_ARRAY | VT_UI1, nullptr);
    AddReference("text reference to nowhere", VT_BSTR, nullptr);
    AddReference("value reference to nowhere", VT_VARIANT, nullptr);
#endif
  }
  ~ValueCases() {
    hollow_->parray->pvData = hollow_data_;
    hollow_words_->parray->pvData = hollow_words_data_;
  }
  ValueCases(const ValueCases&) = delete;
  ValueCases& operator=(const ValueCases&) = delete;

  const std::vector<Case>& All() const { return cases_; }

  TestValue text_, split_text_, array_, empty_array_, words_, shorts_, hollow_, hollow_words_;
  FakeObject hollow_object_, text_object_, array_object_, failing_object_, undispatched_;

 private:
  void* hollow_data_ = nullptr;
  void* hollow_words_data_ = nullptr;

  void Add(const char* name, const VARIANT& value) { cases_.push_back({name, value}); }
  void Add(const char* name, TestValue&& value) {
    owned_.push_back(std::move(value));
    cases_.push_back({name, owned_.back()});
  }
  void AddReference(const char* name, int type, void* place) {
    cases_.push_back({name, ReferenceTo(static_cast<VARTYPE>(type), place)});
  }

  std::vector<Case> cases_;
  std::vector<TestValue> owned_;
  SAFEARRAY* null_array_;
  BSTR null_text_;
  VARIANT inner_;
  LONG number_ = -12;
};

}  // namespace mirolta::test
