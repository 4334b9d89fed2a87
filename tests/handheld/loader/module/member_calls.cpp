#include "module/member_calls.h"

#include <array>
#include <cstring>
#include <mutex>
#include <utility>

namespace mirolta::loader {
namespace {

constexpr unsigned kMostCalls = 512;
// The object, three values with a word of padding, the result's place.
constexpr unsigned kMostWords = 16;
constexpr unsigned kVariantWords = sizeof(VARIANT) / 4;

struct CallPlan {
  unsigned slot = 0;
  unsigned count = 0;
  VARTYPE types[kMaxParameters] = {};
  VARTYPE result = VT_EMPTY;

  friend bool operator==(const CallPlan&, const CallPlan&) = default;
};

std::mutex g_lock;
CallPlan g_plans[kMostCalls];
unsigned g_used = 0;

uint32_t AddressWord(const void* address) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address));
}

template <size_t>
using WordOf = uint32_t;

// The words of a call, as the procedure call standard of the processor (AAPCS) passes them: four in
// registers, the others on the stack, values of eight-byte alignment at even words.
class CallWords {
 public:
  explicit CallWords(void* instance) { Add(AddressWord(instance)); }

  void Add(uint32_t word) { words_[count_++] = word; }
  void Add(const VARIANT& value) {
    count_ += count_ & 1;
    std::memcpy(&words_[count_], &value, sizeof value);
    count_ += kVariantWords;
  }

  template <size_t... kIndex>
  HRESULT Call(void* function, std::index_sequence<kIndex...>) const {
    using Words = HRESULT (*)(WordOf<kIndex>...);
    return reinterpret_cast<Words>(function)(words_[kIndex]...);
  }

 private:
  uint32_t words_[kMostWords] = {};
  unsigned count_ = 0;
};

HRESULT CallSlot(const CallPlan& plan, void* instance, VARIANT* arguments, VARIANT* result) {
  CallWords words(instance);
  for (unsigned i = 0; i < plan.count; ++i) {
    const VARIANT& argument = arguments[i];
    switch (plan.types[i]) {
      case VT_VARIANT:
        words.Add(argument);
        break;
      case VT_BOOL:
        words.Add(static_cast<uint32_t>(argument.boolVal));
        break;
      case VT_I4:
        words.Add(static_cast<uint32_t>(argument.lVal));
        break;
      default:
        words.Add(AddressWord(argument.byref));
        break;
    }
  }
  VARIANT value = {};
  if (plan.result == VT_VARIANT) {
    words.Add(AddressWord(&value));
  } else if (plan.result != VT_EMPTY) {
    words.Add(AddressWord(&value.lVal));
  }
  void* const* const* const object = static_cast<void* const* const*>(instance);
  const HRESULT status = words.Call((*object)[plan.slot], std::make_index_sequence<kMostWords>());
  switch (plan.result) {
    case VT_EMPTY:
      break;
    case VT_VARIANT:
      *result = value;
      break;
    case VT_BOOL:
      result->boolVal = value.boolVal;
      break;
    case VT_I4:
      result->lVal = value.lVal;
      break;
    default:
      result->byref = value.byref;
      break;
  }
  return status;
}

template <unsigned kIndex>
HRESULT CallPlanned(void* instance, VARIANT* arguments, VARIANT* result) {
  return CallSlot(g_plans[kIndex], instance, arguments, result);
}

template <unsigned... kIndex>
constexpr std::array<MemberCall, kMostCalls> MakeCalls(std::integer_sequence<unsigned, kIndex...>) {
  return {CallPlanned<kIndex>...};
}
constexpr std::array<MemberCall, kMostCalls> kCalls =
    MakeCalls(std::make_integer_sequence<unsigned, kMostCalls>());

bool CanPass(VARTYPE type) {
  return type == VT_I4 || type == VT_BOOL || type == VT_BSTR || type == VT_VARIANT ||
         type == VT_UNKNOWN || type == VT_DISPATCH;
}

}  // namespace

MemberCall MakeMemberCall(unsigned slot, const MemberRow& row) {
  CallPlan plan;
  plan.slot = slot;
  plan.count = row.parameters.Count();
  plan.result = row.result.type;
  if (plan.result != VT_EMPTY && !CanPass(plan.result)) return nullptr;
  for (unsigned i = 0; i < plan.count; ++i) {
    plan.types[i] = row.parameters.rows[i].type.type;
    if (!CanPass(plan.types[i])) return nullptr;
  }
  const std::lock_guard<std::mutex> lock(g_lock);
  unsigned index = 0;
  while (index < g_used && g_plans[index] != plan) ++index;
  if (index == kMostCalls) return nullptr;
  if (index == g_used) g_plans[g_used++] = plan;
  return kCalls[index];
}

}  // namespace mirolta::loader
