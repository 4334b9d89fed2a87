// Measures rows, this library and its peers interleaved, after verifying that all outputs are
// equal.
//
//   mirolta-bench results.json [PATTERN]    the rows whose names match the regular expression
//   mirolta-bench --list
//
// MIROLTA_TEST_FEATURES, a number, has the ProcessorFeature bits that this library may use: kernels are measured
// as on a lesser processor. The module, which is loaded, would not know of it; its rows are left out.
//
// Options of the measuring library may be given too; they override those chosen here.
#include <benchmark/benchmark.h>
#include <botan/version.h>
#if BOTAN_VERSION_MAJOR == 2
  #include <botan/cpuid.h>
#endif
#include <gcrypt.h>
#include <gmp.h>
#include <nettle/version.h>
#include <openssl/crypto.h>
#include <regex.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string_view>

#include "bench_row.h"
#include "platform.h"

namespace mirolta::bench {

namespace {

// The number of operands for which outputs are compared.
constexpr size_t kCheckedOperands = 16;
constexpr double kLeastSeconds = 0.02;  // of a repetition

constexpr void (*kGroups[])(RowList*) = {
    AddDigestRows, AddHmacRows,  AddAesRows, AddDesRows,   AddProductRows, AddPowerRows,
    AddTextRows,   AddPrimeRows, AddRsaRows, AddClassRows, AddScalingRows,
};

// True if every contestant's output equals ours.
bool OutputsAgree(const Row& row, const std::vector<Contestant>& contestants) {
  const size_t checked = row.iterations != 0 ? 1 : std::min(kCheckedOperands, row.operands);
  for (size_t operand = 0; operand < checked; ++operand) {
    std::string expected;
    for (const Contestant& contestant : contestants) {
      if (!contestant.result) continue;
      contestant.run(operand);
      const std::string output = contestant.result();
      if (&contestant == &contestants.front()) expected = output;
      if (output == expected && !output.empty()) continue;
      std::fprintf(stderr, "%s: the output of %s differs\n", row.name.c_str(),
                   contestant.name.c_str());
      return false;
    }
  }
  return true;
}

// A processor without AVX has no upper halves of vector registers. Where they are not zero, which what ran before
// decides, each SSE instruction waits for the one before that wrote its register.
void ClearUpperHalves() {
#if defined(__x86_64__) || defined(__i386__)
  const bool has_avx = __builtin_cpu_supports("avx") != 0;
  if (has_avx && (ProcessorFeatures() & kFeatureAvx2) == 0) __asm__ volatile("vzeroupper");
#endif
}

void Measure(benchmark::State& state, const Row& row, const Contestant& contestant,
             size_t* operand) {
  ClearUpperHalves();
  for (auto _ : state) {
    contestant.run(*operand);
    if (++*operand == row.operands) *operand = 0;
  }
  benchmark::ClobberMemory();
  state.counters["bytes"] = row.bytes;
  state.counters["required"] = row.required;
  state.counters["stretch"] = row.stretch;
  state.counters["has_threads"] = row.has_threads;
}

// Every contestant uses the operands in the same order, continued from repetition to repetition.
// Each runs for least_seconds, or for the time of the library's option if that is 0.
void Register(const Row& row, const std::vector<Contestant>& contestants, double least_seconds) {
  for (const Contestant& contestant : contestants) {
    const auto operand = std::make_shared<size_t>(0);
    auto* const made =
        benchmark::RegisterBenchmark((row.name + "|" + contestant.name).c_str(),
                                     [&row, &contestant, operand](benchmark::State& state) {
                                       Measure(state, row, contestant, operand.get());
                                     });
    // Processor time, which depends less on other work of the machine.
    if (row.has_threads) made->UseRealTime();
    if (row.iterations != 0) {
      made->Iterations(row.iterations);
    } else if (least_seconds != 0) {
      made->MinTime(least_seconds);
    }
  }
}

// One report of all rows, although each is run separately: contestants close in time, and only the
// row's operands in memory.
class Report final : public benchmark::JSONReporter {
 public:
  explicit Report(std::ostream* out) { SetOutputStream(out); }
  bool ReportContext(const Context& context) override {
    if (!started_) JSONReporter::ReportContext(context);
    started_ = true;
    return true;
  }
  void Finalize() override {}
  void End() {
    if (started_) JSONReporter::Finalize();
  }

 private:
  bool started_ = false;
};

bool RunRow(const Row& row, double least_seconds, Report* report) {
  std::fprintf(stderr, "%s\n", row.name.c_str());
  const std::vector<Contestant> contestants = row.make();
  if (!OutputsAgree(row, contestants)) return false;
  Register(row, contestants, least_seconds);
  benchmark::RunSpecifiedBenchmarks(report);
  benchmark::ClearRegisteredBenchmarks();
  return true;
}

// The maker's words for the processor, as the system has them; other processors than x86 have none.
void AddProcessor() {
  static constexpr struct {
    std::string_view line;
    const char* name;
  } kNames[] = {{"vendor_id", "maker"},
                {"cpu family", "family"},
                {"model", "model"},
                {"model name", "processor"}};
  std::ifstream file("/proc/cpuinfo");
  // The lines of the first processor end with an empty one.
  for (std::string line; std::getline(file, line) && !line.empty();) {
    const size_t name_end = line.find_first_of("\t:");
    const size_t value = line.find(": ");
    if (value == std::string::npos) continue;
    for (const auto& row : kNames) {
      if (line.substr(0, name_end) == row.line) {
        benchmark::AddCustomContext(row.name, line.substr(value + 2));
      }
    }
  }
}

// These peers have no variable that keeps them from instructions, as OpenSSL has: they get what our kernels have.
// Botan 3 has no such function.
void DisableInPeers() {
#if BOTAN_VERSION_MAJOR == 2 && defined(BOTAN_TARGET_CPU_IS_X86_FAMILY)
  static constexpr struct {
    ProcessorFeature feature;
    Botan::CPUID::CPUID_bits bit;
  } kBits[] = {
      {kFeatureSsse3, Botan::CPUID::CPUID_SSSE3_BIT},
      {kFeatureSsse3, Botan::CPUID::CPUID_SSE41_BIT},
      {kFeatureSsse3, Botan::CPUID::CPUID_SSE42_BIT},
      {kFeatureSsse3, Botan::CPUID::CPUID_CLMUL_BIT},
      {kFeatureAesNi, Botan::CPUID::CPUID_AESNI_BIT},
      {kFeatureSha, Botan::CPUID::CPUID_SHA_BIT},
      {kFeatureAvx2, Botan::CPUID::CPUID_AVX2_BIT},
      {kFeatureBmi2Adx, Botan::CPUID::CPUID_BMI2_BIT},
  };
  for (const auto& row : kBits) {
    if ((ProcessorFeatures() & row.feature) == 0) Botan::CPUID::clear_cpuid_bit(row.bit);
  }
#endif
  static constexpr struct {
    ProcessorFeature feature;
    const char* name;
  } kNames[] = {
      {kFeatureSsse3, "intel-ssse3"},       {kFeatureSsse3, "intel-sse4.1"},
      {kFeatureSsse3, "intel-pclmul"},      {kFeatureAesNi, "intel-aesni"},
      {kFeatureSha, "intel-shaext"},        {kFeatureAvx2, "intel-avx"},
      {kFeatureAvx2, "intel-avx2"},         {kFeatureBmi2Adx, "intel-bmi2"},
      {kFeatureVaes, "intel-vaes-vpclmul"},
  };
  for (const auto& row : kNames) {
    if ((ProcessorFeatures() & row.feature) == 0) {
      gcry_control(GCRYCTL_DISABLE_HWF, row.name, nullptr);
    }
  }
}

void AddVersions() {
  static constexpr struct {
    ProcessorFeature bit;
    const char* name;
  } kNames[] = {
      {kFeatureSse2, "SSE2"},        {kFeatureSsse3, "SSE4.1"}, {kFeatureAvx2, "AVX2"},
      {kFeatureBmi2Adx, "BMI2+ADX"}, {kFeatureAesNi, "AES"},    {kFeatureSha, "SHA"},
      {kFeatureAvx512, "AVX-512"},   {kFeatureVaes, "VAES"},    {kFeatureAvx512Ifma, "IFMA"},
      {kFeatureGfni, "GFNI"},        {kFeatureArmAes, "AES"},   {kFeatureArmSha1, "SHA-1"},
      {kFeatureArmSha2, "SHA-256"},
  };
  std::string features;
  for (const auto& row : kNames) {
    if ((ProcessorFeatures() & row.bit) != 0) features += std::string(row.name) + " ";
  }
  const std::string nettle =
      std::to_string(nettle_version_major()) + "." + std::to_string(nettle_version_minor());
  benchmark::AddCustomContext("features", features);
  benchmark::AddCustomContext("pointer_bits", std::to_string(8 * sizeof(void*)));
  AddProcessor();
  benchmark::AddCustomContext("OpenSSL", OpenSSL_version(OPENSSL_VERSION_STRING));
  benchmark::AddCustomContext("nettle", nettle);
  benchmark::AddCustomContext("Botan", Botan::short_version_string());
  benchmark::AddCustomContext("GMP", gmp_version);
  benchmark::AddCustomContext("libgcrypt", gcry_check_version(nullptr));
}

// A regular expression that is searched for in names.
class Pattern {
 public:
  explicit Pattern(const char* text)
      : status_(regcomp(&compiled_, text, REG_EXTENDED | REG_NOSUB)) {}
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;
  ~Pattern() {
    if (status_ == 0) regfree(&compiled_);
  }
  // Why the text is no pattern, or nothing.
  std::string Error() const {
    if (status_ == 0) return "";
    char text[200];
    regerror(status_, &compiled_, text, sizeof text);
    return text;
  }
  bool IsIn(const std::string& name) const {
    return regexec(&compiled_, name.c_str(), 0, nullptr, 0) == 0;
  }

 private:
  regex_t compiled_ = {};
  int status_;
};

int Main(int argc, char** argv) {
  DisableInPeers();
  gcry_check_version(nullptr);
  gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
  gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
  std::vector<char*> arguments(argv, argv + argc);
  std::string options[] = {"--benchmark_enable_random_interleaving=true",
                           "--benchmark_repetitions=5", "--benchmark_report_aggregates_only=true",
                           "--benchmark_display_aggregates_only=true"};
  // The option for the time has no form that all versions of the library understand.
  const bool has_time = std::any_of(argv, argv + argc, [](const char* argument) {
    return std::string_view(argument).starts_with("--benchmark_min_time");
  });
  const double least_seconds = has_time ? 0 : kLeastSeconds;
  // Before the caller's own options, which override them.
  for (std::string& option : options) arguments.insert(arguments.begin() + 1, option.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  AddVersions();

  RowList rows;
  for (const auto add : kGroups) add(&rows);
  if (std::getenv("MIROLTA_TEST_FEATURES") != nullptr) {
    std::erase_if(rows, [](const Row& row) {
      return row.name.starts_with("class/") || row.name.starts_with("scaling/");
    });
  }
  const std::string file = count > 1 ? arguments[1] : "--list";
  if (file == "--list") {
    for (const Row& row : rows) std::printf("%s\n", row.name.c_str());
    return 0;
  }
  const Pattern pattern(count > 2 ? arguments[2] : "");
  if (const std::string error = pattern.Error(); !error.empty()) {
    std::fprintf(stderr, "'%s' is no pattern: %s\n", arguments[2], error.c_str());
    return 2;
  }
  std::ofstream out(file);
  Report report(&out);
  bool agree = true;
  size_t measured = 0;
  for (const Row& row : rows) {
    if (!pattern.IsIn(row.name)) continue;
    agree = RunRow(row, least_seconds, &report) && agree;
    ++measured;
  }
  if (measured == 0) {
    std::fprintf(stderr, "no row's name has '%s' in it; --list names them all\n", arguments[2]);
    return 2;
  }
  report.End();
  return agree && out.good() ? 0 : 1;
}

}  // namespace

}  // namespace mirolta::bench

int main(int argc, char** argv) {
  return mirolta::bench::Main(argc, argv);
}
