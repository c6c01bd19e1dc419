#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "intake/CheckedFile.h"
#include "intake/RunStep.h"
#include "platform/Files.h"

namespace varnlog::intake {

/// Makes moving the remainder of the exchange file to its front safe against every interruption: the
/// remainder is first written to EXCHANGEFILE.shift. The format is drawn in docs/intake.md.
///
/// Nobody else may write to the exchange file while one of these functions runs on it.
class ShiftJournal {
 public:
  explicit ShiftJournal(const std::filesystem::path& exchange);

  /// True when an interrupted shift may have to be finished.
  [[nodiscard]] bool Exists() const;

  /// Shortens `file` to its bytes from `from` on. After an error the file is either as it was or Finish()
  /// puts it right later.
  [[nodiscard]] std::error_code Shift(platform::File& file, std::uint64_t from, const RunOptions& options);

  /// True when the journal is not what was written, so that nobody knows what was to be moved. An error of
  /// reading is no damage.
  [[nodiscard]] bool IsDamaged() const;
  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }

  /// Finishes an interrupted shift of `file`, keeping what was appended since, or finds that it had reached
  /// its end. When `file` is another one that has taken the exchange file's name, the remainder becomes a
  /// file moved aside.
  [[nodiscard]] std::error_code Finish(platform::File& file, const RunOptions& options);
  /// The same when there is no exchange file any more.
  [[nodiscard]] std::error_code FinishWithoutFile();

 private:
  /// What an interruption has left of the exchange file.
  enum class Left { kUncut, kShifted, kAnother };
  struct Content {
    CheckedFile stored;
    std::uint64_t oldSize = 0;
    std::uint64_t tailSum = 0;
    [[nodiscard]] FilePiece Remainder() const;
  };
  [[nodiscard]] std::error_code Write(const platform::File& file, std::span<const FilePiece> remainder,
                                      std::uint64_t oldSize);
  [[nodiscard]] Content Load() const;
  [[nodiscard]] std::error_code Apply(platform::File& file, const FilePiece& remainder,
                                      const RunOptions& options);
  /// Nothing when the file cannot be read.
  [[nodiscard]] static std::optional<Left> WhatIsLeft(const platform::File& file, const Content& content,
                                                      std::uint64_t size);
  [[nodiscard]] std::error_code Complete(platform::File& file, Content content, std::uint64_t size,
                                         const RunOptions& options);
  [[nodiscard]] std::error_code SaveRemainder(const Content& content);
  [[nodiscard]] std::error_code Discard();

  std::filesystem::path exchange_;
  std::filesystem::path path_;
};

}  // namespace varnlog::intake
