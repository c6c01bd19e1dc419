#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace varnlog::bench {

/// A practice of its own in the temporary folder: imaging suite, program folder, exchange file. Removed by
/// the destructor.
class Installation {
 public:
  explicit Installation(const std::string& name);
  ~Installation();
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;

  [[nodiscard]] std::filesystem::path ProgramFolder() const { return root_ / "program"; }
  [[nodiscard]] std::filesystem::path LogFile() const { return root_ / "Data" / "Varnlog.mdb"; }
  [[nodiscard]] std::filesystem::path ExchangeFile() const { return root_ / "Data" / "varnlog.sdx"; }

  /// Forgets the log, the exchange file and what interrupted runs left.
  void Clear();

  struct Run {
    double seconds = 0;
    double peakMegabytes = 0;
    int status = 0;
  };
  /// One whole run of varnlogctl in this installation, its output thrown away.
  [[nodiscard]] Run Ctl(std::vector<std::string> arguments) const;
  /// The same of any program, which `command` begins with.
  [[nodiscard]] static Run Spawn(std::vector<std::string> command);

 private:
  std::filesystem::path root_;
};

/// `count` records of the seeded practice from 2015 on, every one a new exposure, as bytes of an exchange
/// file.
[[nodiscard]] std::string FreshRecords(std::int64_t count, std::uint64_t seed, int startYear);

/// Made once and kept for the whole run: FreshRecords in a file that is copied into place.
[[nodiscard]] const std::filesystem::path& RecordFile(std::int64_t count, std::uint64_t seed, int startYear);

/// Made once and kept for the whole run: a practice with a log of `rows` exposures, the empty one for 0. Its
/// log is only read.
[[nodiscard]] const Installation& FilledPractice(std::int64_t rows);

void CopyInto(const std::filesystem::path& source, const std::filesystem::path& target);

}  // namespace varnlog::bench
