#include "member_locks.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "memory_streams.h"
#include "system_rules.h"

namespace mirolta::test {

namespace {

constexpr Locking kObject = Locking::kObject;
constexpr Locking kNone = Locking::kNone;

// Of a target that the system makes; its streams have no regions, but do not say so both times.
constexpr const char* kUnlocked = kPortableRuntime ? "invalid-function" : "ok";

constexpr LockRow kRows[] = {
    // Choosing an algorithm takes the old one away and sets the new one under one lock: nobody
    // finds the object without.
    {"HashObject.Value get", kObject, "ok", "32 40 64"},
    {"HashObject.HashSize get", kObject, "ok", "16 20 32"},
    {"HashObject.BlockSize get", kObject, "ok", "64"},
    {"HashObject.InitHash", kObject, "ok"},
    {"HashObject.HashData", kObject, "ok"},
    {"HashObject.BinaryValue get", kObject, "ok", "16 20 32"},
    {"HashObject.HashUpdate", kObject, "ok"},
    {"HashObject.HashFinalize", kObject, "ok"},
    {"HashObject.codePage get", kObject, "ok", "0 65001 -1"},
    {"HashObject.codePage put", kObject, "ok"},
    {"HashObject.Key get", kObject, "ok", "0 30 60 70 5000"},
    {"HashObject.Key put", kObject, "ok"},
    {"HashObject.Reset", kObject, "ok"},
    {"HashObject.ResetKey", kObject, "ok"},

    // A new engine has no key, and a key of AES may be none of DES. The pad setting belongs to an
    // engine, and is looked for without the lock.
    {"SymmetricCryptObject.Key get", kObject, "ok", "0 16 32"},
    {"SymmetricCryptObject.Key put", kObject, "ok bad-argument"},
    {"SymmetricCryptObject.BlockSize get", kObject, "ok", "8 16"},
    {"SymmetricCryptObject.codePage get", kObject, "ok", "0 65001 -1"},
    {"SymmetricCryptObject.codePage put", kObject, "ok"},
    {"SymmetricCryptObject.Encrypt", kObject, "ok not-initialized"},
    {"SymmetricCryptObject.Decrypt", kObject, "ok not-initialized"},
    {"SymmetricCryptObject.Reset", kObject, "ok"},
    {"SymmetricCryptObject.ResetKey", kObject, "ok"},
    {"SymmetricCryptObject.Init", kObject, "ok"},
    {"SymmetricCryptObject.PadType get", kNone, "ok not-initialized", "0 4 -1"},
    {"SymmetricCryptObject.PadType put", kNone, "ok not-initialized"},

    // Numbers are their callers' to keep apart.
    {"PexBigNumber.Value get", kNone, nullptr},
    {"PexBigNumber.Value put", kNone, nullptr},
    {"PexBigNumber.Hex get", kNone, nullptr},
    {"PexBigNumber.Hex put", kNone, nullptr},
    {"PexBigNumber.Text get", kNone, nullptr},
    {"PexBigNumber.Text put", kNone, nullptr},
    {"PexBigNumber.Binary get", kNone, nullptr},
    {"PexBigNumber.Binary put", kNone, nullptr},
    {"PexBigNumber.Add", kNone, nullptr},
    {"PexBigNumber.Sub", kNone, nullptr},
    {"PexBigNumber.Mul", kNone, nullptr},
    {"PexBigNumber.Div", kNone, nullptr},
    {"PexBigNumber.Mod", kNone, nullptr},
    {"PexBigNumber.Inc", kNone, nullptr},
    {"PexBigNumber.Dec", kNone, nullptr},
    {"PexBigNumber.Cmp", kNone, nullptr},
    {"PexBigNumber.NewNumber", kNone, nullptr},
    {"PexBigNumber.Random", kNone, nullptr},
    {"PexBigNumber.GCD", kNone, nullptr},
    {"PexBigNumber.ModExp", kNone, nullptr},
    {"PexBigNumber.ModInv", kNone, nullptr},

    {"RSACrypt.CreateKeys", kObject, "ok"},
    {"RSACrypt.CreateRandKeys", kObject, "ok"},
    {"RSACrypt.Modulus get", kObject, "ok"},
    {"RSACrypt.Modulus put", kObject, "ok"},
    {"RSACrypt.PublicExp get", kObject, "ok"},
    {"RSACrypt.PublicExp put", kObject, "ok"},
    {"RSACrypt.SecretExp get", kObject, "ok"},
    {"RSACrypt.SecretExp put", kObject, "ok"},
    {"RSACrypt.P get", kObject, "ok"},
    {"RSACrypt.P put", kObject, "ok"},
    {"RSACrypt.Q get", kObject, "ok"},
    {"RSACrypt.Q put", kNone, "ok"},
    {"RSACrypt.Encrypt", kObject, "ok key-not-set too-much-data"},
    {"RSACrypt.Decrypt", kObject, "ok key-not-set"},
    {"RSACrypt.DecryptPQ", kObject, "ok key-not-set"},
    {"RSACrypt.Reset", kObject, "ok"},
    {"RSACrypt.BlockSize get", kObject, "ok"},

    {"ToviStreamDigest.Stream get", kObject, "ok"},
    {"ToviStreamDigest.Stream putref", kObject, "ok"},
    {"ToviStreamDigest.ReadAlgorithm get", kObject, "ok", "3 4 6"},
    {"ToviStreamDigest.ReadAlgorithm put", kObject, "ok"},
    {"ToviStreamDigest.WriteAlgorithm get", kObject, "ok", "3 4 6"},
    {"ToviStreamDigest.WriteAlgorithm put", kObject, "ok"},
    {"ToviStreamDigest.WriteKey get", kObject, "ok", "0 30 60 70 5000"},
    {"ToviStreamDigest.WriteKey put", kObject, "ok"},
    {"ToviStreamDigest.ReadKey get", kObject, "ok", "0 20 30 5000"},
    {"ToviStreamDigest.ReadKey put", kObject, "ok"},
    {"ToviStreamDigest.ReadValue get", kObject, "ok", "32 40 64"},
    {"ToviStreamDigest.WriteValue get", kObject, "ok", "32 40 64"},
    {"ToviStreamDigest.ReadReset", kObject, "ok"},
    {"ToviStreamDigest.WriteReset", kObject, "ok"},
    {"ToviStreamDigest.WriteHashEnable get", kObject, "ok", "0 1 -1"},
    {"ToviStreamDigest.WriteHashEnable put", kNone, "ok"},
    {"ToviStreamDigest.ReadHashEnable get", kObject, "ok", "0 1 -1"},
    {"ToviStreamDigest.ReadHashEnable put", kNone, "ok"},
    {"ToviStreamDigest.WriteResetKey", kObject, "ok"},
    {"ToviStreamDigest.ReadResetKey", kObject, "ok"},
    {"ToviStreamDigest.SeekingForbidden get", kObject, "ok", "0 1 -1"},
    {"ToviStreamDigest.SeekingForbidden put", kObject, "ok"},
    {"ToviStreamDigest.codePage get", kObject, "ok", "0 65001 -1"},
    {"ToviStreamDigest.codePage put", kObject, "ok"},
    {"ToviStreamDigest.WriteFinalize", kObject, "ok"},
    {"ToviStreamDigest.ReadFinalize", kObject, "ok"},
    {"ToviStreamDigest.ReadBinaryValue get", kObject, "ok", "16 20 32"},
    {"ToviStreamDigest.WriteBinaryValue get", kObject, "ok", "16 20 32"},
    // Without digesting a read at the end says what the stream says.
    {"ToviStreamDigest: Read", kObject, "ok false"},
    {"ToviStreamDigest: Write", kObject, "ok"},
    {"ToviStreamDigest: Seek", kObject, "ok"},
    {"ToviStreamDigest: SetSize", kObject, "ok"},
    {"ToviStreamDigest: CopyTo", kObject, "ok"},
    {"ToviStreamDigest: Commit", kObject, "ok"},
    {"ToviStreamDigest: Revert", kObject, "ok"},
    {"ToviStreamDigest: LockRegion", kObject, "invalid-function"},
    {"ToviStreamDigest: UnlockRegion", kObject, kUnlocked},
    {"ToviStreamDigest: Stat", kObject, "ok"},
    {"ToviStreamDigest: Clone", kNone, "not-implemented"},

    {"ToviStreamCrypt.Stream get", kObject, "ok"},
    {"ToviStreamCrypt.Stream putref", kObject, "ok"},
    {"ToviStreamCrypt.ReadAlgorithm get", kObject, "ok", "3"},
    {"ToviStreamCrypt.ReadAlgorithm put", kObject, "ok"},
    {"ToviStreamCrypt.WriteAlgorithm get", kObject, "ok", "3"},
    {"ToviStreamCrypt.WriteAlgorithm put", kObject, "ok"},
    {"ToviStreamCrypt.ReadKey get", kObject, "ok", "0 16 32"},
    {"ToviStreamCrypt.ReadKey put", kObject, "ok bad-argument"},
    {"ToviStreamCrypt.WriteKey get", kObject, "ok", "0 8 16 24"},
    {"ToviStreamCrypt.WriteKey put", kObject, "ok bad-argument"},
    {"ToviStreamCrypt.ReadReset", kObject, "ok"},
    {"ToviStreamCrypt.WriteReset", kObject, "ok"},
    {"ToviStreamCrypt.ReadResetKey", kObject, "ok"},
    {"ToviStreamCrypt.WriteResetKey", kObject, "ok"},
    {"ToviStreamCrypt.SeekingForbidden get", kObject, "ok", "0 1 -1"},
    {"ToviStreamCrypt.SeekingForbidden put", kObject, "ok"},
    {"ToviStreamCrypt.codePage get", kObject, "ok", "0 65001 -1"},
    {"ToviStreamCrypt.codePage put", kObject, "ok"},
    {"ToviStreamCrypt.ReadFinalize", kObject, "ok"},
    {"ToviStreamCrypt.WriteFinalize", kObject, "ok"},
    {"ToviStreamCrypt.WriteDecrypt get", kObject, "ok", "0 -1"},
    {"ToviStreamCrypt.WriteDecrypt put", kObject, "ok"},
    {"ToviStreamCrypt.ReadDecrypt get", kObject, "ok", "0 1 -1"},
    {"ToviStreamCrypt.ReadDecrypt put", kObject, "ok"},
    {"ToviStreamCrypt.ReadPadType get", kNone, "ok", "0 4 -1"},
    {"ToviStreamCrypt.ReadPadType put", kNone, "ok not-initialized"},
    {"ToviStreamCrypt.WritePadType get", kNone, "ok", "0 4 -1"},
    {"ToviStreamCrypt.WritePadType put", kNone, "ok not-initialized"},
    // A side with an algorithm and no key moves nothing.
    {"ToviStreamCrypt: Read", kObject, "ok false unexpected"},
    {"ToviStreamCrypt: Write", kObject, "ok unexpected"},
    {"ToviStreamCrypt: Seek", kObject, "ok"},
    {"ToviStreamCrypt: SetSize", kObject, "ok"},
    {"ToviStreamCrypt: CopyTo", kObject, "ok unexpected"},
    {"ToviStreamCrypt: Commit", kObject, "ok"},
    {"ToviStreamCrypt: Revert", kObject, "ok"},
    {"ToviStreamCrypt: LockRegion", kObject, "invalid-function"},
    {"ToviStreamCrypt: UnlockRegion", kObject, kUnlocked},
    {"ToviStreamCrypt: Stat", kObject, "ok"},
    {"ToviStreamCrypt: Clone", kNone, "not-implemented"},
};

struct Word {
  uint32_t status;
  const char* word;
};
constexpr Word kWords[] = {
    {0x00000000, "ok"},
    {0x00000001, "false"},
    {0x80004001, "not-implemented"},
    {0x80030001, "invalid-function"},
    {0x80042778, "not-initialized"},
    {0x80042779, "key-not-set"},
    {0x8004277A, "too-much-data"},
    {0x80070057, "bad-argument"},
    {0x8000FFFF, "unexpected"},
};

ULONG SizeOf(const Bytes& buffer) {
  return static_cast<ULONG>(buffer.size());
}

constexpr StreamOperation kOperations[] = {
    {"Read",
     [](IStream* stream, IStream*, Bytes& buffer) {
       ULONG count = 0;
       return stream->Read(buffer.data(), SizeOf(buffer), &count);
     }},
    {"Write",
     [](IStream* stream, IStream*, Bytes& buffer) {
       ULONG count = 1;
       return stream->Write(buffer.data(), SizeOf(buffer), &count);
     }},
    {"Seek",
     [](IStream* stream, IStream*, Bytes&) {
       ULARGE_INTEGER position;
       return stream->Seek({}, STREAM_SEEK_CUR, &position);
     }},
    {"SetSize", [](IStream* stream, IStream*,
                   Bytes& buffer) { return stream->SetSize(Large(64 * buffer.size())); }},
    {"CopyTo",
     [](IStream* stream, IStream* sink, Bytes& buffer) {
       return stream->CopyTo(sink, Large(2 * buffer.size()), nullptr, nullptr);
     }},
    {"Commit", [](IStream* stream, IStream*, Bytes&) { return stream->Commit(0); }},
    {"Revert", [](IStream* stream, IStream*, Bytes&) { return stream->Revert(); }},
    {"LockRegion",
     [](IStream* stream, IStream*, Bytes&) { return stream->LockRegion(Large(0), Large(1), 0); }},
    {"UnlockRegion",
     [](IStream* stream, IStream*, Bytes&) { return stream->UnlockRegion(Large(0), Large(1), 0); }},
    {"Stat",
     [](IStream* stream, IStream*, Bytes&) {
       STATSTG statistics = {};
       const HRESULT status = stream->Stat(&statistics, STATFLAG_DEFAULT);
       CoTaskMemFree(statistics.pwcsName);
       return status;
     }},
    {"Clone",
     [](IStream* stream, IStream*, Bytes&) {
       IStream* clone = nullptr;
       return stream->Clone(&clone);
     }},
};

}  // namespace

const std::vector<LockRow>& LockRows() {
  static const std::vector<LockRow> rows(std::begin(kRows), std::end(kRows));
  return rows;
}

const LockRow* LockRowOf(const std::string& name) {
  for (const LockRow& row : kRows) {
    if (name == row.name) return &row;
  }
  return nullptr;
}

HRESULT StatusOf(const std::string& word) {
  for (const Word& one : kWords) {
    if (word == one.word) return static_cast<HRESULT>(one.status);
  }
  std::fprintf(stderr, "no status is called %s\n", word.c_str());
  std::abort();
}

std::vector<std::string> Words(const char* text) {
  std::vector<std::string> words;
  std::istringstream in(text != nullptr ? text : "");
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

const std::vector<StreamOperation>& StreamOperations() {
  static const std::vector<StreamOperation> operations(std::begin(kOperations),
                                                       std::end(kOperations));
  return operations;
}

const std::vector<const ClassTableRow*>& StreamClasses() {
  static const std::vector<const ClassTableRow*> classes = [] {
    std::vector<const ClassTableRow*> streams;
    for (const ClassTableRow* class_row : AllClasses()) {
      const Subject subject(*class_row, State::kFresh);
      OwnedReference<IStream> stream;
      if (stream.Query(subject.Unknown(), IID_IStream) == S_OK) streams.push_back(class_row);
    }
    return streams;
  }();
  return classes;
}

std::string StreamOperationName(const ClassTableRow& class_row, const StreamOperation& operation) {
  return Plain(class_row.name) + ": " + operation.name;
}

}  // namespace mirolta::test
