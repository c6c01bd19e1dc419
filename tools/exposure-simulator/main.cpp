#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>

#include <CLI/CLI.hpp>

#include "platform/CodePage.h"
#include "platform/Files.h"
#include "tools/exchange/ExposureGenerator.h"
#include "tools/exposure-simulator/Appender.h"

// Plays the imaging suite: appends made-up exposures to the log book's exchange file.

namespace {

using namespace varnlog;

struct Options {
  std::string file;
  std::string start = "2015-01-05";
  std::string order = "time";
  tools::GeneratorOptions generator;
  tools::Appender::Habits habits;
  double rate = 0;  // records a second; 0: as fast as it goes
  bool bulk = false;
};

void Describe(CLI::App& app, Options& options) {
  app.add_option("--file", options.file, "the exchange file; made when it is missing")->required();
  app.add_option("--count", options.generator.count, "records to append")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  app.add_option("--rate", options.rate, "records a second; 0: without a pause")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  app.add_option("--seed", options.generator.seed, "the same seed makes the same records")
      ->capture_default_str();
  app.add_option("--language", options.generator.language, "CYR: Cyrillic names in code page 866")
      ->check(CLI::IsMember({"D", "GB", "E", "I", "F", "NL", "CYR"}))
      ->capture_default_str();
  app.add_option("--start", options.start, "day of the first exposure, YYYY-MM-DD")->capture_default_str();
  app.add_option("--order", options.order, "time: as they happen; mixed: in no order")
      ->check(CLI::IsMember({"time", "mixed"}))
      ->capture_default_str();
  app.add_option("--info", options.generator.informationPercent, "per cent of records with information")
      ->check(CLI::Range(0, 100))
      ->capture_default_str();
  app.add_option("--repeat", options.generator.repeatedPercent, "per cent of records sent twice")
      ->check(CLI::Range(0, 100))
      ->capture_default_str();
  app.add_option("--invalid", options.generator.invalidPercent, "per cent of exposures with an invalid date")
      ->check(CLI::Range(0.0, 100.0))
      ->capture_default_str();
  app.add_flag("--lock", options.habits.takesLock, "lock the file's first byte around each record");
  app.add_flag("--hold", options.habits.holdsFile, "keep the file open between records");
  app.add_flag("--bulk", options.bulk, "write many records at once instead of one by one");
}

void AppendOneByOne(tools::ExposureGenerator& generator, const Options& options) {
  using Clock = std::chrono::steady_clock;
  const auto oem = platform::CodePage::Oem(options.generator.language);
  tools::Appender appender(platform::ToPath(options.file), options.habits);
  const auto begin = Clock::now();
  std::string record;
  for (std::int64_t i = 0; i < options.generator.count; ++i) {
    if (options.rate > 0) {
      const std::chrono::duration<double> due(static_cast<double>(i) / options.rate);
      std::this_thread::sleep_until(begin + std::chrono::duration_cast<Clock::duration>(due));
    }
    record.clear();
    tools::AppendRecord(generator.Next(), oem, record);
    appender.Append(record);
  }
}

void AppendInBulk(tools::ExposureGenerator& generator, const Options& options) {
  constexpr std::size_t kPiece = 4U << 20U;
  const auto oem = platform::CodePage::Oem(options.generator.language);
  tools::Appender appender(platform::ToPath(options.file), {.holdsFile = true, .takesLock = false});
  std::string records;
  for (std::int64_t i = 0; i < options.generator.count; ++i) {
    tools::AppendRecord(generator.Next(), oem, records);
    if (records.size() < kPiece) continue;
    appender.Append(records);
    records.clear();
  }
  if (!records.empty()) appender.Append(records);
}

int Run(int argc, char** argv) {
  CLI::App app("Appends made-up exposures to an exchange file, as the imaging suite does.",
               "exposure-simulator");
  Options options;
  Describe(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  const auto start = platform::DateTime::FromIso(options.start);
  if (!start) {
    std::fprintf(stderr, "--start: %s is not a day of the form YYYY-MM-DD\n", options.start.c_str());
    return 2;
  }
  options.generator.start = *start;
  options.generator.inTimeOrder = options.order == "time";
  tools::ExposureGenerator generator(options.generator);
  if (options.bulk) {
    AppendInBulk(generator, options);
  } else {
    AppendOneByOne(generator, options);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "exposure-simulator: %s\n", error.what());
    return 1;
  }
}
