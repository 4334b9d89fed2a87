// What the tests of the stream filters share: a target stream with scripted failures,
// filters as early-bound clients hold them, and whole-buffer results of an independent library.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "bstr.h"
#include "digest_peer.h"
#include "error_slot.h"
#include "memory_streams.h"
#include "mirolta.h"
#include "owned_value.h"
#include "test_values.h"
#include "tovi_stream_crypt.h"
#include "tovi_stream_digest.h"

namespace mirolta::test {

constexpr ULONG kUntouched = 0xA5A5A5A5u;
constexpr ULONGLONG kUntouchedTotal = 0xA5A5A5A5A5A5A5A5u;
constexpr HRESULT kStreamFailure = STG_E_READFAULT;

// A stream over a vector with scripted results. Calls are counted; hooks run first.
class ScriptedStream : public IStream {
 public:
  explicit ScriptedStream(Bytes bytes = {}) : content(std::move(bytes)) {}
  virtual ~ScriptedStream() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown &&
        (!is_stream || (iid != IID_IStream && iid != IID_ISequentialStream))) {
      return E_NOINTERFACE;
    }
    *out = static_cast<IStream*>(this);
    AddRef();
    return S_OK;
  }
  // Counted only: the test owns the stream and checks the count.
  ULONG STDMETHODCALLTYPE AddRef() override {
    return static_cast<ULONG>(InterlockedIncrement(&references));
  }
  ULONG STDMETHODCALLTYPE Release() override {
    return static_cast<ULONG>(InterlockedDecrement(&references));
  }

  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read) override {
    if (bytes == nullptr) return STG_E_INVALIDPOINTER;
    read_sizes.push_back(count);
    if (on_read) on_read();
    const bool fails = read_sizes.size() == failing_read;
    const size_t left = content.size() - position;
    ULONG got = static_cast<ULONG>(std::min<size_t>({count, left, largest_read}));
    if (fails) got = std::min(got, moved_by_failure);
    if (got != 0) std::memcpy(bytes, content.data() + position, got);
    position += got;
    if (read != nullptr) *read = got + excess_report;
    if (fails) return failure;
    return got < count ? short_read_status : S_OK;
  }
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override {
    if (bytes == nullptr) return STG_E_INVALIDPOINTER;
    write_sizes.push_back(count);
    if (on_write) on_write();
    const bool fails = write_sizes.size() == failing_write;
    ULONG put = static_cast<ULONG>(std::min<size_t>(count, largest_write));
    if (fails) put = std::min(put, moved_by_failure);
    const uint8_t* const from = static_cast<const uint8_t*>(bytes);
    content.insert(content.end(), from, from + put);
    if (written != nullptr) *written = put + excess_report;
    return fails ? failure : write_status;
  }
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* to) override {
    Note("Seek", static_cast<ULONGLONG>(move.QuadPart), origin, 0);
    if (to != nullptr) to->QuadPart = position;
    return pass_status;
  }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
    return Note("SetSize", size.QuadPart, 0, 0);
  }
  HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                   ULARGE_INTEGER*) override {
    return Note("CopyTo", 0, 0, 0);
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override { return Note("Commit", flags, 0, 0); }
  HRESULT STDMETHODCALLTYPE Revert() override { return Note("Revert", 0, 0, 0); }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                       DWORD type) override {
    return Note("LockRegion", offset.QuadPart, count.QuadPart, type);
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                         DWORD type) override {
    return Note("UnlockRegion", offset.QuadPart, count.QuadPart, type);
  }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* statistics, DWORD flags) override {
    Note("Stat", flags, 0, 0);
    if (statistics != nullptr) statistics->cbSize.QuadPart = content.size();
    return pass_status;
  }
  HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return Note("Clone", 0, 0, 0); }

  Bytes content;  // read at position, written at the end
  size_t position = 0;
  size_t largest_read = SIZE_MAX;
  size_t largest_write = SIZE_MAX;
  HRESULT short_read_status = S_FALSE;
  HRESULT write_status = S_OK;
  HRESULT pass_status = S_OK;
  size_t failing_read = 0;  // which call, from 1 on
  size_t failing_write = 0;
  HRESULT failure = kStreamFailure;
  ULONG moved_by_failure = 0;
  ULONG excess_report = 0;  // bytes reported beyond those moved
  bool is_stream = true;
  std::function<void()> on_read;
  std::function<void()> on_write;
  std::function<void()> on_pass;

  std::vector<ULONG> read_sizes;
  std::vector<ULONG> write_sizes;
  std::vector<std::string> passed;  // the other calls, with their arguments
  LONG volatile references = 1;

 private:
  HRESULT Note(const char* name, ULONGLONG a, ULONGLONG b, ULONGLONG c) {
    passed.push_back(std::string(name) + " " + std::to_string(a) + " " + std::to_string(b) + " " +
                     std::to_string(c));
    if (on_pass) on_pass();
    return pass_status;
  }
};

// An object that is no stream but hands one out.
class ScriptedSource : public IToviStreamSource {
 public:
  virtual ~ScriptedSource() = default;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IToviStreamSource) return E_NOINTERFACE;
    *out = static_cast<IToviStreamSource*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }
  HRESULT STDMETHODCALLTYPE GetStream(IStream** out) override {
    *out = stream;
    if (stream != nullptr && SUCCEEDED(status)) stream->AddRef();
    return status;
  }

  IStream* stream = nullptr;
  HRESULT status = S_OK;
  LONG references = 1;
};

// A filter in the two interfaces that clients use.
template <typename Dual>
struct FilterTraits;
template <>
struct FilterTraits<IToviStreamDigest> {
  static constexpr auto kCreate = CreateToviStreamDigest;
  static constexpr const IID& kIid = IID_IToviStreamDigest;
};
template <>
struct FilterTraits<IToviStreamCrypt> {
  static constexpr auto kCreate = CreateToviStreamCrypt;
  static constexpr const IID& kIid = IID_IToviStreamCrypt;
};

template <typename Dual>
class Filter {
 public:
  Filter() {
    void* out = nullptr;
    EXPECT_EQ(FilterTraits<Dual>::kCreate(nullptr, FilterTraits<Dual>::kIid, &out), S_OK);
    dual_.Attach(static_cast<Dual*>(out));
    EXPECT_EQ(stream_.Query(dual_.Get(), IID_IStream), S_OK);
  }
  explicit Filter(IUnknown* target) : Filter() { EXPECT_EQ(dual_->putref_Stream(target), S_OK); }

  Dual* operator->() const { return dual_.Get(); }
  IStream* Stream() const { return stream_.Get(); }

 private:
  OwnedReference<Dual> dual_;
  OwnedReference<IStream> stream_;
};
using BothFilters = testing::Types<IToviStreamDigest, IToviStreamCrypt>;
using DigestFilter = Filter<IToviStreamDigest>;
using CryptFilter = Filter<IToviStreamCrypt>;

// The bytes of an array as the filters return it.
inline Bytes ReturnedBytes(const VARIANT& value) {
  EXPECT_EQ(V_VT(&value), VT_ARRAY | VT_UI1);
  if (V_VT(&value) != (VT_ARRAY | VT_UI1)) return {};
  LONG lower = -1;
  EXPECT_EQ(SafeArrayGetLBound(V_ARRAY(&value), 1, &lower), S_OK);
  EXPECT_EQ(lower, 0);
  return BytesOfArray(value);
}

// The peer's digest of a whole buffer, as the classes write it.
inline Text PeerText(const OLECHAR* name, const Bytes& bytes) {
  Text text;
  for (const char digit : HexOf(PeerDigest(name, bytes))) {
    text += static_cast<OLECHAR>(std::toupper(digit));
  }
  return text;
}

// The peer's block-by-block AES of a whole buffer, filled up with `pad`.
inline Bytes PeerAes(const Bytes& key, Bytes bytes, bool encrypt, uint8_t pad = 0) {
  while (bytes.size() % 16 != 0) bytes.push_back(pad);
  const EVP_CIPHER* const cipher = key.size() == 16   ? EVP_aes_128_ecb()
                                   : key.size() == 24 ? EVP_aes_192_ecb()
                                                      : EVP_aes_256_ecb();
  EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
  Bytes out(bytes.size() + 16);
  int length = 0;
  EXPECT_EQ(EVP_CipherInit_ex(context, cipher, nullptr, key.data(), nullptr, encrypt ? 1 : 0), 1);
  EVP_CIPHER_CTX_set_padding(context, 0);
  EXPECT_EQ(
      EVP_CipherUpdate(context, out.data(), &length, bytes.data(), static_cast<int>(bytes.size())),
      1);
  EVP_CIPHER_CTX_free(context);
  out.resize(static_cast<size_t>(length));
  return out;
}

// Reads once with room for count bytes; the bytes got.
inline Bytes ReadOnce(IStream* stream, ULONG count, HRESULT expected = S_OK) {
  Bytes bytes(count + 1u);
  ULONG got = kUntouched;
  EXPECT_EQ(stream->Read(bytes.data(), count, &got), expected);
  EXPECT_LE(got, count);
  bytes.resize(std::min(got, count));
  return bytes;
}
inline HRESULT WriteAll(IStream* stream, const Bytes& bytes, ULONG* written = nullptr) {
  static const uint8_t kNothing = 0;
  return stream->Write(bytes.empty() ? &kNothing : bytes.data(), static_cast<ULONG>(bytes.size()),
                       written);
}
inline LARGE_INTEGER Move(LONGLONG value) {
  LARGE_INTEGER large;
  large.QuadPart = value;
  return large;
}

}  // namespace mirolta::test
