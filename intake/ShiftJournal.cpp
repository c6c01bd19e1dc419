#include "intake/ShiftJournal.h"

#include <array>
#include <utility>
#include <vector>

namespace varnlog::intake {
namespace {

constexpr std::string_view kMagic = "VLSHIFT1";
constexpr std::size_t kHeadLength = 24;

std::filesystem::path JournalPath(std::filesystem::path exchange) {
  exchange += ".shift";
  return exchange;
}

}  // namespace

ShiftJournal::ShiftJournal(const std::filesystem::path& exchange)
    : exchange_(exchange), path_(JournalPath(exchange)) {}

bool ShiftJournal::Exists() const {
  std::error_code error;
  return std::filesystem::exists(path_, error);
}

FilePiece ShiftJournal::Content::Remainder() const {
  return {&stored.file, kHeadLength, stored.length - kHeadLength};
}

std::error_code ShiftJournal::Write(const platform::File& file, std::span<const FilePiece> remainder,
                                    std::uint64_t oldSize) {
  std::uint64_t length = 0;
  for (const FilePiece& piece : remainder) length += piece.length;
  // The shift writes to the bytes before `length` and then cuts the file there. So these, behind it, tell
  // afterwards whether it was cut, even when others have appended as much as was cut off.
  const auto tailSum = SumOf({&file, length, oldSize - length});
  if (!tailSum) return std::make_error_code(std::errc::io_error);
  std::string head(kMagic);
  AppendNumber(head, oldSize);
  AppendNumber(head, *tailSum);
  CheckedFileWriter writer(path_, exchange_);
  const std::error_code error = writer.Write(head, remainder);
  return error ? error : writer.Publish();
}

std::optional<ShiftJournal::Content> ShiftJournal::Load() {
  Content content;
  content.stored = OpenChecked(path_);
  if (content.stored.state != CheckedFile::State::kSound || content.stored.length < kHeadLength) {
    return std::nullopt;
  }
  std::string head(kHeadLength, '\0');
  std::error_code error;
  if (content.stored.file.ReadAt(0, head, error) != kHeadLength || !head.starts_with(kMagic)) {
    return std::nullopt;
  }
  content.oldSize = NumberAt(head, kMagic.size());
  content.tailSum = NumberAt(head, kMagic.size() + sizeof(std::uint64_t));
  return content;
}

std::error_code ShiftJournal::Apply(platform::File& file, const FilePiece& remainder,
                                    const RunOptions& options) {
  const std::uint64_t half = remainder.length / 2;
  std::error_code error = CopyBytes({remainder.file, remainder.offset, half}, file, 0);
  if (error) return error;
  options.Reached(RunStep::kShiftHalf);
  error = CopyBytes({remainder.file, remainder.offset + half, remainder.length - half}, file, half);
  // The moved bytes must be on the disk before the cut can be, or a power cut could leave a file that looks
  // finished and holds the old bytes.
  if (!error) file.Flush(error);
  if (error) return error;
  options.Reached(RunStep::kShiftWritten);
  file.Truncate(remainder.length, error);
  if (!error) file.Flush(error);
  if (error) return error;
  options.Reached(RunStep::kShiftCut);
  Discard();
  return {};
}

std::error_code ShiftJournal::Shift(platform::File& file, std::uint64_t from, const RunOptions& options) {
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  if (error) return error;
  const std::array<FilePiece, 1> remainder = {{{&file, from, size - from}}};
  error = Write(file, remainder, size);
  if (error) return error;
  options.Reached(RunStep::kShiftPrepared);
  const std::optional<Content> content = Load();
  if (!content) return std::make_error_code(std::errc::io_error);
  return Apply(file, content->Remainder(), options);
}

bool ShiftJournal::StillUncut(const platform::File& file, const Content& content, std::uint64_t size) {
  const std::uint64_t length = content.Remainder().length;
  if (size < content.oldSize || length > content.oldSize) return false;
  return SumOf({&file, length, content.oldSize - length}) == content.tailSum;
}

std::error_code ShiftJournal::Finish(platform::File& file, const RunOptions& options) {
  std::optional<Content> content = Load();
  if (!content) return KeepAsDamaged(path_) ? std::error_code() : std::make_error_code(std::errc::io_error);
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  if (error) return error;
  if (!StillUncut(file, *content, size)) {
    Discard();
    return {};
  }
  if (size > content->oldSize) {
    // What was appended since belongs to the remainder. The bytes to move are about to change, so the journal
    // is replaced first.
    const std::array<FilePiece, 2> remainder = {
        {content->Remainder(), {&file, content->oldSize, size - content->oldSize}}};
    error = Write(file, remainder, size);
    if (error) return error;
    content = Load();
    if (!content) return std::make_error_code(std::errc::io_error);
  }
  return Apply(file, content->Remainder(), options);
}

void ShiftJournal::Discard() {
  static_cast<void>(platform::RemoveFile(path_));
}

}  // namespace varnlog::intake
