// The IStream of ADODB.Stream: identity, and the contract of byte streams.
#include <gtest/gtest.h>

#include <string>

#include "classes/ado_errors.h"
#include "classes/ado_stream.h"
#include "classes/class_list.h"

namespace mirolta::host {
namespace {

constexpr DISPID kPosition = 3, kOpen = 10, kClose = 11;
constexpr HRESULT kFull = STG_E_MEDIUMFULL;

class AdoBytesTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(CreateHostObject(OLESTR("ADODB.Stream"), &object_), S_OK);
    ASSERT_EQ(stream_.Query(object_.Get(), IID_IStream), S_OK);
    ASSERT_EQ(Call(kOpen), S_OK);
  }

  // Calls a member with up to two arguments.
  HRESULT Call(DISPID id, int32_t second = 0) {
    VARIANT arguments[2] = {};
    arguments[0].vt = VT_I4;
    arguments[0].lVal = second;
    arguments[1].vt = VT_ERROR;
    arguments[1].scode = DISP_E_PARAMNOTFOUND;
    DISPPARAMS params = {arguments, nullptr, second != 0 ? 2u : 0u, 0};
    return object_->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
  }
  double Position() {
    DISPPARAMS none = {};
    ScopedVariant value;
    EXPECT_EQ(object_->Invoke(kPosition, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &value, nullptr,
                              nullptr),
              S_OK);
    return HostCall::NumberOf(value);
  }
  static void Put(IStream* stream, const std::string& text) {
    ULONG written = 77;
    EXPECT_EQ(stream->Write(text.data(), static_cast<ULONG>(text.size()), &written), S_OK);
    EXPECT_EQ(written, text.size());
  }
  static std::string Get(IStream* stream, ULONG count) {
    std::string bytes(count + 1, '#');
    ULONG read = 77;
    EXPECT_EQ(stream->Read(bytes.data(), count, &read), S_OK);
    EXPECT_EQ(bytes[read], '#');
    bytes.resize(read);
    return bytes;
  }
  static HRESULT Seek(IStream* stream, LONGLONG distance, DWORD origin, ULONGLONG* position) {
    LARGE_INTEGER move;
    move.QuadPart = distance;
    ULARGE_INTEGER reached;
    reached.QuadPart = 0;
    const HRESULT status = stream->Seek(move, origin, &reached);
    *position = reached.QuadPart;
    return status;
  }
  static ULONGLONG SeekTo(IStream* stream, LONGLONG distance, DWORD origin = STREAM_SEEK_SET) {
    ULONGLONG position = 0;
    EXPECT_EQ(Seek(stream, distance, origin, &position), S_OK);
    return position;
  }
  static HRESULT SetSize(IStream* stream, ULONGLONG size) {
    ULARGE_INTEGER wanted;
    wanted.QuadPart = size;
    return stream->SetSize(wanted);
  }
  static ULONGLONG SizeOf(IStream* stream) {
    STATSTG statistics = {};
    EXPECT_EQ(stream->Stat(&statistics, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(statistics.type, static_cast<DWORD>(STGTY_STREAM));
    EXPECT_EQ(statistics.pwcsName, nullptr);
    return statistics.cbSize.QuadPart;
  }

  OwnedReference<IDispatch> object_;
  OwnedReference<IStream> stream_;
};

TEST_F(AdoBytesTest, AllInterfacesAreOneObject) {
  constexpr IID kInterfaces[] = {IID_IUnknown, IID_IDispatch, IID_ISequentialStream, IID_IStream};
  IUnknown* const starts[] = {object_.Get(), stream_.Get()};
  OwnedReference<IUnknown> identity;
  ASSERT_EQ(identity.Query(object_.Get(), IID_IUnknown), S_OK);
  for (IUnknown* start : starts) {
    for (const IID& first : kInterfaces) {
      OwnedReference<IUnknown> found, again;
      ASSERT_EQ(found.Query(start, first), S_OK);
      for (const IID& second : kInterfaces) ASSERT_EQ(again.Query(found.Get(), second), S_OK);
      ASSERT_EQ(again.Query(found.Get(), IID_IUnknown), S_OK);
      EXPECT_EQ(again.Get(), identity.Get());
    }
    void* none = &none;
    EXPECT_EQ(start->QueryInterface(IID_IEnumVARIANT, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(start->QueryInterface(IID_IStream, nullptr), E_POINTER);
  }
  EXPECT_EQ(object_->AddRef(), 4u);
  EXPECT_EQ(stream_->Release(), 3u);
}

TEST_F(AdoBytesTest, TheStreamKeepsItsObject) {
  object_.Reset();
  Put(stream_.Get(), "abc");
  EXPECT_EQ(SeekTo(stream_.Get(), 0), 0u);
  EXPECT_EQ(Get(stream_.Get(), 9), "abc");
}

TEST_F(AdoBytesTest, BytesAreReadAndWrittenAtThePosition) {
  Put(stream_.Get(), "abcdef");
  EXPECT_EQ(Position(), 6);
  EXPECT_EQ(SeekTo(stream_.Get(), -4, STREAM_SEEK_END), 2u);
  Put(stream_.Get(), "XY");
  EXPECT_EQ(SeekTo(stream_.Get(), -3, STREAM_SEEK_CUR), 1u);
  EXPECT_EQ(Get(stream_.Get(), 4), "bXYe");
  EXPECT_EQ(Get(stream_.Get(), 4), "f");
  EXPECT_EQ(Get(stream_.Get(), 4), "");
  EXPECT_EQ(Get(stream_.Get(), 0), "");
  ULONGLONG position = 0;
  EXPECT_EQ(Seek(stream_.Get(), -1, STREAM_SEEK_SET, &position), STG_E_SEEKERROR);
  EXPECT_EQ(position, 6u);
  EXPECT_TRUE(FAILED(Seek(stream_.Get(), 0, 3, &position)));
}

TEST_F(AdoBytesTest, AGapIsFilledWithZeros) {
  EXPECT_EQ(SeekTo(stream_.Get(), 3), 3u);
  EXPECT_EQ(SizeOf(stream_.Get()), 0u);
  Put(stream_.Get(), "x");
  EXPECT_EQ(SetSize(stream_.Get(), 6), S_OK);
  EXPECT_EQ(Position(), 4);
  SeekTo(stream_.Get(), 0);
  EXPECT_EQ(Get(stream_.Get(), 9), std::string("\0\0\0x\0\0", 6));
  EXPECT_EQ(SetSize(stream_.Get(), 2), S_OK);
  EXPECT_EQ(SizeOf(stream_.Get()), 2u);
}

TEST_F(AdoBytesTest, CopyingStopsAtTheEnd) {
  OwnedReference<IStream> to;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, to.Put()), S_OK);
  Put(stream_.Get(), "abcdef");
  SeekTo(stream_.Get(), 1);
  ULARGE_INTEGER count, read, written;
  count.QuadPart = 3;
  ASSERT_EQ(stream_->CopyTo(to.Get(), count, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 3u);
  EXPECT_EQ(written.QuadPart, 3u);
  count.QuadPart = ~ULONGLONG{0};
  ASSERT_EQ(stream_->CopyTo(to.Get(), count, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 2u);
  SeekTo(to.Get(), 0);
  EXPECT_EQ(Get(to.Get(), 9), "bcdef");
  EXPECT_EQ(stream_->CopyTo(nullptr, count, nullptr, nullptr), STG_E_INVALIDPOINTER);
}

TEST_F(AdoBytesTest, ACloneSharesTheBytesAndHasItsOwnPosition) {
  Put(stream_.Get(), "abc");
  OwnedReference<IStream> clone;
  ASSERT_EQ(stream_->Clone(clone.Put()), S_OK);
  EXPECT_EQ(SeekTo(clone.Get(), 0, STREAM_SEEK_CUR), 3u);
  Put(clone.Get(), "d");
  EXPECT_EQ(Position(), 3);
  EXPECT_EQ(Get(stream_.Get(), 9), "d");
  ASSERT_EQ(Call(kClose), S_OK);
  SeekTo(clone.Get(), 0);
  EXPECT_EQ(Get(clone.Get(), 9), "abcd");
}

TEST_F(AdoBytesTest, PointersAreChecked) {
  char byte = 0;
  EXPECT_EQ(stream_->Read(nullptr, 1, nullptr), STG_E_INVALIDPOINTER);
  EXPECT_EQ(stream_->Write(nullptr, 1, nullptr), STG_E_INVALIDPOINTER);
  EXPECT_EQ(stream_->Write(&byte, 1, nullptr), S_OK);
  EXPECT_EQ(stream_->Stat(nullptr, STATFLAG_NONAME), STG_E_INVALIDPOINTER);
  EXPECT_EQ(stream_->Clone(nullptr), STG_E_INVALIDPOINTER);
}

TEST_F(AdoBytesTest, WhatAMemoryStreamHasNoUseForIsAnswered) {
  ULARGE_INTEGER none;
  none.QuadPart = 0;
  EXPECT_EQ(stream_->Commit(STGC_DEFAULT), S_OK);
  EXPECT_EQ(stream_->Revert(), S_OK);
  EXPECT_EQ(stream_->LockRegion(none, none, 0), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(stream_->UnlockRegion(none, none, 0), STG_E_INVALIDFUNCTION);
}

TEST_F(AdoBytesTest, AStreamHoldsAtMostOneGigabyte) {
  char byte = 0;
  ULONG written = 77;
  EXPECT_EQ(SetSize(stream_.Get(), AdoBytes::kMost + 1), kFull);
  SeekTo(stream_.Get(), static_cast<LONGLONG>(AdoBytes::kMost));
  EXPECT_EQ(stream_->Write(&byte, 1, &written), kFull);
  EXPECT_EQ(written, 0u);
  SeekTo(stream_.Get(), 0x7FFFFFFFFFFFFFFF);
  EXPECT_EQ(stream_->Write(&byte, 1, &written), kFull);
  EXPECT_EQ(SizeOf(stream_.Get()), 0u);
}

TEST_F(AdoBytesTest, AClosedStreamRefusesEveryMember) {
  ASSERT_EQ(Call(kClose), S_OK);
  char byte = 0;
  ULONG count = 77;
  ULONGLONG position = 0;
  ULARGE_INTEGER number, read, written;
  number.QuadPart = read.QuadPart = written.QuadPart = 77;
  STATSTG statistics;
  IStream* clone = stream_.Get();
  EXPECT_EQ(stream_->Read(&byte, 1, &count), kAdoClosed);
  EXPECT_EQ(count, 0u);
  count = 77;
  EXPECT_EQ(stream_->Write(&byte, 1, &count), kAdoClosed);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(Seek(stream_.Get(), 0, STREAM_SEEK_CUR, &position), kAdoClosed);
  EXPECT_EQ(SetSize(stream_.Get(), 0), kAdoClosed);
  EXPECT_EQ(stream_->CopyTo(stream_.Get(), number, &read, &written), kAdoClosed);
  EXPECT_EQ(read.QuadPart + written.QuadPart, 0u);
  EXPECT_EQ(stream_->Commit(STGC_DEFAULT), kAdoClosed);
  EXPECT_EQ(stream_->Revert(), kAdoClosed);
  EXPECT_EQ(stream_->LockRegion(number, number, 0), kAdoClosed);
  EXPECT_EQ(stream_->UnlockRegion(number, number, 0), kAdoClosed);
  EXPECT_EQ(stream_->Stat(&statistics, STATFLAG_NONAME), kAdoClosed);
  EXPECT_EQ(stream_->Clone(&clone), kAdoClosed);
  EXPECT_EQ(clone, nullptr);
}

TEST_F(AdoBytesTest, TheModeHoldsForByteStreamsToo) {
  ASSERT_EQ(Call(kClose), S_OK);
  ASSERT_EQ(Call(kOpen, 1), S_OK);
  char byte = 0;
  ULONG count = 77;
  EXPECT_EQ(stream_->Write(&byte, 1, &count), STG_E_ACCESSDENIED);
  EXPECT_EQ(SetSize(stream_.Get(), 5), STG_E_ACCESSDENIED);
  EXPECT_EQ(stream_->Read(&byte, 1, &count), S_OK);
  ASSERT_EQ(Call(kClose), S_OK);
  ASSERT_EQ(Call(kOpen, 2), S_OK);
  ULARGE_INTEGER all;
  all.QuadPart = 5;
  EXPECT_EQ(stream_->Read(&byte, 1, &count), STG_E_ACCESSDENIED);
  EXPECT_EQ(stream_->CopyTo(stream_.Get(), all, nullptr, nullptr), STG_E_ACCESSDENIED);
  EXPECT_EQ(stream_->Write(&byte, 1, &count), S_OK);
}

}  // namespace
}  // namespace mirolta::host
