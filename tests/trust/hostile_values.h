// Untrusted values of every automation type that callers may pass to any member.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "fake_object.h"
#include "test_values.h"

namespace mirolta::test {

struct HostileValue {
  std::string name;
  VARIANT value;
  bool is_long;  // too long for arithmetic
};

// HostileValues owns what the values are made of; they are borrowed by the calls.
class HostileValues {
 public:
  HostileValues();
  ~HostileValues();
  HostileValues(const HostileValues&) = delete;
  HostileValues& operator=(const HostileValues&) = delete;

  const std::vector<HostileValue>& All() const { return values_; }
  // Those that fit a parameter of a fixed type in an early-bound call.
  const std::vector<HostileValue>& OfType(VARTYPE type) const;

 private:
  void AddPlain();
  void AddNumbers();
  void AddTexts();
  void AddArrays();
  void AddObjects();
  void AddReferences();
  void AddFixed();

  VARIANT& Own(VARTYPE type);
  VARIANT& OwnText(const std::basic_string<OLECHAR>& text);
  VARIANT& OwnArray(VARTYPE type, const std::vector<SAFEARRAYBOUND>& bounds);
  void Add(const std::string& name, const VARIANT& value, bool is_long = false);
  // The value by reference too.
  void AddBoth(const std::string& name, VARIANT& value, bool is_long = false);

  std::deque<VARIANT> owned_;
  std::vector<HostileValue> values_;
  std::vector<HostileValue> texts_;
  std::vector<HostileValue> numbers_;
  std::vector<HostileValue> switches_;
  std::vector<HostileValue> objects_;
  FakeObject with_text_;
  FakeObject with_bytes_;
  FakeObject failing_;
  FakeObject itself_;
  FakeObject without_dispatch_;
  SAFEARRAY* locked_ = nullptr;
  SAFEARRAY* hollow_ = nullptr;
  void* hollow_data_ = nullptr;
};

}  // namespace mirolta::test
