// Any bytes as a registry script: refused, or run with keys entered and left in nested order.
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "registry_script.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

class CheckingAction final : public RegistryAction {
 public:
  explicit CheckingAction(uint32_t failing) : failing_(failing) {}
  HRESULT EnterKey(HKEY parent, const OLECHAR* name, KeyRule, const OLECHAR* value,
                   HKEY* key) override {
    FUZZ_CHECK(parent == (open_.empty() ? parent : Handle(open_.size())));
    Text(name);
    if (value != nullptr) Text(value);
    const HRESULT status = Status();
    if (FAILED(status)) return status;  // never entered, so never left
    open_.push_back(name);
    FUZZ_CHECK(open_.size() <= 8);
    *key = Handle(open_.size());
    return S_OK;
  }
  HRESULT LeaveKey(HKEY, const OLECHAR* name, KeyRule, HKEY key) override {
    FUZZ_CHECK(!open_.empty() && open_.back() == name && key == Handle(open_.size()));
    open_.pop_back();
    return Status();
  }
  HRESULT Value(HKEY key, const OLECHAR* name, const OLECHAR* text) override {
    FUZZ_CHECK(open_.empty() ? key == HKEY_CLASSES_ROOT : key == Handle(open_.size()));
    Text(name);
    Text(text);
    return Status();
  }
  size_t Open() const { return open_.size(); }
  bool Failed() const { return failed_; }

 private:
  static HKEY Handle(size_t depth) { return reinterpret_cast<HKEY>(depth * 16); }
  static void Text(const OLECHAR* text) {
    size_t length = 0;
    while (text[length] != 0) ++length;
    FUZZ_CHECK(length < 4096);
  }
  HRESULT Status() {
    if (failing_ == 0 || --failing_ != 0) return S_OK;
    failed_ = true;
    return E_ACCESSDENIED;
  }
  std::vector<std::basic_string<OLECHAR>> open_;
  uint32_t failing_;
  bool failed_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const uint32_t failing = in.Byte() % 8;
  const Bytes script = in.Rest();
  CheckingAction action(failing);
  const HRESULT status = RunRegistryScript(script.data(), static_cast<DWORD>(script.size()),
                                           OLESTR("/a folder/Module.so"), action);
  FUZZ_CHECK(status == S_OK || status == kBadRegistryScript || status == E_OUTOFMEMORY ||
             (status == E_ACCESSDENIED && action.Failed()));
  FUZZ_CHECK(status != S_OK || action.Open() == 0);
  return 0;
}
