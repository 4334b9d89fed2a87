// The two sides of a filter, reading and writing, by the members that it has once for each; and the
// fixture of the tests that run on both.
#pragma once

#include <optional>
#include <ostream>

#include "stream_test_kit.h"

namespace mirolta::test {

inline const std::optional<Bytes> kNoKey;

// The members that both filters have for each side.
template <typename Dual>
class FilterSide {
 public:
  FilterSide(const Filter<Dual>& filter, bool writes)
      : filter_(filter.operator->()), writes_(writes) {}
  bool Writes() const { return writes_; }
  const char* Label() const { return writes_ ? "writing" : "reading"; }

  HRESULT GetAlgorithm(BSTR* name) const {
    return writes_ ? filter_->get_WriteAlgorithm(name) : filter_->get_ReadAlgorithm(name);
  }
  HRESULT PutAlgorithm(BSTR name) const {
    return writes_ ? filter_->put_WriteAlgorithm(name) : filter_->put_ReadAlgorithm(name);
  }
  HRESULT GetKey(VARIANT* key) const {
    return writes_ ? filter_->get_WriteKey(key) : filter_->get_ReadKey(key);
  }
  HRESULT PutKey(VARIANT key) const {
    return writes_ ? filter_->put_WriteKey(key) : filter_->put_ReadKey(key);
  }
  HRESULT Reset() const { return writes_ ? filter_->WriteReset() : filter_->ReadReset(); }
  HRESULT ResetKey() const { return writes_ ? filter_->WriteResetKey() : filter_->ReadResetKey(); }
  HRESULT Finalize() const { return writes_ ? filter_->WriteFinalize() : filter_->ReadFinalize(); }

  HRESULT Select(const OLECHAR* name) const { return PutAlgorithm(Bstr(name).Get()); }
  Text Algorithm() const {
    OwnedBstr name;
    EXPECT_EQ(GetAlgorithm(name.Put()), S_OK);
    EXPECT_NE(name.Get(), nullptr);
    return TextOf(name.Get());
  }
  HRESULT SetKey(const Bytes& key) const { return PutKey(BytesValue(key)); }
  // The key as it reads back; kNoKey for VT_EMPTY.
  std::optional<Bytes> Key() const {
    OwnedVariant key;
    EXPECT_EQ(GetKey(key.Put()), S_OK);
    if (key.Type() == VT_EMPTY) return std::nullopt;
    return ReturnedBytes(key.Value());
  }

 protected:
  Dual* filter_;
  bool writes_;
};

class DigestSide : public FilterSide<IToviStreamDigest> {
 public:
  using FilterSide::FilterSide;
  HRESULT GetValue(BSTR* text) const {
    return writes_ ? filter_->get_WriteValue(text) : filter_->get_ReadValue(text);
  }
  HRESULT GetBinaryValue(VARIANT* value) const {
    return writes_ ? filter_->get_WriteBinaryValue(value) : filter_->get_ReadBinaryValue(value);
  }
  HRESULT GetEnabled(VARIANT_BOOL* value) const {
    return writes_ ? filter_->get_WriteHashEnable(value) : filter_->get_ReadHashEnable(value);
  }
  HRESULT Enable(VARIANT_BOOL value) const {
    return writes_ ? filter_->put_WriteHashEnable(value) : filter_->put_ReadHashEnable(value);
  }

  void Choose(const OLECHAR* name = OLESTR("SHA256")) const { EXPECT_EQ(Select(name), S_OK); }
  Text Value() const {
    OwnedBstr text;
    EXPECT_EQ(GetValue(text.Put()), S_OK);
    return TextOf(text.Get());
  }
  VARIANT_BOOL Enabled() const {
    VARIANT_BOOL value = 99;
    EXPECT_EQ(GetEnabled(&value), S_OK);
    return value;
  }
};

inline const Bytes kKey = PatternBytes(16, 99);

class CryptSide : public FilterSide<IToviStreamCrypt> {
 public:
  using FilterSide::FilterSide;
  HRESULT GetDecrypts(VARIANT_BOOL* value) const {
    return writes_ ? filter_->get_WriteDecrypt(value) : filter_->get_ReadDecrypt(value);
  }
  HRESULT PutDecrypt(VARIANT_BOOL value) const {
    return writes_ ? filter_->put_WriteDecrypt(value) : filter_->put_ReadDecrypt(value);
  }
  HRESULT GetPad(LONG* pad) const {
    return writes_ ? filter_->get_WritePadType(pad) : filter_->get_ReadPadType(pad);
  }
  HRESULT PutPad(LONG pad) const {
    return writes_ ? filter_->put_WritePadType(pad) : filter_->put_ReadPadType(pad);
  }

  void Choose(const OLECHAR* name = OLESTR("AES"), const Bytes& key = kKey) const {
    EXPECT_EQ(Select(name), S_OK);
    EXPECT_EQ(SetKey(key), S_OK);
  }
  void Decrypt() const { EXPECT_EQ(PutDecrypt(VARIANT_TRUE), S_OK); }
  void Encrypt() const { EXPECT_EQ(PutDecrypt(VARIANT_FALSE), S_OK); }
  // An array of numbers, which has no text either.
  HRESULT SetImpossibleKey() const { return PutKey(ArrayValue(VT_I4, 1, {})); }
  LONG Pad() const {
    LONG value = -77;
    EXPECT_EQ(GetPad(&value), S_OK);
    return value;
  }
  VARIANT_BOOL Decrypts() const {
    VARIANT_BOOL value = 99;
    EXPECT_EQ(GetDecrypts(&value), S_OK);
    return value;
  }
};

// What a transfer returned, and the count that it left: kUntouched if none.
struct Moved {
  HRESULT status;
  ULONG count = kUntouched;
  bool operator==(const Moved&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const Moved& moved) {
  return out << std::hex << "status " << moved.status << ", count 0x" << moved.count << std::dec;
}
inline Moved Write(IStream* stream, const Bytes& bytes) {
  Moved moved = {S_OK};
  moved.status = WriteAll(stream, bytes, &moved.count);
  return moved;
}
inline Moved Read(IStream* stream, void* to, ULONG room) {
  Moved moved = {S_OK};
  moved.status = stream->Read(to, room, &moved.count);
  return moved;
}

// What a copy returned, and the totals that it left: kUntouchedTotal if none.
struct Copied {
  HRESULT status;
  ULONGLONG read = kUntouchedTotal;
  ULONGLONG written = kUntouchedTotal;
  bool operator==(const Copied&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const Copied& copied) {
  return out << std::hex << "status " << copied.status << ", read 0x" << copied.read
             << ", written 0x" << copied.written << std::dec;
}
inline Copied Copy(IStream* from, IStream* to, ULONGLONG count) {
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  ULARGE_INTEGER written = Large(kUntouchedTotal);
  const HRESULT status = from->CopyTo(to, Large(count), &read, &written);
  return {status, read.QuadPart, written.QuadPart};
}

template <typename Dual>
struct SideOf;
template <>
struct SideOf<IToviStreamDigest> {
  using Type = DigestSide;
};
template <>
struct SideOf<IToviStreamCrypt> {
  using Type = CryptSide;
};

template <typename Dual>
typename SideOf<Dual>::Type Reading(const Filter<Dual>& filter) {
  return {filter, false};
}
template <typename Dual>
typename SideOf<Dual>::Type Writing(const Filter<Dual>& filter) {
  return {filter, true};
}

// A filter with a target that is not bound yet.
template <typename Dual>
class FilterTest : public testing::Test {
 protected:
  using Side = typename SideOf<Dual>::Type;

  void Bind() { EXPECT_EQ(filter->putref_Stream(&target), S_OK); }
  IStream* Stream() const { return filter.Stream(); }
  // Runs on both sides; a failure names the side.
  template <typename Run>
  void EachSide(Run run) {
    for (const Side& side : {reading, writing}) {
      SCOPED_TRACE(side.Label());
      run(side);
    }
  }

  ScriptedStream target;
  Filter<Dual> filter;
  Side reading = Reading(filter);
  Side writing = Writing(filter);
};

// A success that no part of a filter returns by itself.
constexpr HRESULT kOtherSuccess = 0x00030200;

}  // namespace mirolta::test
