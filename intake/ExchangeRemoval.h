#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "intake/CPAXTOTokens.h"
#include "intake/RunStep.h"
#include "intake/ShiftJournal.h"

namespace varnlog::intake {

/// Takes read bytes away from the front of the exchange file so that no append is lost: not by a writer that
/// takes no lock, not by one that keeps the file open, not by an interruption at any point.
///
/// - All was read: the file is moved aside (TakenFiles), where a late writer's bytes are still found.
/// - More was appended, and there is a moment in which nobody else has the file open: the remainder is moved
///   to the front and the file cut (ShiftJournal), while new openers wait and the bytes that are written to
///   are locked.
/// - More was appended, and somebody keeps the file open, or the file system cannot tell: the file is moved
///   aside as well. Whoever has it open goes on writing there, and the next run reads on at that place.
/// - Whoever has it open forbids that (Windows): it stays as it is. Nobody can shift and cut a file without
/// losing
///   what is appended at that moment, so it is the log that notes how far it was read.
///
/// Nothing is removed from a file that is not the one that was read, or whose bytes are others by now:
/// another log may be fed from the same exchange file, whose runs this one's lock does not hold off.
class ExchangeRemoval {
 public:
  explicit ExchangeRemoval(const std::filesystem::path& exchange, RunOptions options = {});

  /// What was read of the exchange file: which file it was, and the sum of the bytes from where reading began
  /// on. What stands before was read by an earlier run that could not remove it.
  struct ReadBytes {
    platform::FileIdentity file;
    std::uint64_t sum = 0;
    std::uint64_t begin = 0;
  };
  /// Removes the first `count` bytes; none of a longer file stay as they are. kNoError; kFileNotFound;
  /// kInvalidCall when the file is shorter or not what was read; kDeviceError when it cannot be opened, read,
  /// locked or written to; kPathAccess when it is a link or cannot be moved aside; kPermissionDenied when
  /// somebody who has it open forbids that. After an error the bytes are still there, or in a file moved
  /// aside in which they are pending.
  [[nodiscard]] RunTimeError Remove(std::uint64_t count, const std::optional<ReadBytes>& read = {});

  /// Finishes what an interruption left half done. False when somebody keeps the file open meanwhile, the
  /// disk fails or the journal is damaged: the file must not be read before this has succeeded.
  [[nodiscard]] bool Recover();

  enum class Realigned { kNotNeeded, kDone, kFailed };
  /// For an interrupted shift whose journal is damaged. `read` are the bytes that were about to be removed
  /// from the beginning of the file, from the safe copy. When there is nothing in their place but themselves
  /// and a part of what stands behind them, that is the remainder, whole, and is moved once more.
  [[nodiscard]] Realigned Realign(const FilePiece& read);

 private:
  using Solitude = platform::File::Solitude;
  [[nodiscard]] Solitude WaitForSolitude(platform::File& file) const;
  [[nodiscard]] static RunTimeError Check(const platform::File& file, std::uint64_t count,
                                          const std::optional<ReadBytes>& read);
  [[nodiscard]] RunTimeError RemoveAlone(platform::File& file, std::uint64_t count,
                                         const std::optional<ReadBytes>& read);
  [[nodiscard]] RunTimeError RemoveInCompany(platform::File& file, std::uint64_t count);
  [[nodiscard]] Realigned RealignAlone(platform::File& file, const FilePiece& read);
  [[nodiscard]] RunTimeError TakeAside(const platform::File& file, std::uint64_t count);

  std::filesystem::path exchange_;
  RunOptions options_;
  ShiftJournal journal_;
};

}  // namespace varnlog::intake
