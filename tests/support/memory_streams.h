// Streams over the runtime's memory, and where they stand.
#pragma once

#include <gtest/gtest.h>

#include "owned_value.h"
#include "platform.h"

namespace mirolta::test {

inline ULARGE_INTEGER Large(ULONGLONG value) {
  ULARGE_INTEGER number;
  number.QuadPart = value;
  return number;
}

inline OwnedReference<IStream> MemoryStream() {
  OwnedReference<IStream> stream;
  EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
  return stream;
}

inline void Rewind(IStream* stream) {
  LARGE_INTEGER start;
  start.QuadPart = 0;
  EXPECT_EQ(stream->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
}

inline ULONGLONG Position(IStream* stream) {
  LARGE_INTEGER none;
  none.QuadPart = 0;
  ULARGE_INTEGER position = Large(0);
  EXPECT_EQ(stream->Seek(none, STREAM_SEEK_CUR, &position), S_OK);
  return position.QuadPart;
}

}  // namespace mirolta::test
