#include "known_answers.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "memory_streams.h"

namespace mirolta::test {

namespace {

// What a property shows something of.
enum class Holder { kNothing, kEngine, kReadEngine, kWriteEngine, kStream, kNumber };

// The properties that fail where their holder has nothing; the others never do.
struct PropertyRow {
  const char* class_name;
  const char* property;
  Holder holder;
  HRESULT without;
};

constexpr HRESULT kNoStreamYet = static_cast<HRESULT>(0x80042776);
constexpr HRESULT kNotInitialized = static_cast<HRESULT>(0x80042778);
constexpr HRESULT kBareNotInitialized = 10104;

constexpr PropertyRow kProperties[] = {
    {"HashObject", "Value", Holder::kEngine, kBareNotInitialized},
    {"HashObject", "BinaryValue", Holder::kEngine, kBareNotInitialized},
    {"HashObject", "HashSize", Holder::kEngine, kNotInitialized},
    {"HashObject", "BlockSize", Holder::kEngine, kNotInitialized},
    {"HashObject", "Key", Holder::kEngine, kNotInitialized},
    {"SymmetricCryptObject", "Key", Holder::kEngine, kNotInitialized},
    {"SymmetricCryptObject", "BlockSize", Holder::kEngine, kNotInitialized},
    {"SymmetricCryptObject", "PadType", Holder::kEngine, kNotInitialized},
    // Zero has no text.
    {"PexBigNumber", "Value", Holder::kNumber, E_OUTOFMEMORY},
    {"PexBigNumber", "Hex", Holder::kNumber, E_OUTOFMEMORY},
    {"ToviStreamDigest", "Stream", Holder::kStream, kNoStreamYet},
    {"ToviStreamDigest", "ReadKey", Holder::kReadEngine, kNotInitialized},
    {"ToviStreamDigest", "WriteKey", Holder::kWriteEngine, kNotInitialized},
    {"ToviStreamDigest", "ReadValue", Holder::kReadEngine, kBareNotInitialized},
    {"ToviStreamDigest", "WriteValue", Holder::kWriteEngine, kBareNotInitialized},
    {"ToviStreamDigest", "ReadBinaryValue", Holder::kReadEngine, kBareNotInitialized},
    {"ToviStreamDigest", "WriteBinaryValue", Holder::kWriteEngine, kBareNotInitialized},
    {"ToviStreamCrypt", "Stream", Holder::kStream, kNoStreamYet},
    {"ToviStreamCrypt", "ReadKey", Holder::kReadEngine, kNotInitialized},
    {"ToviStreamCrypt", "WriteKey", Holder::kWriteEngine, kNotInitialized},
};

// The members that fill a holder, or leave it empty when they fail.
struct FillerRow {
  const char* member;
  Holder holder;
};
constexpr FillerRow kFillers[] = {
    {"HashObject.InitHash", Holder::kEngine},
    {"SymmetricCryptObject.Init", Holder::kEngine},
    {"ToviStreamDigest.ReadAlgorithm put", Holder::kReadEngine},
    {"ToviStreamDigest.WriteAlgorithm put", Holder::kWriteEngine},
    {"ToviStreamDigest.Stream putref", Holder::kStream},
    {"ToviStreamCrypt.ReadAlgorithm put", Holder::kReadEngine},
    {"ToviStreamCrypt.WriteAlgorithm put", Holder::kWriteEngine},
    {"ToviStreamCrypt.Stream putref", Holder::kStream},
};

enum class Content { kNone, kSome, kAny };

Content ContentAfter(Holder holder, const Member& member, State state, const Outcome& outcome) {
  const Content before = state == State::kReady ? Content::kSome : Content::kNone;
  if (!outcome.called) return before;
  if (holder == Holder::kNumber) return SUCCEEDED(outcome.status) ? Content::kAny : before;
  for (const FillerRow& row : kFillers) {
    if (member.Name() != row.member || holder != row.holder) continue;
    // An object that is none is refused before the old one goes.
    if (outcome.status == E_POINTER) return before;
    return SUCCEEDED(outcome.status) ? Content::kSome : Content::kNone;
  }
  return before;
}

// Calls that fail before they touch anything, or put everything back.
bool ChangesNothing(const Member& member, State state, const Outcome& outcome) {
  if (!outcome.called) return true;
  if (SUCCEEDED(outcome.status)) return false;
  if (member.ClassName() == "PexBigNumber" || member.ClassName() == "RSACrypt") return true;
  return state == State::kFresh && outcome.status == kNotInitialized;
}

// What an untouched object of a class reads as.
const std::string& Untouched(const Member& member, State state) {
  static std::map<std::pair<std::string, State>, std::string> known;
  std::string& snapshot = known[{member.ClassName(), state}];
  if (snapshot.empty()) {
    PlannedChance::Restart();
    snapshot = Subject(*member.class_row, state).Snapshot();
  }
  return snapshot;
}

void ExpectStatus(const std::string& class_name, const std::string& property, HRESULT status,
                  const Member& member, State state, const Outcome& outcome) {
  for (const PropertyRow& row : kProperties) {
    if (class_name != row.class_name || property != row.property) continue;
    const Content content = ContentAfter(row.holder, member, state, outcome);
    if (content == Content::kAny && status == row.without) return;
    EXPECT_EQ(status, content == Content::kNone ? row.without : S_OK) << property;
    return;
  }
  EXPECT_EQ(status, S_OK) << property;
}

// --- Tasks
// ----------------------------------------------------------------------------------------

struct TaskStep {
  const char* class_name;
  const char* member;
  INVOKEKIND kind;
  const char* words;
  const char* answer;  // as Shown has it; null for nothing but success
};

constexpr char kAesKey[] = "x000102030405060708090A0B0C0D0E0F";
constexpr char kAesEncrypt[] = "x00112233445566778899AABBCCDDEEFF B-1";
constexpr char kAesDecrypt[] = "x69C4E0D86A7B0430D8CDB78070B4C55A B-1";

// FIPS 180-2, the digests of abc; FIPS 197, C.1; the numbers of RSA are those of the usual small
// example, p = 61 and q = 53.
constexpr TaskStep kTasks[] = {
    {"HashObject", "codePage", kPut, "i0", nullptr},
    {"HashObject", "InitHash", kMethod, "t:SHA256", nullptr},
    {"HashObject", "HashData", kMethod, "t:abc i-1", nullptr},
    {"HashObject", "BinaryValue", kGet, "",
     "bytes BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"},
    {"SymmetricCryptObject", "Init", kMethod, "t:AES", nullptr},
    {"SymmetricCryptObject", "Key", kPut, kAesKey, nullptr},
    {"SymmetricCryptObject", "Encrypt", kMethod, kAesEncrypt,
     "bytes 69C4E0D86A7B0430D8CDB78070B4C55A"},
    {"SymmetricCryptObject", "Decrypt", kMethod, kAesDecrypt,
     "bytes 00112233445566778899AABBCCDDEEFF"},
    {"PexBigNumber", "Value", kPut, "t:12345678901234567890", nullptr},
    {"PexBigNumber", "Binary", kGet, "", "bytes AB54A98CEB1F0AD2"},
    {"RSACrypt", "Reset", kMethod, "", nullptr},
    {"RSACrypt", "Modulus", kPut, "x0CA1", nullptr},
    {"RSACrypt", "PublicExp", kPut, "i17", nullptr},
    {"RSACrypt", "SecretExp", kPut, "i2753", nullptr},
    {"RSACrypt", "Encrypt", kMethod, "x41", "bytes 0AE6"},
    {"RSACrypt", "Decrypt", kMethod, "x0AE6", "bytes 41"},
    {"ToviStreamDigest", "WriteAlgorithm", kPut, "t:SHA1", nullptr},
    {"ToviStreamCrypt", "WriteAlgorithm", kPut, "t:AES", nullptr},
    {"ToviStreamCrypt", "WriteKey", kPut, kAesKey, nullptr},
    {"ToviStreamCrypt", "WriteDecrypt", kPut, "B0", nullptr},
};

// Writes to the filter, and returns what arrives in a stream that is bound to it first.
Bytes Passed(const Subject& subject, const Bytes& bytes) {
  Arguments stream("S0");
  HRESULT status = E_FAIL;
  subject.Answer("Stream", kPutRef, stream, &status);
  EXPECT_EQ(status, S_OK);
  OwnedReference<IStream> filter;
  if (subject.Unknown()->QueryInterface(IID_IStream, reinterpret_cast<void**>(filter.Put())) !=
      S_OK) {
    ADD_FAILURE() << "no stream";
    return {};
  }
  ULONG written = 0;
  EXPECT_EQ(filter->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
  EXPECT_EQ(written, bytes.size());
  IStream* const target = static_cast<IStream*>(stream.Get()->punkVal);
  Rewind(target);
  Bytes arrived(64);
  ULONG read = 0;
  EXPECT_TRUE(SUCCEEDED(target->Read(arrived.data(), static_cast<ULONG>(arrived.size()), &read)));
  arrived.resize(read);
  return arrived;
}

}  // namespace

void ExpectReadable(const Subject& subject, const Member& member, State state,
                    const Outcome& outcome) {
  const std::string snapshot = subject.Snapshot();
  if (ChangesNothing(member, state, outcome)) {
    EXPECT_EQ(snapshot, Untouched(member, state));
  }
  std::istringstream lines(snapshot);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const size_t equals = line.find('=');
    const HRESULT status =
        static_cast<HRESULT>(std::stoul(line.substr(equals + 1, 8), nullptr, 16));
    ExpectStatus(member.ClassName(), line.substr(0, equals), status, member, state, outcome);
  }
  EXPECT_GT(count, 0);
}

void ExpectKnownAnswer(const Subject& subject, const std::string& class_name) {
  int steps = 0;
  for (const TaskStep& step : kTasks) {
    if (class_name != step.class_name) continue;
    ++steps;
    HRESULT status = E_FAIL;
    const std::string answer =
        subject.Answer(step.member, step.kind, Arguments(step.words), &status);
    EXPECT_EQ(status, S_OK) << step.member << " " << step.words;
    if (step.answer != nullptr) {
      EXPECT_EQ(answer, step.answer) << step.member;
    }
  }
  EXPECT_GT(steps, 0) << "no task for " << class_name;
  const auto plaintext = [] {
    Bytes bytes;
    for (int i = 0; i < 16; ++i) bytes.push_back(static_cast<uint8_t>(i * 0x11));
    return bytes;
  };
  if (class_name == "ToviStreamDigest") {
    EXPECT_EQ(Passed(subject, BytesOf("abc")), BytesOf("abc"));
    HRESULT status = E_FAIL;
    EXPECT_EQ(subject.Answer("WriteBinaryValue", kGet, Arguments(""), &status),
              "bytes A9993E364706816ABA3E25717850C26C9CD0D89D");
  }
  if (class_name == "ToviStreamCrypt") {
    EXPECT_EQ(Passed(subject, plaintext()),
              (Bytes{0x69, 0xC4, 0xE0, 0xD8, 0x6A, 0x7B, 0x04, 0x30, 0xD8, 0xCD, 0xB7, 0x80, 0x70,
                     0xB4, 0xC5, 0x5A}));
  }
}

}  // namespace mirolta::test
