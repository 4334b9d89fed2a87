// Eight threads at once on one object of every class that locks: any member, any stream operation,
// in any order, early and late bound. The statuses and results that are possible are in
// member_locks.cpp; the thread sanitizer finds races.
#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "member_locks.h"
#include "memory_streams.h"
#include "threads_fixture.h"

namespace mirolta::test {
namespace {

constexpr const char* kLockingClasses[] = {"HashObject", "SymmetricCryptObject", "RSACrypt",
                                           "ToviStreamDigest", "ToviStreamCrypt"};

std::string NameOfClass(const testing::TestParamInfo<const char*>& row) {
  return row.param;
}

// A row of the lock table, read before the threads start: reading it makes and shares texts.
struct Expected {
  std::vector<HRESULT> statuses;
  std::vector<LONG> results;
};

Expected ExpectedOf(const std::string& name) {
  Expected expected;
  const LockRow* const row = LockRowOf(name);
  EXPECT_NE(row, nullptr) << name;
  if (row == nullptr) return expected;
  for (const std::string& word : Words(row->statuses)) expected.statuses.push_back(StatusOf(word));
  for (const std::string& word : Words(row->results)) expected.results.push_back(std::stoi(word));
  return expected;
}

// The number, or how long the text or array is.
LONG MeasureOf(const VARIANT& value) {
  switch (V_VT(&value)) {
    case VT_I4:
      return value.lVal;
    case VT_BOOL:
      return value.boolVal;
    case VT_BSTR:
      return static_cast<LONG>(SysStringLen(value.bstrVal));
    case VT_ARRAY | VT_UI1:
      return static_cast<LONG>(value.parray->rgsabound[0].cElements);
    default:
      return 0;
  }
}

template <typename Value>
bool Has(const std::vector<Value>& values, Value value) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

// One thing a thread can do. Arguments are shared: callers may give the same array to many calls.
struct Deed {
  std::string name;
  const MemberRow* row;
  const StreamOperation* operation;
  std::unique_ptr<Arguments> arguments;
  Expected expected;
};

class SharedObjectTest : public ThreadsTest, public testing::WithParamInterface<const char*> {
 protected:
  void Do(const Subject& subject, const Deed& deed, bool late, IStream* stream, IStream* sink,
          Bytes& buffer) {
    VARIANT result;
    VariantInit(&result);
    HRESULT status = S_OK;
    if (deed.operation != nullptr) {
      status = deed.operation->call(stream, sink, buffer);
    } else if (late) {
      status = subject.Invoke(*deed.row, deed.arguments->Get(), deed.arguments->Count(), &result);
    } else {
      status = subject.Call(*deed.row, deed.arguments->Get(), &result);
    }
    if (!Has(deed.expected.statuses, status)) {
      ADD_FAILURE() << deed.name << (late ? " late " : " ") << std::hex << status;
    } else if (status == S_OK && !deed.expected.results.empty() &&
               !Has(deed.expected.results, MeasureOf(result))) {
      ADD_FAILURE() << deed.name << ": " << Shown(result);
    }
    VariantClear(&result);
  }

  // What is left of the object when all have gone does what a new one does.
  static std::string Used(const Subject& subject) {
    constexpr struct {
      const char* member;
      const char* words;
    } kSteps[] = {
        {"HashObject.InitHash", "t:SHA1"},
        {"HashObject.codePage put", "i0"},
        {"HashObject.Key put", "b40"},
        {"HashObject.HashUpdate", "b70 i-1"},
        {"SymmetricCryptObject.Init", "t:AES"},
        {"SymmetricCryptObject.codePage put", "i0"},
        {"SymmetricCryptObject.Key put", "b32"},
        {"SymmetricCryptObject.Encrypt", "d99 B-1"},
        {"SymmetricCryptObject.Decrypt", "b33 B0"},
        {"RSACrypt.CreateKeys", "h30 h31"},
        {"RSACrypt.Encrypt", "h50"},
        {"RSACrypt.Decrypt", "h50"},
        {"RSACrypt.DecryptPQ", "h50"},
        {"ToviStreamDigest.Stream putref", "S3000"},
        {"ToviStreamDigest.codePage put", "i0"},
        {"ToviStreamDigest.SeekingForbidden put", "B-1"},
        {"ToviStreamDigest.ReadAlgorithm put", "t:MD5"},
        {"ToviStreamDigest.WriteAlgorithm put", "t:SHA256"},
        {"ToviStreamCrypt.Stream putref", "S3000"},
        {"ToviStreamCrypt.codePage put", "i0"},
        {"ToviStreamCrypt.SeekingForbidden put", "B-1"},
        {"ToviStreamCrypt.ReadAlgorithm put", "t:DES"},
        {"ToviStreamCrypt.WriteAlgorithm put", "t:AES"},
        {"ToviStreamCrypt.ReadKey put", "b24"},
        {"ToviStreamCrypt.WriteKey put", "b16"},
        {"ToviStreamCrypt.ReadDecrypt put", "B-1"},
        {"ToviStreamCrypt.WriteDecrypt put", "B0"},
    };
    std::string text;
    for (const auto& step : kSteps) {
      if (MemberNamed(step.member).ClassName() != GetParam()) continue;
      HRESULT status = E_FAIL;
      text += Call(step.member, step.words).On(subject, &status);
      EXPECT_EQ(status, S_OK) << step.member;
    }
    OwnedReference<IStream> stream;
    if (stream.Query(subject.Unknown(), IID_IStream) == S_OK) {
      uint8_t bytes[96] = {};
      ULONG count = 0;
      EXPECT_EQ(stream->Read(bytes, sizeof bytes, &count), S_OK);
      EXPECT_EQ(count, sizeof bytes);
      for (const uint8_t byte : bytes) text += std::to_string(byte) + " ";
      EXPECT_EQ(stream->Write(bytes, sizeof bytes, &count), S_OK);
    }
    return text + subject.Snapshot();
  }
};

TEST_P(SharedObjectTest, MembersOfOneObjectMayBeCalledInAnyOrder) {
  const ClassTableRow& class_row = ClassNamed(GetParam());
  const Subject subject(class_row, State::kReady);
  OwnedReference<IStream> stream;
  stream.Query(subject.Unknown(), IID_IStream);
  // Large keys take seconds, and each random one waits for the clock.
  const bool small_only = std::string(GetParam()) == "RSACrypt";
  const int calls = small_only ? kCalls / 4 : kCalls;
  std::vector<Deed> deeds;
  for (const Member& member : AllMembers()) {
    if (member.class_row != &class_row) continue;
    for (const bool large : {false, true}) {
      if (large && (small_only || member.ParameterCount() == 0)) continue;
      // Ordinary calls three times as often.
      for (int i = 0; i < (large ? 1 : 3); ++i) {
        deeds.push_back({member.Name(), member.row, nullptr,
                         std::make_unique<Arguments>(ArgumentsFor(member, large)),
                         ExpectedOf(member.Name())});
      }
    }
  }
  for (const StreamOperation& operation : StreamOperations()) {
    if (!stream) break;
    const std::string name = StreamOperationName(class_row, operation);
    for (int i = 0; i < 3; ++i) {
      deeds.push_back({name, nullptr, &operation, nullptr, ExpectedOf(name)});
    }
  }
  ASSERT_FALSE(HasFailure());
  const LockBalance locks;
  AllAtOnce(kThreads, [&](unsigned thread) {
    std::mt19937 chance(thread);
    const OwnedReference<IStream> sink = MemoryStream();
    Bytes buffer = StreamBuffer();
    for (int i = 0; i < calls; ++i) {
      const Deed& deed = deeds[chance() % deeds.size()];
      Do(subject, deed, chance() % 2 != 0, stream.Get(), sink.Get(), buffer);
    }
    SetErrorInfo(0, nullptr);
  });
  EXPECT_GT(locks.Entered(), calls);
  EXPECT_EQ(locks.Held(), 0);
  const Subject fresh(class_row, State::kFresh);
  EXPECT_EQ(Used(subject), Used(fresh));
}

INSTANTIATE_TEST_SUITE_P(Classes, SharedObjectTest, testing::ValuesIn(kLockingClasses),
                         NameOfClass);

TEST_F(ThreadsTest, EveryClassThatLocksIsAmongThem) {
  std::set<std::string> locking;
  for (const LockRow& row : LockRows()) {
    if (row.locking != Locking::kObject) continue;
    const std::string name = row.name;
    locking.insert(name.substr(0, name.find_first_of(".:")));
  }
  EXPECT_EQ(locking, std::set<std::string>(std::begin(kLockingClasses), std::end(kLockingClasses)));
}

// Calls whose results are few: whatever the order, one of them is found and nothing else.

struct CallRow {
  const char* member;
  const char* words;
  bool changes;  // if not, its result is compared
};
constexpr CallRow kWholeCalls[] = {
    {"HashObject.InitHash", "t:MD5", true},
    {"HashObject.InitHash", "t:SHA1", true},
    {"HashObject.InitHash", "t:SHA256", true},
    {"HashObject.Key put", "b30", true},
    {"HashObject.Key put", "b100", true},
    {"HashObject.ResetKey", "", true},
    {"HashObject.Reset", "", true},
    {"HashObject.HashData", "b40 i0", true},
    {"HashObject.HashData", "b3000 i0", true},
    {"HashObject.Value get", "", false},
    {"HashObject.BinaryValue get", "", false},
    {"HashObject.HashSize get", "", false},
    {"HashObject.Key get", "", false},
    {"SymmetricCryptObject.Init", "t:AES", true},
    {"SymmetricCryptObject.Init", "t:DES", true},
    {"SymmetricCryptObject.Key put", "b16", true},
    {"SymmetricCryptObject.Key put", "b24", true},
    {"SymmetricCryptObject.ResetKey", "", true},
    {"SymmetricCryptObject.Reset", "i0", true},
    {"SymmetricCryptObject.PadType put", "i0", true},
    {"SymmetricCryptObject.PadType put", "i77", true},
    {"SymmetricCryptObject.Encrypt", "b48 B-1", false},
    {"SymmetricCryptObject.Encrypt", "b45 B-1", false},
    {"SymmetricCryptObject.Decrypt", "b48 B-1", false},
    {"SymmetricCryptObject.Key get", "", false},
    {"SymmetricCryptObject.BlockSize get", "", false},
    {"RSACrypt.CreateKeys", "d3 d4", true},
    {"RSACrypt.CreateKeys", "d6 d5", true},
    {"RSACrypt.Reset", "", true},
    {"RSACrypt.Modulus get", "", false},
    {"RSACrypt.SecretExp get", "", false},
    {"RSACrypt.Encrypt", "h3", false},
    {"RSACrypt.Decrypt", "h3", false},
    {"RSACrypt.DecryptPQ", "h3", false},
    {"RSACrypt.BlockSize get", "", false},
};

class WholeCallsTest : public ThreadsTest, public testing::WithParamInterface<const char*> {};

TEST_P(WholeCallsTest, ResultsAreThoseOfSomeOrderOfCalls) {
  const ClassTableRow& class_row = ClassNamed(GetParam());
  std::vector<Call> changes, reads;
  for (const CallRow& row : kWholeCalls) {
    if (MemberNamed(row.member).class_row != &class_row) continue;
    (row.changes ? changes : reads).emplace_back(row.member, row.words);
  }
  // What any order of changes leads to.
  std::set<std::string> possible;
  {
    std::mt19937 chance(1);
    const Subject subject(class_row, State::kReady);
    changes[0].On(subject);
    for (int i = 0; i < 1000; ++i) {
      changes[chance() % changes.size()].On(subject);
      for (const Call& read : reads) possible.insert(read.On(subject));
    }
    SetErrorInfo(0, nullptr);
  }
  EXPECT_GT(possible.size(), 10u);
  const Subject shared(class_row, State::kReady);
  changes[0].On(shared);
  std::vector<std::string> found[kThreads];
  AllAtOnce(kThreads, [&](unsigned thread) {
    std::mt19937 chance(thread + 10);
    for (int i = 0; i < kCalls; ++i) {
      const bool change = chance() % 3 == 0;
      const std::vector<Call>& calls = change ? changes : reads;
      std::string one = calls[chance() % calls.size()].On(shared);
      if (!change) found[thread].push_back(std::move(one));
    }
    SetErrorInfo(0, nullptr);
  });
  for (const std::vector<std::string>& all : found) {
    for (const std::string& one : all) EXPECT_EQ(possible.count(one), 1u) << one;
  }
}

INSTANTIATE_TEST_SUITE_P(Classes, WholeCallsTest,
                         testing::Values("HashObject", "SymmetricCryptObject", "RSACrypt"),
                         NameOfClass);

}  // namespace
}  // namespace mirolta::test
