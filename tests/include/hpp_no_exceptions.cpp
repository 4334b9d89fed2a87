// mirolta.hpp without exceptions and run-time type information: the operations that return results.
// With an argument it ends at a failure that it does not look at.
#include <cstdio>
#include <mirolta.hpp>
#include <sstream>

#ifdef __cpp_exceptions
  #error "This is compiled without exceptions."
#endif

namespace {

int failures = 0;

void Check(bool holds, const char* what) {
  if (holds) return;
  ++failures;
  std::printf("failed: %s\n", what);
}
#define CHECK(condition) Check(static_cast<bool>(condition), #condition)

void Digests() {
  auto hash = mirolta::Hash<32>::TryCreate("SHA256");
  CHECK(hash && hash->TryUpdate("abc"));
  const auto digest = hash->TryFinishHex();
  CHECK(digest && *digest == "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  const auto unknown = mirolta::Hash<>::TryCreate("none");
  CHECK(!unknown && unknown.Failure().Description() == "Algorithm not found.");
}

void Numbers() {
  const auto n = mirolta::Number::TryParse("123456789012345678901234567890");
  const auto m = mirolta::Number::TryFrom(97);
  CHECK(n && m);
  const auto remainder = n->TryRemainder(*m);
  CHECK(remainder && *remainder->TryTo<int>() == 52);
  CHECK(n->TryDivide({}).Failure().Number() == DISP_E_DIVBYZERO);
  const auto rsa = mirolta::Rsa::TryFromPrimes(1000003, 2000003);
  CHECK(rsa && *rsa->TryDecrypt(*rsa->TryEncrypt(5))->TryTo<int>() == 5);
}

void Streams() {
  const mirolta::ByteSpan key = "sixteen byte key";
  std::stringstream file;
  auto filter = mirolta::CipherFilter::TryCreate();
  CHECK(filter && filter->Writing().TrySetAlgorithm("AES") && filter->Writing().TrySetKey(key));
  mirolta::CipherOutput out(file, *std::move(filter));
  out << "abc";
  CHECK(out.TryFinish());
  const auto cipher = mirolta::Cipher::TryCreate("AES", key);
  CHECK(cipher && mirolta::Bytes(file.str()) == mirolta::Aes(key).Encrypt("abc"));
  // A failure ends the stream, and is kept.
  mirolta::InputStream none((mirolta::Object<IStream>()));
  CHECK(none.get() == EOF && none.Failure().Number() == E_POINTER);
}

}  // namespace

int main(int count, char**) {
  if (count > 1) (void)mirolta::Hash<>("none");
  Digests();
  Numbers();
  Streams();
  std::printf("%d failures\n", failures);
  return failures;
}
