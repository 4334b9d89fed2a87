// Block ciphers under a fixed key, block by block: what AES and DES rows share.
#pragma once

#include "bench_bytes.h"
#include "platform.h"

namespace mirolta::bench {

// Transforms length bytes, whole blocks, each by itself.
using BlockFunction = std::function<void(const uint8_t* in, size_t length, uint8_t* out)>;

struct CipherCase {
  const char* name;
  const OLECHAR* our_name;
  size_t key_size;
  size_t block_size;
  bool encrypts;
  // The forms without an object, keyed with key[key_size].
  BlockFunction (*kernel)(const uint8_t* key, size_t key_size, bool encrypts);
  BlockFunction (*openssl)(const uint8_t* key, size_t key_size, bool encrypts);
  BlockFunction (*nettle)(const uint8_t* key, size_t key_size, bool encrypts);
  const char* evp;  // null if the default provider has none
  const char* botan;
  int gcrypt;
};

// The key of all rows.
std::vector<uint8_t> CipherKey(const CipherCase& cipher);

// Our kernel and the peers; our engine, with what the caller does to take its output, and the
// peers.
std::vector<Contestant> MakeCipherKernels(const CipherCase& cipher, size_t size);
std::vector<Contestant> MakeCipherEngines(const CipherCase& cipher, size_t size);

// AddCipherRow adds the kernel's and the engine's row of one size; the ratios are the kernel's.
void AddCipherRow(RowList* rows, const CipherCase& cipher, size_t size, double required,
                  double stretch);

}  // namespace mirolta::bench
