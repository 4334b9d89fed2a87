// The published vectors of the ciphers.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "vector_file.h"

namespace mirolta::test {

// Runs check(key, plaintext, ciphertext) for each case of AES.
template <typename Check>
void ForEachAesVector(const Check& check) {
  CheckVectorFile(MIROLTA_VECTORS "/aes.txt", {"Key", "Plaintext", "Ciphertext"},
                  [&](const VectorCase& one) {
                    check(one.Bytes("Key"), one.Bytes("Plaintext"), one.Bytes("Ciphertext"));
                  });
}

// Runs check(key, plaintext, ciphertext) for each case of DES: equal keys as one, two and three.
template <typename Check>
void ForEachDesVector(const Check& check) {
  size_t forms[25] = {};
  const auto check_form = [&](const Bytes& key, const VectorCase& one) {
    ++forms[key.size()];
    check(key, one.Bytes("Plaintext"), one.Bytes("Ciphertext"));
  };
  for (const char* file : {MIROLTA_VECTORS "/des.txt", MIROLTA_VECTORS "/triple_des.txt"}) {
    CheckVectorFile(file, {"Key", "Plaintext", "Ciphertext"}, [&](const VectorCase& one) {
      const Bytes key = one.Bytes("Key");
      const Bytes three = key.size() == 8 ? key + key + key : key;
      ASSERT_EQ(three.size(), 24u);
      check_form(three, one);
      if (Head(three, 8) != Tail(three, 16)) return;
      check_form(Head(three, 16), one);
      if (Head(three, 8) == Part(three, 8, 8)) check_form(Head(three, 8), one);
    });
  }
  EXPECT_GT(forms[8], 200u);
  EXPECT_GT(forms[16], forms[8]);
  EXPECT_GT(forms[24], forms[16]);
}

}  // namespace mirolta::test
