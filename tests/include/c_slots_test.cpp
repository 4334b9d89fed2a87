// The interfaces have the same slots in C as in C++: order, parameters and results.
#include <gtest/gtest.h>
#include <mirolta.h>

#include <cstring>
#include <map>
#include <string>
#include <type_traits>

// The structures of C refer to the interfaces of C++ here: those of C are declared after them.
namespace in_c {
#include "mirolta/c_interfaces.h"
#include "mirolta/c_runtime.h"
}  // namespace in_c

namespace {

// What a slot takes and returns, without the object.
template <typename Slot>
struct Signature;
template <typename Result, typename Object, typename... Parameter>
struct Signature<Result (*)(Object*, Parameter...)> {
  using Type = Result(Parameter...);
};
template <typename Result, typename Object, typename... Parameter>
struct Signature<Result (Object::*)(Parameter...)> {
  using Type = Result(Parameter...);
};

// The slot of a virtual function, as the platform's C++ lays out pointers to members: one more than
// the offset in the virtual table, or the offset and an odd adjustment (ARM).
template <typename Member>
size_t SlotOf(Member member) {
  ptrdiff_t words[2];
  static_assert(sizeof(member) == sizeof(words));
  std::memcpy(words, &member, sizeof(words));
  return static_cast<size_t>(words[1] % 2 != 0 ? words[0] : words[0] - 1) / sizeof(void*);
}

// The function after an interface's own has the number of its slots.
template <typename Interface>
struct Extended : Interface {
  virtual void FunctionAfterAll() = 0;
};

struct Row {
  const char* interface_name;
  const char* member;
  size_t in_c;
  size_t in_cpp;
  bool is_same_type;
};
const Row kRows[] = {
#define SLOT(interface_name, member)                                                       \
  {#interface_name, #member, offsetof(in_c::interface_name##Vtbl, member) / sizeof(void*), \
   SlotOf(&interface_name::member),                                                        \
   std::is_same_v<Signature<decltype(in_c::interface_name##Vtbl::member)>::Type,           \
                  Signature<decltype(&interface_name::member)>::Type>},
#include "interface_slots.inc"
#undef SLOT
};

struct InterfaceRow {
  const char* name;
  size_t in_c;
  size_t in_cpp;
};
const InterfaceRow kInterfaces[] = {
#define INTERFACE(name) \
  {#name, sizeof(in_c::name##Vtbl) / sizeof(void*), SlotOf(&Extended<name>::FunctionAfterAll)},
#include "interfaces.inc"
#undef INTERFACE
};

TEST(CSlots, EveryMemberHasTheSlotAndTheTypeThatItHasInCpp) {
  for (const Row& row : kRows) {
    EXPECT_EQ(row.in_c, row.in_cpp) << row.interface_name << " " << row.member;
    EXPECT_TRUE(row.is_same_type) << row.interface_name << " " << row.member;
  }
}

TEST(CSlots, EverySlotOfEveryInterfaceIsCompared) {
  std::map<std::string, size_t> rows;
  for (const Row& row : kRows) EXPECT_EQ(row.in_c, rows[row.interface_name]++) << row.member;
  for (const InterfaceRow& row : kInterfaces) {
    EXPECT_EQ(row.in_c, row.in_cpp) << row.name;
    EXPECT_EQ(rows[row.name], row.in_c) << row.name;
  }
  EXPECT_EQ(rows.size(), std::size(kInterfaces));
}

}  // namespace
