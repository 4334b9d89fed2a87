// Late-bound calls with random members, kinds, argument counts, names and values on every class.
// The program is the module itself.
#include "fuzz_values.h"
#include "member_calls.h"
#include "module_state.h"
#include "portable/registry_mode.h"

using namespace mirolta;
using namespace mirolta::fuzz;
using mirolta::test::AllClasses;
using mirolta::test::AllMembers;
using mirolta::test::PlannedChance;
using mirolta::test::State;
using mirolta::test::Subject;

namespace {

bool Prepare() {
  setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1);
  FUZZ_CHECK(MiroltaRegistryInMemory(TRUE) == ERROR_SUCCESS);
  static const PlannedChance chance;
  return true;
}

// Keys and random numbers stay small: a long search for primes is not a fault.
bool MayTakeLong(const std::string& name, const MemberRow& row, const std::vector<VARIANT>& given) {
  if (name != "RSACrypt" && name != "PexBigNumber") return false;
  const std::basic_string<OLECHAR> member = row.name;
  const bool makes = member.find(OLESTR("Create")) == 0 || member == OLESTR("Random");
  if (!makes) return false;
  for (const VARIANT& value : given) {
    VARIANT number;
    VariantInit(&number);
    if (SUCCEEDED(VariantChangeType(&number, &value, 0, VT_I4)) && number.lVal >= -1 &&
        number.lVal <= 40) {
      continue;
    }
    return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  [[maybe_unused]] static const bool prepared = Prepare();
  PlannedChance::Restart();
  FuzzInput in(data, size);
  const ClassTableRow& class_row = *AllClasses()[in.Byte() % AllClasses().size()];
  const InterfaceTable& table = *class_row.default_interface;
  const LONG objects = CurrentModule()->lock_count;
  {
    FuzzValues values;
    std::vector<VARIANT> results;
    const Subject subject(class_row, in.Byte() % 2 != 0 ? State::kReady : State::kFresh);
    FUZZ_CHECK(subject);
    for (int calls = 0; calls < 12 && !in.IsEmpty(); ++calls) {
      const uint8_t choice = in.Byte();
      const MemberRow& row = table.members[in.Byte() % table.member_count];
      DISPID id = row.id;
      WORD kind = static_cast<WORD>(row.kind);
      std::vector<VARIANT> arguments;
      UINT count = row.parameters.Count();
      if (choice % 16 == 0) id = static_cast<DISPID>(in.Long());
      if (choice % 16 == 1) kind = in.Word();
      if (choice % 16 == 2) count = in.Byte() % 6;
      for (UINT i = 0; i < count; ++i) {
        const bool earlier = !results.empty() && in.Byte() % 8 == 0;
        arguments.push_back(earlier ? results[in.Below(static_cast<uint32_t>(results.size()))]
                                    : values.Next(in));
      }
      if (MayTakeLong(test::Plain(class_row.name), row, arguments) || id != row.id) {
        // A call with another number of arguments.
        arguments.clear();
        if (id == row.id) continue;
      }
      const bool puts = row.kind == kPut || row.kind == kPutRef;
      std::vector<DISPID> names;
      if (puts && choice % 32 != 3 && !arguments.empty()) names.push_back(DISPID_PROPERTYPUT);
      if (choice % 32 == 4) {
        for (UINT i = in.Byte() % 4; i-- > 0 && names.size() < arguments.size();) {
          names.push_back(static_cast<DISPID>(in.Byte()) - 4);
        }
      }
      DISPPARAMS params = {arguments.data(), names.data(), static_cast<UINT>(arguments.size()),
                           static_cast<UINT>(names.size())};
      VARIANT result;
      VariantInit(&result);
      EXCEPINFO exception = {};
      UINT bad = 0;
      const bool wants_result = choice % 32 != 5;
      const bool wants_exception = choice % 32 != 6;
      const HRESULT status = subject.Dispatch()->Invoke(
          id, IID_NULL, 0, kind, &params, wants_result ? &result : nullptr,
          wants_exception ? &exception : nullptr, choice % 2 != 0 ? &bad : nullptr);
      if (FAILED(status)) FUZZ_CHECK(V_VT(&result) == VT_EMPTY);
      SysFreeString(exception.bstrSource);
      SysFreeString(exception.bstrDescription);
      SysFreeString(exception.bstrHelpFile);
      // Only complete values are kept: a failed read must not leave freed texts and objects.
      if (status == S_OK) results.push_back(result);
    }
    for (VARIANT& result : results) VariantClear(&result);
  }
  SetErrorInfo(0, nullptr);
  FUZZ_CHECK(CurrentModule()->lock_count == objects);
  return 0;
}
