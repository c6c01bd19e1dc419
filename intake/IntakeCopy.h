#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include "intake/CheckedFile.h"
#include "intake/RunStep.h"

namespace varnlog::intake {

/// Names one run: 32 hexadecimal digits, random. The log holds the name of the last run that was committed.
using RunId = std::string;
[[nodiscard]] RunId NewRunId();

/// Bytes of the copy and where they came from.
struct CopySection {
  enum class Source : std::uint64_t {
    kCarried = 0,   // an earlier copy: they are nowhere else any more
    kExchange = 1,  // the exchange file
    kTaken = 2,     // a file moved aside, known by its stamp
  };
  Source source = Source::kCarried;
  std::uint64_t stamp = 0;
  std::uint64_t offset = 0;  // in the source
  FilePiece bytes;
};

/// The safe copy of what a run is about to remove, LOGFILE.intake: it is on the disk before the first byte is
/// removed and goes when the rows are committed. The format is drawn in docs/intake.md.
class IntakeCopy {
 public:
  enum class State { kNone, kUnreadable, kDamaged, kSound };

  explicit IntakeCopy(const std::filesystem::path& logFile);

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  [[nodiscard]] bool Exists() const;

  /// The run that made the copy, without checking the rest; "" when it cannot be told or there is none.
  [[nodiscard]] RunId PeekId() const;

  /// Whatever the file holds, nothing is trusted before it has been checked.
  void Load();
  [[nodiscard]] State GetState() const { return state_; }
  [[nodiscard]] const RunId& Id() const { return id_; }
  /// Their bytes are pieces of the copy itself and can be read until LetGo() or the end of this object.
  [[nodiscard]] const std::vector<CopySection>& Sections() const { return sections_; }

  /// Closes the file, which could not be replaced everywhere while it is open. What it was is still known.
  void LetGo() { stored_.file.Close(); }

  /// Replaces the copy, whole or not at all. `letGo` is called when the sections have been read: whatever
  /// has the file open closes it.
  [[nodiscard]] std::error_code Replace(const RunId& id, std::span<const CopySection> sections,
                                        const RunOptions& options, const std::function<void()>& letGo) const;
  [[nodiscard]] bool Delete();

 private:
  [[nodiscard]] State Parse();
  [[nodiscard]] bool ParseSections(std::string_view table);

  std::filesystem::path logFile_;
  std::filesystem::path path_;
  State state_ = State::kNone;
  CheckedFile stored_;
  RunId id_;
  std::vector<CopySection> sections_;
};

}  // namespace varnlog::intake
