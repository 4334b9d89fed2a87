// Views of callers' byte arrays against a small model: every array of up to two dimensions of up to two elements,
// with and without data and at every edge of its lock count, given in every way; each pair of openings of one view.
// Views with a planted fault each must be reported.
//
//   array_borrowing          pairs of arrays of one dimension
//   array_borrowing --full   pairs of all arrays
#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "byte_view.h"
#include "verdict.h"

namespace mirolta {

namespace {

uint64_t wrong = 0;

void Expect(bool holds) {
  wrong += !holds;
}

constexpr ULONG kMostLocks = 0xFFFF;
constexpr VARTYPE kBytes = VT_ARRAY | VT_UI1;

// An array as a caller may have it.
struct Array {
  SAFEARRAY* array;
  VARTYPE type;  // of values that hold it
  USHORT dimensions;
  ULONG counts[2];  // of the first and the second dimension
  void* data;
  ULONG locks;

  bool IsEmpty() const { return counts[0] == 0 || (dimensions == 2 && counts[1] == 0); }
};

enum class Way { kValue, kReference, kValueOfReference, kReferenceOfReference };
enum class Opening { kOpen, kUnresolved, kByteArray };

// A way to give an array to a view. The array is null where there is none.
struct Case {
  std::unique_ptr<Array> array;
  SAFEARRAY* pointer = nullptr;
  VARIANT inner = {};
  VARIANT value = {};
};

struct Answer {
  HRESULT status;
  uint32_t count;
  bool is_borrowed;
};

Answer Expected(const Array* array, VARTYPE type, Opening opening) {
  const bool passes = opening == Opening::kByteArray || type == kBytes;
  if (array == nullptr) {
    const bool is_refused = opening != Opening::kOpen || type != kBytes;
    return {is_refused ? DISP_E_TYPEMISMATCH : E_POINTER, 0, false};
  }
  if (array->dimensions == 0) return {E_INVALIDARG, 0, false};
  if (array->data == nullptr && !array->IsEmpty()) return {E_INVALIDARG, 0, false};
  if (!passes) return {DISP_E_TYPEMISMATCH, 0, false};
  if (array->IsEmpty()) return {S_OK, 0, false};
  if (array->locks == kMostLocks) return {E_UNEXPECTED, 0, false};
  return {S_OK, array->counts[0], true};
}

void MakeValues(Case& made, VARTYPE type, Way way) {
  VARIANT* const holder = way == Way::kValue || way == Way::kReference ? &made.value : &made.inner;
  if (way == Way::kReference || way == Way::kReferenceOfReference) {
    V_VT(holder) = static_cast<VARTYPE>(VT_BYREF | type);
    V_ARRAYREF(holder) = &made.pointer;
  } else {
    V_VT(holder) = type;
    V_ARRAY(holder) = made.pointer;
  }
  if (holder == &made.value) return;
  V_VT(&made.value) = VT_BYREF | VT_VARIANT;
  V_VARIANTREF(&made.value) = &made.inner;
}

std::unique_ptr<Array> MakeArray(VARTYPE type, USHORT dimensions, ULONG first, ULONG second,
                                 LONG lower, bool has_data, ULONG locks) {
  SAFEARRAYBOUND bounds[2] = {{first, lower}, {second, -lower}};
  SAFEARRAY* const array =
      SafeArrayCreate(type & VT_TYPEMASK, std::max<USHORT>(dimensions, 1), bounds);
  if (array == nullptr) std::abort();
  auto* const bytes = static_cast<uint8_t*>(array->pvData);
  if (bytes != nullptr) {
    const size_t count = first * (dimensions == 2 ? second : 1) * array->cbElements;
    for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(17 * i + 3);
  }
  // What is changed here is not freed: there are few, and the program ends.
  array->cDims = dimensions;
  array->cLocks = locks;
  if (!has_data) array->pvData = nullptr;
  return std::unique_ptr<Array>(
      new Array{array, type, dimensions, {first, second}, array->pvData, locks});
}

std::vector<std::unique_ptr<Case>> AllCases(USHORT most_dimensions) {
  std::vector<std::unique_ptr<Case>> cases;
  const auto add = [&](const auto& make, VARTYPE type) {
    for (const Way way :
         {Way::kValue, Way::kReference, Way::kValueOfReference, Way::kReferenceOfReference}) {
      auto one = std::make_unique<Case>();
      one->array = make();
      one->pointer = one->array != nullptr ? one->array->array : nullptr;
      MakeValues(*one, type, way);
      cases.push_back(std::move(one));
    }
  };
  // Arrays of VT_UI4 pass by the mask as byte arrays, those of VT_I2 do not.
  for (const VARTYPE type : {kBytes, static_cast<VARTYPE>(VT_ARRAY | VT_UI4)}) {
    add([] { return std::unique_ptr<Array>(); }, type);
    for (USHORT dimensions = 0; dimensions <= most_dimensions; ++dimensions) {
      for (ULONG first = 0; first <= 2; ++first) {
        for (ULONG second = 0; second <= (dimensions == 2 ? 2u : 0u); ++second) {
          for (const LONG lower : {-1, 0, 1}) {
            if (most_dimensions == 1 && lower == 1) continue;
            for (const bool has_data : {true, false}) {
              for (const ULONG locks : {ULONG{0}, kMostLocks - 1, kMostLocks}) {
                add(
                    [&] {
                      return MakeArray(type, dimensions, first, second, lower, has_data, locks);
                    },
                    type);
              }
            }
          }
        }
      }
    }
  }
  return cases;
}

template <typename View>
HRESULT Open(View& view, const VARIANT& value, Opening opening) {
  switch (opening) {
    case Opening::kOpen:
      return view.Open(value, 0);
    case Opening::kUnresolved:
      return view.OpenUnresolved(value, 0);
    default:
      return view.OpenByteArray(value);
  }
}

bool IsUnlocked(const Case& one) {
  return one.array == nullptr || one.array->array->cLocks == one.array->locks;
}

template <typename View>
void OpenAndLook(View& view, const Case& one, Opening opening) {
  const VARTYPE type = static_cast<VARTYPE>(
      V_VT(V_VT(&one.inner) != VT_EMPTY ? &one.inner : &one.value) & ~VT_BYREF);
  const Array* const array = one.array.get();
  const Answer expected = Expected(array, type, opening);
  Expect(Open(view, one.value, opening) == expected.status);
  Expect(view.Count() == expected.count);
  if (array != nullptr)
    Expect(array->array->cLocks == array->locks + (expected.is_borrowed ? 1 : 0));
  if (!expected.is_borrowed) return;
  Expect(view.Data() == array->data && view.IsFromArray());
  for (uint32_t i = 0; i < std::min(view.Count(), expected.count); ++i) {
    Expect(view.Data()[i] == static_cast<uint8_t>(17 * i + 3));
  }
}

constexpr Opening kOpenings[] = {Opening::kOpen, Opening::kUnresolved, Opening::kByteArray};

template <typename View>
void RunPair(const Case& first, const Case& second) {
  for (const Opening one : kOpenings) {
    for (const Opening other : kOpenings) {
      {
        View view;
        OpenAndLook(view, first, one);
        OpenAndLook(view, second, other);
        Expect(&first == &second || IsUnlocked(first));
        view.Close();
        Expect(view.Data() == nullptr && view.Count() == 0 && !view.IsFromArray());
        Expect(IsUnlocked(first) && IsUnlocked(second));
        OpenAndLook(view, second, other);
      }
      Expect(IsUnlocked(second));
    }
  }
}

// Views that are wrong for few arrays.
struct KeepsALock : ByteView {
  void Close() noexcept {
    if (Count() != 2) ByteView::Close();
  }
};
struct AcceptsMissingData : ByteView {
  HRESULT OpenByteArray(const VARIANT& value) noexcept {
    const HRESULT status = ByteView::OpenByteArray(value);
    return status == E_INVALIDARG && (V_VT(&value) & VT_BYREF) == 0 ? S_OK : status;
  }
};
struct CopiesWhatIsLocked : ByteView {
  HRESULT Open(const VARIANT& value, LONG code_page) noexcept {
    const HRESULT status = ByteView::Open(value, code_page);
    return status == E_UNEXPECTED ? ByteView::Open(VARIANT(), code_page) : status;
  }
};

template <typename View>
bool Run(const char* name, const std::vector<std::unique_ptr<Case>>& cases, bool is_planted) {
  wrong = 0;
  uint64_t pairs = 0;
  for (const auto& first : cases) {
    for (const auto& second : cases) {
      RunPair<View>(*first, *second);
      ++pairs;
    }
  }
  return prove::Report(name, pairs, "pairs of values", wrong, is_planted);
}

}  // namespace

}  // namespace mirolta

int main(int argc, char** argv) {
  using namespace mirolta;
  const bool is_full = prove::WantsAll(argc, argv);
  const auto few = AllCases(1);
  bool holds = Run<ByteView>("array borrowing", is_full ? AllCases(2) : AllCases(1), false);
  holds &= Run<KeepsALock>("borrowing that keeps a lock", few, true);
  holds &= Run<AcceptsMissingData>("borrowing that accepts missing data", few, true);
  holds &= Run<CopiesWhatIsLocked>("borrowing that accepts what cannot be locked", few, true);
  return holds ? 0 : 1;
}
