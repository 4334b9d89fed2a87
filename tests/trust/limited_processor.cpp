// Programs with this file choose kernels as on a lesser processor: MIROLTA_TEST_FEATURES, a number,
// says which of this machine's features may be used. It takes the place of the module's own.
#define ProcessorFeatures FeaturesOfThisMachine
#include "../../platform/seam/processor.cpp"  // NOLINT(bugprone-suspicious-include)
#undef ProcessorFeatures

#include <cstdlib>

namespace mirolta {

uint32_t ProcessorFeatures() noexcept;

uint32_t ProcessorFeatures() noexcept {
  static const uint32_t features = [] {
    const char* const allowed = std::getenv("MIROLTA_TEST_FEATURES");
    const uint32_t all = FeaturesOfThisMachine();
    return allowed == nullptr ? all
                              : all & static_cast<uint32_t>(std::strtoul(allowed, nullptr, 0));
  }();
  return features;
}

}  // namespace mirolta
