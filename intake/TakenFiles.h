#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "intake/CheckedFile.h"

namespace varnlog::intake {

/// An exchange file that was moved aside instead of deleted: EXCHANGEFILE.STAMP-FROM.taken. A program that
/// had the exchange file open, or was just opening it, goes on writing into this one. The bytes before FROM
/// are accounted for; what comes behind them is pending.
struct TakenFile {
  std::filesystem::path path;
  std::uint64_t stamp = 0;  // when it was moved aside: milliseconds since 1970, unique
  std::uint64_t from = 0;
  std::uint64_t size = 0;

  [[nodiscard]] bool IsPending() const { return size > from; }
};

/// In the order in which they were moved aside. After an error some may be missing.
[[nodiscard]] std::vector<TakenFile> ListTakenFiles(const std::filesystem::path& exchange,
                                                    std::error_code& error);

/// Moves the exchange file aside with nothing accounted for yet, and tells where it is then. Where somebody
/// who has it open can forbid that (Windows), fails with std::errc::device_or_resource_busy.
[[nodiscard]] std::optional<TakenFile> MoveAside(const std::filesystem::path& exchange,
                                                 std::error_code& error);

/// Where such a file is made before it gets the name of one that was moved aside.
[[nodiscard]] std::filesystem::path RestPath(std::filesystem::path exchange);

/// Makes a file of these bytes, all of them pending, as if it had been moved aside now.
[[nodiscard]] std::error_code MakeTakenFile(const std::filesystem::path& exchange, const FilePiece& bytes);

/// Notes that the bytes before `from`, and no others, are accounted for, by renaming the file.
[[nodiscard]] bool AccountFor(const std::filesystem::path& exchange, const TakenFile& taken,
                              std::uint64_t from);

/// True when nobody can write to the file any more: no other program has it open, and it was moved aside so
/// long ago that none is just opening it.
[[nodiscard]] bool IsOutOfReach(const TakenFile& taken, std::chrono::milliseconds grace);

/// Deletes the files in which nothing is pending and that are out of reach.
void SweepTakenFiles(const std::filesystem::path& exchange, std::chrono::milliseconds grace);

}  // namespace varnlog::intake
