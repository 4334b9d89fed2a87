// Prints the heap that objects and operations of the module use, the portable runtime's blocks included, and
// compares it with the budgets. The program's allocator counts the bytes that are asked for.
#include <atomic>
#include <cstddef>

#include "module_objects.h"

namespace {

std::atomic<size_t> current_bytes{0};
std::atomic<size_t> peak_bytes{0};

// Before each block; keeps the alignment of the blocks.
struct alignas(alignof(std::max_align_t)) BlockSize {
  size_t bytes;
};

void Count(size_t bytes) {
  const size_t now = current_bytes += bytes;
  size_t peak = peak_bytes;
  while (now > peak && !peak_bytes.compare_exchange_weak(peak, now)) {
  }
}

}  // namespace

extern "C" {

void* __libc_malloc(size_t size);
void* __libc_realloc(void* memory, size_t size);
void __libc_free(void* memory);

// In place of the C library's, for all libraries of the process.
#pragma GCC visibility push(default)
void* malloc(size_t size) {
  BlockSize* const block = static_cast<BlockSize*>(__libc_malloc(size + sizeof(BlockSize)));
  if (block == nullptr) return nullptr;
  block->bytes = size;
  Count(size);
  return block + 1;
}
void free(void* memory) {
  if (memory == nullptr) return;
  BlockSize* const block = static_cast<BlockSize*>(memory) - 1;
  current_bytes -= block->bytes;
  __libc_free(block);
}
void* calloc(size_t count, size_t size) {
  if (size != 0 && count > SIZE_MAX / size) return nullptr;
  void* const memory = malloc(count * size);
  if (memory != nullptr) std::memset(memory, 0, count * size);
  return memory;
}
void* realloc(void* memory, size_t size) {
  void* const moved = malloc(size);
  if (moved == nullptr || memory == nullptr) return moved;
  const size_t old = (static_cast<BlockSize*>(memory) - 1)->bytes;
  std::memcpy(moved, memory, old < size ? old : size);
  free(memory);
  return moved;
}
#pragma GCC visibility pop
}

namespace mirolta::test {
namespace {

bool failed = false;

// Report prints bytes and compares them with the limit.
void Report(const char* what, size_t bytes, size_t limit) {
  std::printf("%-52s%8zu of %zu\n", what, bytes, limit);
  if (bytes != 0 && bytes <= limit) return;
  std::fprintf(stderr, "heap_use: %s takes %zu bytes, not 1 to %zu\n", what, bytes, limit);
  failed = true;
}

// PeakOf returns the most bytes that work had allocated beyond those before it.
template <typename Work>
size_t PeakOf(Work work) {
  const size_t before = current_bytes;
  peak_bytes = before;
  work();
  return peak_bytes - before;
}

template <typename Interface>
void ReportObject(const char* name, const CLSID& id, const IID& iid) {
  // The first one also makes the class's factory.
  Created<Interface>(id, iid)->Release();
  const size_t before = current_bytes;
  Interface* const object = Created<Interface>(id, iid);
  Report(name, current_bytes - before, 1024);
  object->Release();
}

constexpr ULONG kPiece = 4096;
constexpr ULONG kTotal = 1u << 20;

void HashMegabyte(const OLECHAR* algorithm) {
  IHashObject* const hash = Created<IHashObject>(CLSID_HashObject, IID_IHashObject);
  VARIANT name = NameValue(algorithm);
  Require(hash->InitHash(V_BSTR(&name)), "InitHash");
  VariantClear(&name);
  for (ULONG done = 0; done < kTotal; done += kPiece) {
    VARIANT piece = ByteValue(kPiece);
    Require(hash->HashUpdate(piece, -1), "HashUpdate");
    VariantClear(&piece);
  }
  Require(hash->HashFinalize(), "HashFinalize");
  BSTR text = nullptr;
  Require(hash->get_Value(&text), "Value");
  SysFreeString(text);
  hash->Release();
}

void EncryptMegabyte(const OLECHAR* algorithm, ULONG key_bytes) {
  ISymmetricCryptObject* const cipher =
      Created<ISymmetricCryptObject>(CLSID_SymmetricCryptObject, IID_ISymmetricCryptObject);
  VARIANT name = NameValue(algorithm);
  Require(cipher->Init(name), "Init");
  VariantClear(&name);
  VARIANT key = ByteValue(key_bytes);
  Require(cipher->put_Key(key), "Key");
  VariantClear(&key);
  for (ULONG done = 0; done < kTotal; done += kPiece) {
    VARIANT piece = ByteValue(kPiece);
    VARIANT out;
    Require(cipher->Encrypt(piece, done + kPiece == kTotal ? VARIANT_TRUE : VARIANT_FALSE, &out),
            "Encrypt");
    VariantClear(&out);
    VariantClear(&piece);
  }
  cipher->Release();
}

void MakeKey() {
  IRSACrypt* const key = Created<IRSACrypt>(CLSID_RSACrypt, IID_IRSACrypt);
  Require(key->CreateRandKeys(128, VARIANT_TRUE), "CreateRandKeys");
  key->Release();
}

int Main() {
  ReportObject<IHashObject>("HashObject", CLSID_HashObject, IID_IHashObject);
  ReportObject<ISymmetricCryptObject>("SymmetricCryptObject", CLSID_SymmetricCryptObject,
                                      IID_ISymmetricCryptObject);
  ReportObject<IPexBigNumber>("PexBigNumber", CLSID_PexBigNumber, IID_IPexBigNumber);
  ReportObject<IRSACrypt>("RSACrypt", CLSID_RSACrypt, IID_IRSACrypt);
  ReportObject<IToviStreamDigest>("ToviStreamDigest", CLSID_ToviStreamDigest,
                                  IID_IToviStreamDigest);
  ReportObject<IToviStreamCrypt>("ToviStreamCrypt", CLSID_ToviStreamCrypt, IID_IToviStreamCrypt);
  for (const OLECHAR* algorithm : {OLESTR("MD5"), OLESTR("SHA1"), OLESTR("SHA256")}) {
    Report("peak: a digest of 1 MB in pieces of 4 KB", PeakOf([&] { HashMegabyte(algorithm); }),
           16384);
  }
  Report("peak: AES of 1 MB in pieces of 4 KB", PeakOf([] { EncryptMegabyte(OLESTR("AES"), 32); }),
         16384);
  Report("peak: triple DES of 1 MB in pieces of 4 KB",
         PeakOf([] { EncryptMegabyte(OLESTR("DES"), 24); }), 16384);
  for (int i = 0; i < 3; ++i)
    Report("peak: a random RSA key of 1,024 bits", PeakOf(MakeKey), 65536);
  return failed ? 1 : 0;
}

}  // namespace
}  // namespace mirolta::test

int main() {
  return mirolta::test::Main();
}
