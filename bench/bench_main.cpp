// Measures rows, this library and its peers interleaved, after verifying that all outputs are
// equal.
//
//   mirolta-bench results.json [PATTERN]    the rows whose names match the regular expression
//   mirolta-bench --list
//
// Options of the measuring library may be given too; they override those chosen here.
#include <benchmark/benchmark.h>
#include <botan/version.h>
#include <gcrypt.h>
#include <gmp.h>
#include <nettle/version.h>
#include <openssl/crypto.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <regex>

#include "bench_row.h"
#include "platform.h"

namespace mirolta::bench {

namespace {

// The number of operands for which outputs are compared.
constexpr size_t kCheckedOperands = 16;

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

void Measure(benchmark::State& state, const Row& row, const Contestant& contestant,
             size_t* operand) {
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
void Register(const Row& row, const std::vector<Contestant>& contestants) {
  for (const Contestant& contestant : contestants) {
    const auto operand = std::make_shared<size_t>(0);
    auto* const made =
        benchmark::RegisterBenchmark((row.name + "|" + contestant.name).c_str(),
                                     [&row, &contestant, operand](benchmark::State& state) {
                                       Measure(state, row, contestant, operand.get());
                                     });
    // Processor time, which depends less on other work of the machine.
    if (row.has_threads) made->UseRealTime();
    if (row.iterations != 0) made->Iterations(row.iterations);
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

bool RunRow(const Row& row, Report* report) {
  std::fprintf(stderr, "%s\n", row.name.c_str());
  const std::vector<Contestant> contestants = row.make();
  if (!OutputsAgree(row, contestants)) return false;
  Register(row, contestants);
  benchmark::RunSpecifiedBenchmarks(report);
  benchmark::ClearRegisteredBenchmarks();
  return true;
}

void AddVersions() {
  static constexpr struct {
    ProcessorFeature bit;
    const char* name;
  } kNames[] = {
      {kFeatureSsse3, "SSE4.1"}, {kFeatureAvx2, "AVX2"},       {kFeatureBmi2Adx, "BMI2+ADX"},
      {kFeatureAesNi, "AES"},    {kFeatureSha, "SHA"},         {kFeatureAvx512, "AVX-512"},
      {kFeatureVaes, "VAES"},    {kFeatureAvx512Ifma, "IFMA"}, {kFeatureGfni, "GFNI"},
  };
  std::string features;
  for (const auto& row : kNames) {
    if ((ProcessorFeatures() & row.bit) != 0) features += std::string(row.name) + " ";
  }
  const std::string nettle =
      std::to_string(nettle_version_major()) + "." + std::to_string(nettle_version_minor());
  benchmark::AddCustomContext("features", features);
  benchmark::AddCustomContext("OpenSSL", OpenSSL_version(OPENSSL_VERSION_STRING));
  benchmark::AddCustomContext("nettle", nettle);
  benchmark::AddCustomContext("Botan", Botan::short_version_string());
  benchmark::AddCustomContext("GMP", gmp_version);
  benchmark::AddCustomContext("libgcrypt", gcry_check_version(nullptr));
}

int Main(int argc, char** argv) {
  gcry_check_version(nullptr);
  gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
  gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
  std::vector<char*> arguments(argv, argv + argc);
  std::string options[] = {"--benchmark_enable_random_interleaving=true",
                           "--benchmark_repetitions=5", "--benchmark_min_time=0.02",
                           "--benchmark_report_aggregates_only=true",
                           "--benchmark_display_aggregates_only=true"};
  // Before the caller's own options, which override them.
  for (std::string& option : options) arguments.insert(arguments.begin() + 1, option.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  AddVersions();

  RowList rows;
  for (const auto add : kGroups) add(&rows);
  const std::string file = count > 1 ? arguments[1] : "--list";
  if (file == "--list") {
    for (const Row& row : rows) std::printf("%s\n", row.name.c_str());
    return 0;
  }
  std::regex pattern;
  try {
    pattern = count > 2 ? arguments[2] : "";
  } catch (const std::regex_error& error) {
    std::fprintf(stderr, "'%s' is no pattern: %s\n", arguments[2], error.what());
    return 2;
  }
  std::ofstream out(file);
  Report report(&out);
  bool agree = true;
  size_t measured = 0;
  for (const Row& row : rows) {
    if (!std::regex_search(row.name, pattern)) continue;
    agree = RunRow(row, &report) && agree;
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
