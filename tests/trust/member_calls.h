// Every member of every class, from the type library's own tables, called on objects in known
// states with arguments written as text. Programs that use it are the module themselves: they link
// mirolta_entry.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "member_arguments.h"
#include "mirolta.h"
#include "owned_value.h"
#include "seam/interface_table.h"
#include "test_values.h"

namespace mirolta::test {

// One member of one class.
struct Member {
  const ClassTableRow* class_row;
  const MemberRow* row;

  unsigned ParameterCount() const { return row->parameters.Count(); }
  std::string ClassName() const { return Plain(class_row->name); }
  std::string Name() const;  // "HashObject.Key put"
};

const std::vector<Member>& AllMembers();
const std::vector<const ClassTableRow*>& AllClasses();

// By name; the test program ends if there is none.
const ClassTableRow& ClassNamed(std::string_view name);
const Member& MemberNamed(std::string_view name);
// A member of a class by the plain name; null if there is none.
const MemberRow* FindMember(const ClassTableRow& class_row, std::string_view name, INVOKEKIND kind);

// Unloads the module and loads it again: without factories and type information.
void ReloadModule();

enum class State {
  kFresh,  // as created
  kReady,  // algorithm, key, number or stream set, whatever the class needs
};
constexpr State kStates[] = {State::kFresh, State::kReady};

// What a late-bound call reports of a failure; texts that it does not have are empty.
struct LateReport {
  bool raised = false;
  Text source;
  Text description;
};

// Subject is an object of a class in a state. An empty one could not be created.
class Subject {
 public:
  Subject(const ClassTableRow& class_row, State state);
  ~Subject();
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;

  explicit operator bool() const { return dual_ != nullptr; }
  // Gives the object up before the subject's end.
  void Release();
  const ClassTableRow& Class() const { return class_row_; }
  IUnknown* Unknown() const { return static_cast<IUnknown*>(dual_); }
  IDispatch* Dispatch() const { return static_cast<IDispatch*>(dual_); }

  // An early-bound call. `result` is made empty first and gets the member's result in its type.
  HRESULT Call(const MemberRow& row, VARIANT* arguments, VARIANT* result) const;
  // A late-bound call.
  HRESULT Invoke(const MemberRow& row, const VARIANT* arguments, unsigned count,
                 VARIANT* result) const;
  // The same with the arguments as DISPPARAMS has them, the last one first. Only what fills `report`
  // allocates.
  HRESULT InvokeReversed(const MemberRow& row, VARIANT* reversed, unsigned count, VARIANT* result,
                         LateReport* report = nullptr) const;
  // An early-bound call by name with arguments from text.
  HRESULT Call(const std::string& member, INVOKEKIND kind, const std::string& words) const;

  // The same by ready arguments: what it gives as Shown has it, and its status.
  std::string Answer(const std::string& member, INVOKEKIND kind, const Arguments& arguments,
                     HRESULT* status) const;

  // What every property without parameters reads as, status and value, as text.
  std::string Snapshot() const;

 private:
  const ClassTableRow& class_row_;
  IDispatch* dual_ = nullptr;
};

// The value in one line, for comparisons and messages.
std::string Shown(const VARIANT& value);

// While it lives clock and random numbers are the same in every run.
class PlannedChance {
 public:
  PlannedChance();
  ~PlannedChance();
  PlannedChance(const PlannedChance&) = delete;
  PlannedChance& operator=(const PlannedChance&) = delete;
  static void Restart();
};

// While it lives, counts what is entered and left of all critical sections.
class LockBalance {
 public:
  LockBalance();
  ~LockBalance();
  LockBalance(const LockBalance&) = delete;
  LockBalance& operator=(const LockBalance&) = delete;
  int Entered() const;
  int Held() const;
};

}  // namespace mirolta::test
