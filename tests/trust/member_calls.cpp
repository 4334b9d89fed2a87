#include "member_calls.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "class_table.h"
#include "module_state.h"
#include "portable/module_resources.h"
#include "portable/test_hooks.h"
#include "type_library_table.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

namespace mirolta::test {

namespace {

// What makes an object of a class ready, one call a line: member, kind, arguments.
struct Step {
  const char* class_name;
  const char* member;
  INVOKEKIND kind;
  const char* words;
};
constexpr Step kReadySteps[] = {
    {"HashObject", "InitHash", kMethod, "t:SHA1"},
    {"HashObject", "Key", kPut, "b70"},
    {"HashObject", "HashUpdate", kMethod, "b100 i-1"},
    {"SymmetricCryptObject", "Init", kMethod, "t:AES"},
    {"SymmetricCryptObject", "Key", kPut, "b32"},
    {"SymmetricCryptObject", "Encrypt", kMethod, "b5 B0"},
    {"PexBigNumber", "Binary", kPut, "b60"},
    {"RSACrypt", "CreateKeys", kMethod, "t:8123456789abcdef t:f123456789abcdef"},
    {"ToviStreamDigest", "Stream", kPutRef, "S3000"},
    {"ToviStreamDigest", "ReadAlgorithm", kPut, "t:MD5"},
    {"ToviStreamDigest", "WriteAlgorithm", kPut, "t:SHA256"},
    {"ToviStreamDigest", "ReadKey", kPut, "b20"},
    {"ToviStreamDigest", "WriteKey", kPut, "b70"},
    {"ToviStreamCrypt", "Stream", kPutRef, "S3000"},
    {"ToviStreamCrypt", "ReadAlgorithm", kPut, "t:AES"},
    {"ToviStreamCrypt", "WriteAlgorithm", kPut, "t:DES"},
    {"ToviStreamCrypt", "ReadKey", kPut, "b16"},
    {"ToviStreamCrypt", "WriteKey", kPut, "b24"},
};

uint32_t ticks = 0;
uint32_t sequence = 0;
DWORD NextTick() {
  return ++ticks;
}
void FixedTime(SYSTEMTIME* time) {
  *time = {};
  time->wYear = 2006;
  time->wMonth = 5;
  time->wDay = 14;
}
constexpr MiroltaClock kClock = {NextTick, FixedTime};
constexpr RandomSource kSource = {[](uint32_t) { return true; },
                                  [] {
                                    sequence = sequence * 1664525u + 1013904223u;
                                    return sequence >> 8 & 0x7FFFFFFFu;
                                  }};

std::atomic<int> entered{0};
std::atomic<int> held{0};
// Relaxed: counting must not put an order between threads that the locks do not.
constexpr MiroltaLockProbe kProbe = {
    [](CRITICAL_SECTION*) {
      entered.fetch_add(1, std::memory_order_relaxed);
      held.fetch_add(1, std::memory_order_relaxed);
    },
    [](CRITICAL_SECTION*) { held.fetch_sub(1, std::memory_order_relaxed); }};

}  // namespace

std::string Member::Name() const {
  const char* kind = "";
  if (row->kind == kGet) kind = " get";
  if (row->kind == kPut) kind = " put";
  if (row->kind == kPutRef) kind = " putref";
  return ClassName() + "." + Plain(row->name) + kind;
}

const ClassTableRow& ClassNamed(std::string_view name) {
  for (const ClassTableRow* row : AllClasses()) {
    if (Plain(row->name) == name) return *row;
  }
  std::abort();
}

const Member& MemberNamed(std::string_view name) {
  for (const Member& member : AllMembers()) {
    if (member.Name() == name) return member;
  }
  std::abort();
}

const MemberRow* FindMember(const ClassTableRow& class_row, std::string_view name,
                            INVOKEKIND kind) {
  const InterfaceTable& table = *class_row.default_interface;
  for (unsigned i = 0; i < table.member_count; ++i) {
    const MemberRow& row = table.members[i];
    if (row.kind == kind && Plain(row.name) == name) return &row;
  }
  return nullptr;
}

void ReloadModule() {
  SetErrorInfo(0, nullptr);
  const HINSTANCE instance = CurrentModule()->instance;
  DllMain(instance, DLL_PROCESS_DETACH, nullptr);
  DllMain(instance, DLL_PROCESS_ATTACH, nullptr);
}

const std::vector<const ClassTableRow*>& AllClasses() {
  static const std::vector<const ClassTableRow*> classes = [] {
    std::vector<const ClassTableRow*> all;
    for (unsigned i = 0; i < kTypeLibraryTable.class_count; ++i) {
      all.push_back(&kTypeLibraryTable.classes[i]);
    }
    return all;
  }();
  return classes;
}

const std::vector<Member>& AllMembers() {
  static const std::vector<Member> members = [] {
    std::vector<Member> all;
    for (const ClassTableRow* class_row : AllClasses()) {
      const InterfaceTable& table = *class_row->default_interface;
      for (unsigned i = 0; i < table.member_count; ++i) {
        all.push_back({class_row, &table.members[i]});
      }
    }
    return all;
  }();
  return members;
}

Subject::Subject(const ClassTableRow& class_row, State state) : class_row_(class_row) {
  IClassFactory* factory = nullptr;
  if (DllGetClassObject(*class_row.id, IID_IClassFactory, reinterpret_cast<void**>(&factory)) !=
      S_OK) {
    return;
  }
  factory->CreateInstance(nullptr, *class_row.default_interface->iid,
                          reinterpret_cast<void**>(&dual_));
  factory->Release();
  if (dual_ == nullptr || state == State::kFresh) return;
  for (const Step& step : kReadySteps) {
    if (Plain(class_row.name) != step.class_name) continue;
    if (Call(step.member, step.kind, step.words) != S_OK) {
      std::fprintf(stderr, "%s.%s could not be made ready\n", step.class_name, step.member);
      std::abort();
    }
  }
}

Subject::~Subject() {
  Release();
}

void Subject::Release() {
  IDispatch* const object = dual_;
  dual_ = nullptr;
  if (object != nullptr) object->Release();
}

HRESULT Subject::Call(const MemberRow& row, VARIANT* arguments, VARIANT* result) const {
  VariantInit(result);
  const HRESULT status = row.call(dual_, arguments, result);
  if (row.result.type != VT_EMPTY && row.result.type != VT_VARIANT) {
    V_VT(result) = row.result.type;
  }
  return status;
}

HRESULT Subject::Invoke(const MemberRow& row, const VARIANT* arguments, unsigned count,
                        VARIANT* result) const {
  std::vector<VARIANT> reversed;
  for (unsigned i = count; i-- > 0;) reversed.push_back(arguments[i]);
  return InvokeReversed(row, reversed.data(), count, result);
}

HRESULT Subject::InvokeReversed(const MemberRow& row, VARIANT* reversed, unsigned count,
                                VARIANT* result, LateReport* report) const {
  DISPID put = DISPID_PROPERTYPUT;
  const bool puts = row.kind == kPut || row.kind == kPutRef;
  DISPPARAMS params = {reversed, puts ? &put : nullptr, count, puts ? 1u : 0u};
  EXCEPINFO exception = {};
  VariantInit(result);
  const HRESULT status =
      dual_->Invoke(row.id, IID_NULL, LOCALE_USER_DEFAULT, static_cast<WORD>(row.kind), &params,
                    row.result.type != VT_EMPTY ? result : nullptr, &exception, nullptr);
  const bool raised = status == DISP_E_EXCEPTION;
  if (report != nullptr) {
    report->raised = raised;
    if (exception.bstrSource != nullptr) report->source = exception.bstrSource;
    if (exception.bstrDescription != nullptr) report->description = exception.bstrDescription;
  }
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrHelpFile);
  return raised ? exception.scode : status;
}

HRESULT Subject::Call(const std::string& member, INVOKEKIND kind, const std::string& words) const {
  HRESULT status = E_FAIL;
  Answer(member, kind, Arguments(words), &status);
  return status;
}

std::string Subject::Answer(const std::string& member, INVOKEKIND kind, const Arguments& arguments,
                            HRESULT* status) const {
  const MemberRow* const row = FindMember(class_row_, member, kind);
  if (row == nullptr || row->parameters.Count() != arguments.Count()) {
    *status = E_INVALIDARG;
    return "(no such call)";
  }
  std::vector<VARIANT> values(arguments.Get(), arguments.Get() + arguments.Count());
  VARIANT result;
  *status = Call(*row, values.data(), &result);
  std::string shown = Shown(result);
  VariantClear(&result);
  return shown;
}

std::string Subject::Snapshot() const {
  std::string all;
  const InterfaceTable& table = *class_row_.default_interface;
  for (unsigned i = 0; i < table.member_count; ++i) {
    const MemberRow& row = table.members[i];
    if (row.kind != kGet || row.parameters.Count() != 0) continue;
    VARIANT result;
    const HRESULT status = Call(row, nullptr, &result);
    char code[16];
    std::snprintf(code, sizeof code, "%08X", static_cast<unsigned>(status));
    all += Plain(row.name) + "=" + code + " " + Shown(result) + "\n";
    VariantClear(&result);
  }
  return all;
}

std::string Shown(const VARIANT& value) {
  const auto hex = [](const uint8_t* bytes, size_t count) {
    // Of long values the start and a sum.
    constexpr size_t kShown = 256;
    std::string text;
    char two[4];
    if (count > kShown) {
      uint32_t sum = 0;
      for (size_t i = 0; i < count; ++i) sum = sum * 31 + bytes[i];
      text = std::to_string(count) + " bytes, sum " + std::to_string(sum) + ": ";
      count = kShown;
    }
    for (size_t i = 0; i < count; ++i) {
      std::snprintf(two, sizeof two, "%02X", bytes[i]);
      text += two;
    }
    return text;
  };
  switch (V_VT(&value)) {
    case VT_EMPTY:
      return "(empty)";
    case VT_BSTR:
      if (value.bstrVal == nullptr) return "(null text)";
      return "text " +
             hex(reinterpret_cast<const uint8_t*>(value.bstrVal), SysStringByteLen(value.bstrVal));
    case VT_ARRAY | VT_UI1: {
      const Bytes bytes = BytesOfArray(value);
      return "bytes " + hex(bytes.data(), bytes.size());
    }
    case VT_I4:
      return "i4 " + std::to_string(value.lVal);
    case VT_BOOL:
      return "bool " + std::to_string(value.boolVal);
    case VT_UNKNOWN:
    case VT_DISPATCH:
      return value.punkVal == nullptr ? "(no object)" : "object";
    default:
      return "type " + std::to_string(V_VT(&value));
  }
}

PlannedChance::PlannedChance() {
  Restart();
  MiroltaSetClock(&kClock);
  SetRandomSource(&kSource);
}
PlannedChance::~PlannedChance() {
  SetRandomSource(nullptr);
  MiroltaSetClock(nullptr);
}
void PlannedChance::Restart() {
  ticks = 0;
  sequence = 62;
}

LockBalance::LockBalance() {
  entered = 0;
  held = 0;
  MiroltaSetLockProbe(&kProbe);
}
LockBalance::~LockBalance() {
  MiroltaSetLockProbe(nullptr);
}
int LockBalance::Entered() const {
  return entered;
}
int LockBalance::Held() const {
  return held;
}

}  // namespace mirolta::test
