// The fixture of the tests of ToviStreamCrypt.
#pragma once

#include "stream_sides.h"

namespace mirolta::test {

class StreamCryptTest : public FilterTest<IToviStreamCrypt> {
 protected:
  // Binds a target with these bytes, which reading encrypts.
  void StartReading(const Bytes& content) {
    Bind();
    target.content = content;
    reading.Choose();
    reading.Encrypt();
  }
  // Binds a target; what is written to it is encrypted.
  void StartWriting() {
    Bind();
    writing.Choose();
  }
};

// The longest transfer that an engine's queue takes, and one byte more.
constexpr ULONG kLongest = 1048832;
constexpr ULONG kTooLong = kLongest + 1;

}  // namespace mirolta::test
