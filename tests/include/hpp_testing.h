// What the tests of mirolta.hpp share.
#pragma once

#include <gtest/gtest.h>

#include <mirolta.hpp>
#include <random>
#include <string>
#include <vector>

namespace hpp_testing {

// The statuses that the module publishes with a text.
inline constexpr HRESULT kAlgorithmNotFound = static_cast<HRESULT>(0x80042777u);
inline constexpr HRESULT kNotInitialized = static_cast<HRESULT>(0x80042778u);
inline constexpr HRESULT kKeyNotSet = static_cast<HRESULT>(0x80042779u);
inline constexpr HRESULT kTooMuchData = static_cast<HRESULT>(0x8004277Au);

// The number of the Error that the call throws; S_OK if it throws none.
template <typename Call>
HRESULT ThrownBy(Call call) {
  try {
    call();
  } catch (const mirolta::Error& error) {
    return error.Number();
  }
  return S_OK;
}

inline std::vector<std::uint8_t> RandomBytes(std::mt19937& random, std::size_t count) {
  std::vector<std::uint8_t> bytes(count);
  for (std::uint8_t& value : bytes) value = static_cast<std::uint8_t>(random());
  return bytes;
}

}  // namespace hpp_testing
