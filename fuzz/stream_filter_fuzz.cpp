// The stream filters over a target that returns too few bytes, none, wrong counts and failures.
#include <algorithm>

#include "fuzz_values.h"
#include "member_calls.h"
#include "portable/registry_mode.h"

using namespace mirolta;
using namespace mirolta::fuzz;
using mirolta::test::AllClasses;
using mirolta::test::PlannedChance;
using mirolta::test::State;
using mirolta::test::Subject;

namespace {

// Behaves in every call as the input says.
class MisbehavingStream final : public IStream {
 public:
  explicit MisbehavingStream(FuzzInput* in) : in_(in) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    const bool known = iid == IID_IUnknown || iid == IID_IStream || iid == IID_ISequentialStream;
    *out = known ? this : nullptr;
    if (known) ++references;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read) override {
    const ULONG moved = Moved(count);
    for (ULONG i = 0; i < moved; ++i) static_cast<uint8_t*>(bytes)[i] = in_->Byte();
    Report(moved, read);
    return Status();
  }
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override {
    uint32_t sum = 0;
    for (ULONG i = 0; i < count; ++i) sum += static_cast<const uint8_t*>(bytes)[i];
    last_sum = sum;
    Report(Moved(count), written);
    return Status();
  }
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER* position) override {
    if (position != nullptr) position->QuadPart = in_->Huge();
    return Status();
  }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return Status(); }
  HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                   ULARGE_INTEGER*) override {
    return Status();
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return Status(); }
  HRESULT STDMETHODCALLTYPE Revert() override { return Status(); }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return Status();
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return Status();
  }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* statistics, DWORD) override {
    *statistics = {};
    return Status();
  }
  HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

  ULONG references = 1;
  uint32_t last_sum = 0;

 private:
  // At the end of the input the stream ends too, so that every copy ends.
  ULONG Moved(ULONG count) {
    if (in_->IsEmpty()) return 0;
    const uint8_t choice = in_->Byte();
    return choice % 3 == 0 ? count : (choice % 3 == 1 ? 0 : std::min<ULONG>(count, choice));
  }
  void Report(ULONG moved, ULONG* place) {
    if (place == nullptr) return;
    const uint8_t choice = in_->Byte();
    if (choice % 16 == 1) return;  // does not set the count
    *place = choice % 16 == 2 ? in_->Long() : moved;
  }
  HRESULT Status() {
    const uint8_t choice = in_->Byte();
    if (choice % 8 == 1) return S_FALSE;
    return choice % 8 == 2 ? static_cast<HRESULT>(in_->Long()) : S_OK;
  }
  FuzzInput* in_;
};

bool PrepareRegistry() {
  setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1);
  FUZZ_CHECK(MiroltaRegistryInMemory(TRUE) == ERROR_SUCCESS);
  static const PlannedChance chance;
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  [[maybe_unused]] static const bool prepared = PrepareRegistry();
  PlannedChance::Restart();
  FuzzInput in(data, size);
  const bool crypts = in.Byte() % 2 != 0;
  MisbehavingStream target(&in), destination(&in);
  for (const ClassTableRow* class_row : AllClasses()) {
    if (test::Plain(class_row->name) != (crypts ? "ToviStreamCrypt" : "ToviStreamDigest")) continue;
    const Subject subject(*class_row, in.Byte() % 4 != 0 ? State::kReady : State::kFresh);
    OwnedReference<IStream> filter;
    FUZZ_CHECK(filter.Query(subject.Unknown(), IID_IStream) == S_OK);
    const InterfaceTable& table = *class_row->default_interface;
    VARIANT bound;
    VariantInit(&bound);
    V_VT(&bound) = VT_UNKNOWN;
    bound.punkVal = &target;
    for (unsigned i = 0; i < table.member_count; ++i) {
      VARIANT none;
      if (table.members[i].kind == kPutRef) subject.Call(table.members[i], &bound, &none);
    }
    std::vector<uint8_t> bytes(3000);
    for (int calls = 0; calls < 60 && !in.IsEmpty(); ++calls) {
      ULONG moved = in.Byte() % 2;
      ULONG* const report = in.Byte() % 8 == 0 && crypts ? nullptr : &moved;
      ULARGE_INTEGER count, read, written;
      count.QuadPart = in.Byte() % 16 == 0 ? in.Huge() : in.Word();
      LARGE_INTEGER move;
      move.QuadPart = static_cast<LONGLONG>(in.Byte() % 2);
      STATSTG statistics;
      switch (in.Byte() % 10) {
        case 0:
        case 1:
          filter->Read(bytes.data(), in.Below(3000), report);
          FUZZ_CHECK(moved <= 3000);
          break;
        case 2:
        case 3:
          filter->Write(bytes.data(), in.Below(3000), &moved);
          break;
        case 4:
          filter->CopyTo(&destination, count, &read, &written);
          break;
        case 5:
          filter->Seek(move, in.Byte() % 4, &read);
          break;
        case 6:
          filter->Stat(&statistics, 0);
          break;
        case 7: {  // a member without parameters, or with a small number or text
          const MemberRow& row = table.members[in.Byte() % table.member_count];
          FuzzValues values;
          VARIANT arguments[kMaxParameters] = {};
          if (row.kind == kPutRef) break;
          VARIANT result;
          if (row.parameters.Count() == 1) {
            arguments[0] = values.Next(in);
            const VARTYPE type = row.parameters.rows[0].type.type;
            if (type != VT_VARIANT && V_VT(&arguments[0]) != type) break;
          }
          subject.Call(row, arguments, &result);
          VariantClear(&result);
          break;
        }
        case 8:
          filter->SetSize(count);
          filter->Commit(0);
          filter->Revert();
          break;
        default:
          filter->LockRegion(count, count, 0);
          filter->UnlockRegion(count, count, 0);
          break;
      }
    }
  }
  SetErrorInfo(0, nullptr);
  FUZZ_CHECK(target.references == 1 && destination.references == 1);
  return 0;
}
