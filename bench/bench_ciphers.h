// Block ciphers in ECB mode with a fixed key, shared by AES and DES rows.
#pragma once

#include "bench_bytes.h"
#include "platform.h"

namespace mirolta::bench {

// Transforms length bytes, whole blocks, in ECB mode.
using BlockFunction = std::function<void(const uint8_t* in, size_t length, uint8_t* out)>;

struct CipherCase {
  const char* name;
  const OLECHAR* our_name;
  size_t key_size;
  size_t block_size;
  bool encrypts;
  // The functions without an object, with key[key_size].
  BlockFunction (*kernel)(const uint8_t* key, size_t key_size, bool encrypts);
  BlockFunction (*openssl)(const uint8_t* key, size_t key_size, bool encrypts);
  BlockFunction (*nettle)(const uint8_t* key, size_t key_size, bool encrypts);
  const char* evp;  // null if the default provider has none
  const char* botan;
  int gcrypt;
};

// The key of all rows.
std::vector<uint8_t> CipherKey(const CipherCase& cipher);

// Our kernel and the peers; our engine, including taking its output, and the peers.
std::vector<Contestant> MakeCipherKernels(const CipherCase& cipher, size_t size);
std::vector<Contestant> MakeCipherEngines(const CipherCase& cipher, size_t size);

// AddCipherRow adds the rows of kernel and engine for one size. An engine_required of 0 requires nothing.
void AddCipherRow(RowList* rows, const CipherCase& cipher, size_t size, double required,
                  double stretch, double engine_required = 0);

}  // namespace mirolta::bench
