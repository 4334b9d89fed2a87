#include "object_probe.h"

#include <gtest/gtest.h>

#include "memory_streams.h"
#include "mirolta.h"

namespace mirolta::test {

namespace {

// All of a filter's target.
std::string TargetOf(IStream* filter, const Subject& subject) {
  IUnknown* bound = nullptr;
  OwnedReference<IToviStreamDigest> digest;
  OwnedReference<IToviStreamCrypt> crypt;
  if (digest.Query(filter, IID_IToviStreamDigest) == S_OK) digest->get_Stream(&bound);
  if (crypt.Query(filter, IID_IToviStreamCrypt) == S_OK) crypt->get_Stream(&bound);
  if (bound == nullptr) return "none";
  OwnedReference<IStream> target;
  EXPECT_EQ(target.Query(bound, IID_IStream), S_OK);
  bound->Release();
  const std::string position = std::to_string(Position(target.Get()));
  Rewind(target.Get());
  Bytes content(4000);
  ULONG count = 0;
  target->Read(content.data(), static_cast<ULONG>(content.size()), &count);
  content.resize(count);
  subject.Call("Stream", kPutRef, "S0");
  return "at " + position + " " + HexOf(content);
}

}  // namespace

const std::set<std::string>& MembersThatQueue() {
  static const std::set<std::string> members = {"SymmetricCryptObject.Encrypt",
                                                "SymmetricCryptObject.Decrypt"};
  return members;
}

Bytes Transformed(const Member& member, const Subject& subject, const char* words) {
  Arguments arguments(words);
  VARIANT result;
  subject.Call(*member.row, arguments.Get(), &result);
  const bool given = V_VT(&result) == (VT_ARRAY | VT_UI1);
  Bytes bytes = given ? BytesOfArray(result) : Bytes();
  VariantClear(&result);
  return bytes;
}

std::string Looked(const Member& member, const Subject& subject, const Bytes& taken) {
  std::string text;
  if (member.ClassName() == "HashObject") {
    // More data go on with an open digest, and change nothing of one that is finished.
    subject.Call("HashUpdate", kMethod, "b5 i-1");
  } else if (member.ClassName() == "SymmetricCryptObject") {
    for (const Member& one : AllMembers()) {
      if (MembersThatQueue().count(one.Name()) == 0) continue;
      Bytes bytes = one.Name() == member.Name() ? taken : Bytes();
      const Bytes queued = Transformed(one, subject, "b0 B-1");
      bytes.insert(bytes.end(), queued.begin(), queued.end());
      text += one.Name() + " " + HexOf(bytes) + "\n";
    }
  }
  OwnedReference<IStream> stream;
  if (stream.Query(subject.Unknown(), IID_IStream) != S_OK) return text + subject.Snapshot();
  // Before the snapshot, which finishes digests.
  uint8_t bytes[64] = {};
  ULONG count = 0;
  text += "read " + std::to_string(stream->Read(bytes, 21, &count));
  text += " " + HexOf(Bytes(bytes, bytes + count));
  count = 1;
  text += " write " + std::to_string(stream->Write(bytes, 21, &count)) + "\n";
  text += subject.Snapshot();
  text += "end " + std::to_string(subject.Call("WriteFinalize", kMethod, ""));
  return text + " target " + TargetOf(stream.Get(), subject) + "\n";
}

}  // namespace mirolta::test
