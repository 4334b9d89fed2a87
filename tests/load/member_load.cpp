// Members of objects of all classes, called from eight threads as often as one likes, with memory that does not
// grow: own objects and shared ones, early and late bound, with their creation and release, and numbers that
// pass from thread to thread. Every result is compared with a known answer.
//
//   member_load              10^6 calls
//   member_load CALLS        as many, at least
//   member_load CALLS leak   keeps an array of 4000 bytes for every 1000 calls, which must be seen
#include <algorithm>
#include <atomic>
#include <barrier>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "member_calls.h"
#include "portable/registry_mode.h"

namespace mirolta::test {
namespace {

constexpr unsigned kThreads = 8;
constexpr int kSamples = 10;
// What the resident memory may grow by after the first fifth of the calls.
constexpr long kMostGrowth = 1 << 20;
constexpr uint64_t kCallsPerLeak = 1000;
constexpr size_t kLeak = 4000;

// A call with its answer, both as Arguments reads them. A step "IStream.Write" writes its bytes through the object,
// whose stream has been rewound.
struct StepRow {
  const char* member;
  const char* words;
  const char* answer;  // "" for none
};

constexpr char kKey[] = "x000102030405060708090A0B0C0D0E0F";
constexpr char kPlaintext[] = "x00112233445566778899AABBCCDDEEFF";
constexpr char kAbc[] = "xBA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD";

// Every step leaves its object so that those of other threads give the same answers.
// FIPS 180-2, the digests of abc; FIPS 197, C.1; of RSA the usual small example, p = 61 and q = 53.
constexpr StepRow kPreparations[] = {
    {"HashObject.InitHash", "t:SHA256", ""},
    {"HashObject.HashData", "t:abc i20127", ""},
    {"SymmetricCryptObject.Init", "t:AES", ""},
    {"SymmetricCryptObject.Key put", kKey, ""},
    {"SymmetricCryptObject.PadType put", "i4", ""},
    {"PexBigNumber.Value put", "t:12345678901234567890", ""},
    {"RSACrypt.Modulus put", "x0CA1", ""},
    {"RSACrypt.PublicExp put", "i17", ""},
    {"RSACrypt.SecretExp put", "i2753", ""},
    {"RSACrypt.P put", "i61", ""},
    {"RSACrypt.Q put", "i53", ""},
    {"ToviStreamDigest.Stream putref", "S0", ""},
    {"ToviStreamDigest.SeekingForbidden put", "B0", ""},
    {"ToviStreamDigest.WriteAlgorithm put", "t:SHA1", ""},
    {"ToviStreamCrypt.Stream putref", "S0", ""},
    {"ToviStreamCrypt.WriteAlgorithm put", "t:AES", ""},
    {"ToviStreamCrypt.WriteKey put", kKey, ""},
    {"ToviStreamCrypt.WriteDecrypt put", "B0", ""},
};
constexpr StepRow kSteps[] = {
    {"HashObject.HashData", "t:abc i20127", ""},
    {"HashObject.BinaryValue get", "", kAbc},
    {"HashObject.HashSize get", "", "i32"},
    {"HashObject.codePage put", "i65001", ""},
    {"HashObject.codePage get", "", "i65001"},
    {"SymmetricCryptObject.Encrypt", "x00112233445566778899AABBCCDDEEFF B-1",
     "x69C4E0D86A7B0430D8CDB78070B4C55A"},
    {"SymmetricCryptObject.Decrypt", "x69C4E0D86A7B0430D8CDB78070B4C55A B-1", kPlaintext},
    {"SymmetricCryptObject.Key get", "", kKey},
    {"SymmetricCryptObject.BlockSize get", "", "i16"},
    {"RSACrypt.Encrypt", "x41", "x0AE6"},
    {"RSACrypt.Decrypt", "x0AE6", "x41"},
    {"RSACrypt.BlockSize get", "", "i1"},
    {"RSACrypt.PublicExp get", "", "x11"},
    {"ToviStreamDigest.WriteAlgorithm get", "", "t:SHA1"},
    {"ToviStreamDigest.codePage put", "i0", ""},
    {"ToviStreamDigest.SeekingForbidden get", "", "B0"},
    {"ToviStreamCrypt.WriteKey get", "", kKey},
    {"ToviStreamCrypt.WriteAlgorithm get", "", "t:AES"},
    {"ToviStreamCrypt.WriteDecrypt get", "", "B0"},
};
// Those of which one thread's change another's answer: for own objects only.
constexpr StepRow kOwnSteps[] = {
    {"HashObject.Key put", kKey, ""},
    {"HashObject.Key get", "", kKey},
    {"HashObject.ResetKey", "", ""},
    {"PexBigNumber.Hex get", "", "t:ab54a98ceb1f0ad2"},
    {"PexBigNumber.Mul", "i10", "t:123456789012345678900"},
    {"PexBigNumber.Mod", "i1000", "t:890"},
    {"PexBigNumber.Cmp", "i5", "i1"},
    {"PexBigNumber.Inc", "i1", ""},
    {"PexBigNumber.Dec", "i1", ""},
    {"PexBigNumber.Value get", "", "t:12345678901234567890"},
    {"RSACrypt.DecryptPQ", "x0AE6", "x41"},
    {"ToviStreamDigest.WriteReset", "", ""},
    {"IStream.Write", "x616263", ""},
    {"ToviStreamDigest.WriteBinaryValue get", "", "xA9993E364706816ABA3E25717850C26C9CD0D89D"},
    {"IStream.Write", kPlaintext, ""},
};

bool IsSame(const VARIANT& a, const VARIANT& b) {
  if (V_VT(&a) != V_VT(&b)) return false;
  switch (V_VT(&a)) {
    case VT_EMPTY:
      return true;
    case VT_I4:
      return a.lVal == b.lVal;
    case VT_BOOL:
      return a.boolVal == b.boolVal;
    case VT_BSTR:
      return SysStringByteLen(a.bstrVal) == SysStringByteLen(b.bstrVal) &&
             std::memcmp(a.bstrVal, b.bstrVal, SysStringByteLen(a.bstrVal)) == 0;
    case VT_ARRAY | VT_UI1:
      return a.parray->rgsabound[0].cElements == b.parray->rgsabound[0].cElements &&
             std::memcmp(a.parray->pvData, b.parray->pvData, a.parray->rgsabound[0].cElements) == 0;
    default:
      return false;
  }
}

// A step with the arguments of one thread, in both orders.
struct Step {
  explicit Step(const StepRow& step)
      : member(std::strcmp(step.member, "IStream.Write") == 0 ? nullptr
                                                              : &MemberNamed(step.member)),
        arguments(step.words),
        answer(step.answer) {
    reversed.assign(arguments.Get(), arguments.Get() + arguments.Count());
    std::reverse(reversed.begin(), reversed.end());
  }
  const Member* member;  // null: IStream.Write
  Arguments arguments;
  Arguments answer;
  std::vector<VARIANT> reversed;  // not owned
};

// The steps of a class from a table, for one thread.
template <size_t kCount>
std::vector<std::unique_ptr<Step>> StepsOf(const StepRow (&rows)[kCount], const std::string& name) {
  std::vector<std::unique_ptr<Step>> steps;
  bool is_class = false;
  for (const StepRow& row : rows) {
    // Writes belong to the class before them.
    if (std::strcmp(row.member, "IStream.Write") != 0)
      is_class = MemberNamed(row.member).ClassName() == name;
    if (is_class) steps.push_back(std::make_unique<Step>(row));
  }
  return steps;
}

// A class with what one thread calls of it, and the object that all threads share.
struct Work {
  const ClassTableRow* class_row;
  std::vector<std::unique_ptr<Step>> preparations;
  std::vector<std::unique_ptr<Step>> steps;
  std::vector<std::unique_ptr<Step>> own_steps;
  const Subject* shared;  // null for numbers, which have no lock
};

Work WorkOf(const ClassTableRow* class_row) {
  const std::string name = Plain(class_row->name);
  return {class_row, StepsOf(kPreparations, name), StepsOf(kSteps, name), StepsOf(kOwnSteps, name),
          nullptr};
}

struct Counts {
  uint64_t early = 0, late = 0, objects = 0, wrong = 0;
};

// The number that threads take from each other.
std::atomic<IUnknown*> passed{nullptr};

void Pass(IUnknown* number) {
  IUnknown* const other = passed.exchange(number);
  if (other != nullptr) other->Release();
}

// Compares a result, and takes a number's Value for it.
bool IsAnswer(VARIANT* result, const Arguments& answer) {
  if (answer.Count() == 0) return true;
  if (V_VT(result) != VT_DISPATCH || result->pdispVal == nullptr) {
    return IsSame(*result, answer.Get()[0]);
  }
  VARIANT value;
  VariantInit(&value);
  IPexBigNumber* const number = static_cast<IPexBigNumber*>(result->pdispVal);
  const bool is_same = number->get_Value(&value) == S_OK && IsSame(value, answer.Get()[0]);
  VariantClear(&value);
  number->AddRef();
  Pass(number);
  return is_same;
}

bool Write(const Subject& subject, const Step& step, IStream* target) {
  LARGE_INTEGER start = {};
  OwnedReference<IStream> filter;
  const VARIANT& bytes = step.arguments.Get()[0];
  const ULONG count = bytes.parray->rgsabound[0].cElements;
  ULONG written = 0;
  return target->Seek(start, STREAM_SEEK_SET, nullptr) == S_OK &&
         filter.Query(subject.Unknown(), IID_IStream) == S_OK &&
         filter->Write(bytes.parray->pvData, count, &written) == S_OK && written == count;
}

class Caller {
 public:
  explicit Caller(const std::vector<Work>& shared) {
    for (const Work& work : shared) {
      work_.push_back(WorkOf(work.class_row));
      work_.back().shared = work.shared;
    }
  }

  void Run(uint64_t calls) {
    const uint64_t until = Calls() + calls;
    while (Calls() < until) {
      const bool late = ++rounds_ % 2 == 0;
      for (Work& work : work_) {
        const Subject own(*work.class_row, State::kFresh);
        ++counts.objects;
        Do(work.preparations, own, late);
        for (int i = 0; i < 3; ++i) Do(work.own_steps, own, late);
        Do(work.steps, own, late);
        if (work.shared != nullptr) Do(work.steps, *work.shared, late);
      }
    }
  }
  uint64_t Calls() const { return counts.early + counts.late; }

  Counts counts;

 private:
  void Do(const std::vector<std::unique_ptr<Step>>& steps, const Subject& subject, bool late) {
    IStream* target = nullptr;
    for (const auto& one : steps) {
      Step& step = *one;
      if (step.member == nullptr) {
        for (const auto& work : work_) {
          if (work.class_row == &subject.Class()) target = StreamOf(work);
        }
        counts.wrong += target == nullptr || !Write(subject, step, target);
        continue;
      }
      VARIANT result;
      VariantInit(&result);
      const HRESULT status = late ? subject.InvokeReversed(*step.member->row, step.reversed.data(),
                                                           step.arguments.Count(), &result)
                                  : subject.Call(*step.member->row, step.arguments.Get(), &result);
      if (status != S_OK || !IsAnswer(&result, step.answer)) {
        if (counts.wrong++ == 0) {
          std::printf("%s: %08X %s\n", step.member->Name().c_str(), static_cast<unsigned>(status),
                      Shown(result).c_str());
        }
      }
      VariantClear(&result);
      ++(late ? counts.late : counts.early);
    }
  }
  static IStream* StreamOf(const Work& work) {
    for (const auto& step : work.preparations) {
      const VARIANT* const value = step->arguments.Get();
      if (V_VT(value) == VT_UNKNOWN) return static_cast<IStream*>(value->punkVal);
    }
    return nullptr;
  }

  std::vector<Work> work_;
  uint64_t rounds_ = 0;
};

// The resident bytes, by the system's count; -1 where it has none.
long ResidentBytes() {
  std::FILE* const file = std::fopen("/proc/self/status", "r");
  if (file == nullptr) return -1;
  long kilobytes = -1;
  for (char line[256]; kilobytes < 0 && std::fgets(line, sizeof line, file) != nullptr;) {
    if (std::sscanf(line, "VmRSS: %ld kB", &kilobytes) != 1) kilobytes = -1;
  }
  std::fclose(file);
  return kilobytes < 0 ? -1 : kilobytes * 1024;
}

bool Run(uint64_t calls, bool leaks) {
  std::vector<std::unique_ptr<Subject>> objects;
  std::vector<Work> shared;
  bool is_prepared = true;
  for (const ClassTableRow* class_row : AllClasses()) {
    shared.push_back(WorkOf(class_row));
    if (Plain(class_row->name) == "PexBigNumber") continue;
    objects.push_back(std::make_unique<Subject>(*class_row, State::kFresh));
    shared.back().shared = objects.back().get();
    for (const auto& step : shared.back().preparations) {
      VARIANT result;
      is_prepared &=
          objects.back()->Call(*step->member->row, step->arguments.Get(), &result) == S_OK;
    }
  }
  std::vector<std::unique_ptr<Caller>> callers;
  for (unsigned i = 0; i < kThreads; ++i) callers.push_back(std::make_unique<Caller>(shared));

  // All threads stand still while the memory is read.
  long first = 0, most = 0;
  int samples = 0;
  auto sample = [&]() noexcept {
    const long now = ResidentBytes();
    if (++samples <= 2) first = now;
    most = std::max(most, now);
    std::printf("%8.2f million calls: %ld KB resident\n",
                static_cast<double>(calls) / 1e6 * samples / kSamples, now / 1024);
    std::fflush(stdout);
  };
  std::barrier<decltype(sample)> all(kThreads, sample);
  std::vector<std::thread> threads;
  std::vector<std::vector<std::unique_ptr<uint8_t[]>>> arrays(kThreads);
  const uint64_t part = calls / kThreads / kSamples + 1;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int k = 0; k < kSamples; ++k) {
        callers[i]->Run(part);
        for (uint64_t n = 0; leaks && n < part / kCallsPerLeak + 1; ++n) {
          arrays[i].emplace_back(new uint8_t[kLeak]);
          std::memset(arrays[i].back().get(), 1, kLeak);
        }
        all.arrive_and_wait();
      }
      SetErrorInfo(0, nullptr);
    });
  }
  for (std::thread& thread : threads) thread.join();
  Pass(nullptr);
  Counts sum;
  for (const auto& caller : callers) {
    sum.early += caller->counts.early;
    sum.late += caller->counts.late;
    sum.objects += caller->counts.objects;
    sum.wrong += caller->counts.wrong;
  }
  const bool kept_loaded = DllCanUnloadNow() == S_FALSE;
  callers.clear();
  shared.clear();
  objects.clear();
  const bool is_unused = DllCanUnloadNow() == S_OK;
  const bool grows = first <= 0 || most - first > kMostGrowth;
  std::printf("%" PRIu64 " calls early bound, %" PRIu64 " late bound, of %" PRIu64
              " objects and shared ones; %" PRIu64 " wrong\n",
              sum.early, sum.late, sum.objects, sum.wrong);
  std::printf("memory grew by %ld KB after the first fifth, at most %ld may be\n",
              (most - first) / 1024, kMostGrowth / 1024);
  std::printf("%s", is_unused ? "" : "objects are left\n");
  return is_prepared && sum.wrong == 0 && sum.early + sum.late >= calls && kept_loaded &&
         is_unused && grows == leaks;
}

}  // namespace
}  // namespace mirolta::test

int main(int argc, char** argv) {
  using namespace mirolta::test;
  const uint64_t calls = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1000000;
  const bool leaks = argc > 2 && std::strcmp(argv[2], "leak") == 0;
  if (setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1) != 0 ||
      MiroltaRegistryInMemory(TRUE) != ERROR_SUCCESS) {
    return 2;
  }
  const bool holds = Run(calls, leaks);
  std::printf("%s\n", holds ? "ok" : "FAILED");
  return holds ? 0 : 1;
}
