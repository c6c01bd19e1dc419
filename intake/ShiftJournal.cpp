#include "intake/ShiftJournal.h"

#include <array>
#include <utility>
#include <vector>

#include "intake/TakenFiles.h"

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
  return platform::MayExist(path_);
}

bool ShiftJournal::IsDamaged() const {
  return Load().stored.state == CheckedFile::State::kDamaged;
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

ShiftJournal::Content ShiftJournal::Load() const {
  using State = CheckedFile::State;
  Content content;
  content.stored = OpenChecked(path_);
  if (content.stored.state != State::kSound) return content;
  std::string head(kHeadLength, '\0');
  std::error_code error;
  const bool whole = content.stored.file.ReadAt(0, head, error) == kHeadLength;
  if (error) content.stored.state = State::kUnreadable;
  if (error) return content;
  if (!whole || content.stored.length < kHeadLength || !head.starts_with(kMagic)) {
    content.stored.state = State::kDamaged;
    return content;
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
  return Discard();
}

std::error_code ShiftJournal::Shift(platform::File& file, std::uint64_t from, const RunOptions& options) {
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  if (error) return error;
  const std::array<FilePiece, 1> remainder = {{{&file, from, size - from}}};
  error = Write(file, remainder, size);
  if (error) return error;
  options.Reached(RunStep::kShiftPrepared);
  const Content content = Load();
  if (content.stored.state != CheckedFile::State::kSound) return std::make_error_code(std::errc::io_error);
  return Apply(file, content.Remainder(), options);
}

std::optional<ShiftJournal::Left> ShiftJournal::WhatIsLeft(const platform::File& file, const Content& content,
                                                           std::uint64_t size) {
  const FilePiece remainder = content.Remainder();
  if (size >= content.oldSize && remainder.length <= content.oldSize) {
    const auto sum = SumOf({&file, remainder.length, content.oldSize - remainder.length});
    if (!sum) return std::nullopt;
    if (*sum == content.tailSum) return Left::kUncut;
  }
  if (size < remainder.length) return Left::kAnother;
  const auto same = SameBytes(remainder, {&file, 0, remainder.length});
  if (!same) return std::nullopt;
  return *same ? Left::kShifted : Left::kAnother;
}

/// The remainder of an uncut file is moved once more, together with what was appended since.
std::error_code ShiftJournal::Complete(platform::File& file, Content content, std::uint64_t size,
                                       const RunOptions& options) {
  if (size > content.oldSize) {
    // The bytes to move are about to change, so the journal is replaced first.
    const std::array<FilePiece, 2> remainder = {
        {content.Remainder(), {&file, content.oldSize, size - content.oldSize}}};
    const std::error_code error = Write(file, remainder, size);
    if (error) return error;
    content = Load();
    if (content.stored.state != CheckedFile::State::kSound) return std::make_error_code(std::errc::io_error);
  }
  return Apply(file, content.Remainder(), options);
}

std::error_code ShiftJournal::Finish(platform::File& file, const RunOptions& options) {
  Content content = Load();
  if (content.stored.state == CheckedFile::State::kNone) return {};
  if (content.stored.state != CheckedFile::State::kSound) return std::make_error_code(std::errc::io_error);
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  if (error) return error;
  const std::optional<Left> left = WhatIsLeft(file, content, size);
  if (!left) return std::make_error_code(std::errc::io_error);
  switch (*left) {
    case Left::kUncut:
      return Complete(file, std::move(content), size, options);
    case Left::kShifted:
      return Discard();
    case Left::kAnother:
      break;
  }
  return SaveRemainder(content);
}

std::error_code ShiftJournal::FinishWithoutFile() {
  const Content content = Load();
  if (content.stored.state == CheckedFile::State::kNone) return {};
  if (content.stored.state != CheckedFile::State::kSound) return std::make_error_code(std::errc::io_error);
  return SaveRemainder(content);
}

/// Nobody else has these bytes any more. They came before everything that stands in the exchange file now. An
/// interruption before the journal goes makes them come twice, which is recognised.
std::error_code ShiftJournal::SaveRemainder(const Content& content) {
  const std::error_code error = MakeTakenFile(exchange_, content.Remainder());
  return error ? error : Discard();
}

/// Until it is gone nothing may be read: a journal that outlives the file it is about brings back old
/// records.
std::error_code ShiftJournal::Discard() {
  return platform::RemoveFile(path_);
}

}  // namespace varnlog::intake
