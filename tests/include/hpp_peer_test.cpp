// Random cases of mirolta.hpp against OpenSSL and GMP.
#include <gmp.h>
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <mirolta.hpp>
#include <sstream>

#include "hpp_testing.h"

namespace {

using hpp_testing::RandomBytes;
using mirolta::Bytes;
using mirolta::ByteSpan;
using mirolta::Number;

std::mt19937& Generator() {
  static std::mt19937 generator(20021);
  return generator;
}

std::size_t Below(std::size_t limit) {
  return Generator()() % limit;
}

class Integer {
 public:
  Integer() { mpz_init(value_); }
  explicit Integer(const Number& number) : Integer() {
    mpz_set_str(value_, number.ToText().c_str(), 10);
  }
  Integer(const Integer&) = delete;
  Integer& operator=(const Integer&) = delete;
  ~Integer() { mpz_clear(value_); }
  operator mpz_ptr() { return value_; }
  operator mpz_srcptr() const { return value_; }
  std::string Text() const {
    std::string text(mpz_sizeinbase(value_, 10) + 2, '\0');
    return mpz_get_str(&text[0], 10, value_);
  }

 private:
  mpz_t value_;
};

// Numbers of up to `most` bytes, negative ones among them; short ones and zero are frequent.
Number Operand(std::size_t most) {
  const std::size_t size = Below(4) == 0 ? Below(3) : Below(most + 1);
  return Number::TryFromBytes(RandomBytes(Generator(), size), Below(2) == 0).Value();
}

TEST(HppPeerTest, DigestsInPiecesAgree) {
  for (const char* const name : {"MD5", "SHA1", "SHA256"}) {
    mirolta::Hash hash{std::string(name)};
    for (int i = 0; i < 200; ++i) {
      const auto message = RandomBytes(Generator(), Below(300));
      const auto key = RandomBytes(Generator(), Below(3) == 0 ? 0 : 1 + Below(100));
      std::uint8_t peer[EVP_MAX_MD_SIZE];
      unsigned size = 0;
      if (key.empty()) {
        hash.ClearKey();
        EVP_Digest(message.data(), message.size(), peer, &size, EVP_get_digestbyname(name),
                   nullptr);
      } else {
        hash.SetKey(key);
        HMAC(EVP_get_digestbyname(name), key.data(), static_cast<int>(key.size()), message.data(),
             message.size(), peer, &size);
      }
      const std::size_t cut = Below(message.size() + 1);
      hash.Update(ByteSpan(message).First(cut)).Update(ByteSpan(message).From(cut));
      ASSERT_EQ(hash.Finish(), Bytes(ByteSpan(peer, size))) << name << " " << i;
    }
  }
}

TEST(HppPeerTest, CiphersAgree) {
  const struct {
    const char* name;
    std::size_t key_size;
    const EVP_CIPHER* peer;
  } cases[] = {{"AES", 16, EVP_aes_128_ecb()},
               {"AES", 24, EVP_aes_192_ecb()},
               {"AES", 32, EVP_aes_256_ecb()},
               {"DES", 16, EVP_des_ede_ecb()},
               {"DES", 24, EVP_des_ede3_ecb()}};
  for (const auto& row : cases) {
    for (int i = 0; i < 50; ++i) {
      const auto key = RandomBytes(Generator(), row.key_size);
      auto plain = RandomBytes(Generator(), 16 * Below(40));
      std::vector<std::uint8_t> peer(plain.size() + 32);
      EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
      int size = 0;
      EVP_EncryptInit_ex(context, row.peer, nullptr, key.data(), nullptr);
      EVP_CIPHER_CTX_set_padding(context, 0);
      EVP_EncryptUpdate(context, peer.data(), &size, plain.data(), static_cast<int>(plain.size()));
      EVP_CIPHER_CTX_free(context);
      peer.resize(static_cast<std::size_t>(size));
      mirolta::Cipher cipher(row.name, key);
      ASSERT_EQ(cipher.Encrypt(plain), Bytes(peer)) << row.name << 8 * row.key_size;
      ASSERT_EQ(cipher.Decrypt(peer), Bytes(plain)) << row.name << 8 * row.key_size;
      std::istringstream source(std::string(peer.begin(), peer.end()));
      mirolta::CipherInput in(source, mirolta::CipherOperation::kDecrypt, row.name, key);
      const std::string read(std::istreambuf_iterator<char>(in), {});
      ASSERT_EQ(Bytes(read), Bytes(plain)) << row.name << 8 * row.key_size;
    }
  }
}

TEST(HppPeerTest, ArithmeticAgrees) {
  for (int i = 0; i < 400; ++i) {
    const Number a = Operand(i % 8 == 0 ? 1500 : 90);
    const Number b = Operand(80);
    const Integer x(a);
    const Integer y(b);
    Integer z;
    ASSERT_EQ(a.ToText(), x.Text());
    ASSERT_EQ(Number(x.Text()), a);
    mpz_add(z, x, y);
    ASSERT_EQ((a + b).ToText(), z.Text());
    mpz_sub(z, x, y);
    ASSERT_EQ((a - b).ToText(), z.Text());
    mpz_mul(z, x, y);
    ASSERT_EQ((a * b).ToText(), z.Text());
    mpz_gcd(z, x, y);
    ASSERT_EQ(a.Gcd(b).ToText(), z.Text());
    const int order = mpz_cmp(x, y);
    ASSERT_EQ(a.Compare(b), order < 0 ? -1 : order > 0 ? 1 : 0);
    ASSERT_EQ(a.BitLength(), a.IsZero() ? 0 : mpz_sizeinbase(x, 2));
    if (b.IsZero()) continue;
    mpz_tdiv_q(z, x, y);
    ASSERT_EQ((a / b).ToText(), z.Text());
    mpz_tdiv_r(z, x, y);
    ASSERT_EQ((a % b).ToText(), z.Text());
  }
}

TEST(HppPeerTest, ModularArithmeticAgrees) {
  for (int i = 0; i < 150; ++i) {
    const Number base = Operand(60);
    const Number exponent = Operand(20);
    const Number modulus = Operand(50).Abs() + 1;
    const Integer x(base);
    const Integer e(exponent);
    const Integer m(modulus);
    Integer z;
    const bool invertible = mpz_invert(z, x, m) != 0;
    const auto inverse = base.TryInverse(modulus);
    ASSERT_EQ(inverse.HasValue(), invertible) << base << " modulo " << modulus;
    if (invertible) {
      ASSERT_EQ(inverse->ToText(), z.Text());
    }
    if (exponent.IsNegative() && !invertible) {
      ASSERT_FALSE(base.TryPowerMod(exponent, modulus));
      continue;
    }
    mpz_powm(z, x, e, m);
    ASSERT_EQ(base.PowerMod(exponent, modulus).ToText(), z.Text());
  }
}

}  // namespace
