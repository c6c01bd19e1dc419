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

  /// Finishes an interrupted shift of `file`, keeping what was appended since, or finds that it had reached
  /// its end.
  [[nodiscard]] std::error_code Finish(platform::File& file, const RunOptions& options);

  /// The exchange file is gone, and with it what there was to finish.
  void Discard();

 private:
  struct Content {
    CheckedFile stored;
    std::uint64_t oldSize = 0;
    std::uint64_t tailSum = 0;
    [[nodiscard]] FilePiece Remainder() const;
  };
  [[nodiscard]] std::error_code Write(const platform::File& file, std::span<const FilePiece> remainder,
                                      std::uint64_t oldSize);
  [[nodiscard]] std::optional<Content> Load();
  [[nodiscard]] std::error_code Apply(platform::File& file, const FilePiece& remainder,
                                      const RunOptions& options);
  [[nodiscard]] static bool StillUncut(const platform::File& file, const Content& content,
                                       std::uint64_t size);

  std::filesystem::path exchange_;
  std::filesystem::path path_;
};

}  // namespace varnlog::intake
