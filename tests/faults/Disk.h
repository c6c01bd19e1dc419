#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/faults/Files.h"
#include "tests/faults/Trace.h"

namespace varnlog::faults {

/// A moment at which the power goes, and what of the unflushed changes the disk has made until then.
struct PowerCut {
  std::uint64_t after = 0;  // number of the last call
  int variant = 0;

  static constexpr int kNothing = 0;      // only what was flushed
  static constexpr int kEverything = 1;   // all of it
  static constexpr int kNamesOnly = 2;    // names and lengths, the new bytes are zeros
  static constexpr int kContentOnly = 3;  // bytes, but no name was made, changed or removed
  static constexpr int kFirstMixed = 4;   // from here on: some, in any order, writes torn or zeros

  [[nodiscard]] std::string Text() const {
    return "power " + std::to_string(after) + " variant " + std::to_string(variant);
  }
};

/// What is on the disk of a folder while a recorded run goes on, for certain and perhaps. A file's content is
/// certain when it was flushed, its name when the folder was.
class Disk {
 public:
  enum class Flushing { kWorks, kIsIgnored };

  Disk(const std::filesystem::path& folder, const Files& beginning, Flushing flushing);

  void Do(const Step& step);
  /// The files that are found when the power is back.
  [[nodiscard]] Files After(const PowerCut& cut) const;

 private:
  /// A write, or a new length when there are no bytes.
  struct Change {
    std::uint64_t offset = 0;
    std::string bytes;
    bool isLength = false;
  };
  struct File {
    std::string flushed;
    std::vector<Change> since;
  };
  using Name = std::pair<std::string, std::optional<std::size_t>>;  // which file has it, if any
  using NameChange = std::vector<Name>;                             // happens whole or not at all

  [[nodiscard]] std::string NameOf(const std::string& path) const;
  [[nodiscard]] std::optional<std::size_t> Holder(const std::string& name) const;
  [[nodiscard]] File& Open(const Step& step);
  void DoNames(const Step& step);
  void Flush(const Step& step);
  void Arrive(const Step& step);
  static void Apply(const Change& change, std::string& content);
  [[nodiscard]] static std::string Content(const File& file, const PowerCut& cut, std::uint64_t seed);

  std::string folder_;
  Flushing flushing_;
  std::vector<File> files_;
  std::map<std::string, std::size_t> names_;       // flushed
  std::vector<NameChange> since_;                  // not flushed
  std::map<std::uint64_t, std::size_t> byNumber_;  // the run's open files
};

/// Every moment behind a change of the run, each in all of its variants.
[[nodiscard]] std::vector<PowerCut> EveryPowerCut(const std::vector<Step>& run, int variants);

}  // namespace varnlog::faults
