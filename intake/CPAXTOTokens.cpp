#include "intake/CPAXTOTokens.h"

#include <algorithm>
#include <utility>

#include "intake/ExchangeRemoval.h"
#include "intake/RecordFormat.h"

namespace varnlog::intake {
namespace {

std::int32_t OpenError(const std::error_code& error) {
  if (error == std::errc::no_such_file_or_directory) return kFileNotFound;
  if (error == std::errc::too_many_files_open || error == std::errc::too_many_files_open_in_system) {
    return kNoFileNumber;
  }
  return kPathAccess;
}

}  // namespace

CPAXTOTokens::CPAXTOTokens(platform::CodePage oem) : oem_(std::move(oem)) {}

bool CPAXTOTokens::Item(std::int64_t index, CToken& token, Extent extent) {
  if (!file_.IsOpen() || index < 0 || index >= Count()) return false;
  const std::uint64_t place = places_[static_cast<std::size_t>(index)];
  const auto head = window_.At(file_, place, kShortestRecord);
  if (!head) return false;
  const std::int16_t length = RecordLength(*head);
  if (length < static_cast<std::int16_t>(kShortestRecord) || !IsKnownKind((*head)[kLengthBytes]))
    return false;
  const auto record = window_.At(file_, place, static_cast<std::size_t>(length));
  return record && ParseRecord(*record, oem_, token, extent);
}

void CPAXTOTokens::Remove(std::int64_t index) {
  if (index >= 0 && index < Count()) places_.erase(places_.begin() + index);
}

void CPAXTOTokens::Clear() {
  places_.clear();
}

bool CPAXTOTokens::OpenMailslot(std::string_view path) {
  const bool opened = OpenPiece(platform::ToPath(path), 0);
  isPiece_ = false;
  return opened;
}

bool CPAXTOTokens::OpenPiece(const std::filesystem::path& path, std::uint64_t begin, std::uint64_t end) {
  std::error_code error;
  file_ = platform::File::Open(path, platform::File::Mode::kRead, error, platform::File::Links::kRefuse);
  lastErr_ = error ? OpenError(error) : kNoError;
  window_.Reset();
  begin_ = begin;
  end_ = end;
  isPiece_ = true;
  return !error;
}

bool CPAXTOTokens::FindBounds(Bounds& bounds) {
  std::error_code error;
  const std::uint64_t fileLength = file_.Size(error);
  bounds.end = std::min(end_, fileLength);
  bounds.longest = isPiece_ ? std::numeric_limits<std::uint64_t>::max() : fileLength;
  return !error;
}

CPAXTOTokens::Record CPAXTOTokens::RecordAt(std::uint64_t position, const Bounds& bounds) {
  using Kind = Record::Kind;
  if (bounds.end - position < kLengthBytes) return {Kind::kNotYet, {}};
  const auto head = window_.At(file_, position, kLengthBytes);
  if (!head) return {Kind::kUnreadable, {}};
  const std::int16_t length = RecordLength(*head);
  if (length == 0) return {Kind::kEndOfData, {}};
  if (length < static_cast<std::int16_t>(kShortestRecord)) return {Kind::kDamaged, {}};
  const auto size = static_cast<std::size_t>(length);
  if (size > bounds.longest) return {Kind::kLongerThanFile, {}};
  if (size > bounds.end - position) return {Kind::kNotYet, {}};
  const auto record = window_.At(file_, position, size);
  if (!record) return {Kind::kUnreadable, {}};
  return {Kind::kComplete, *record};
}

std::int64_t CPAXTOTokens::GetTokenCount() {
  lastErr_ = kNoError;
  Bounds bounds;
  if (!file_.IsOpen() || !FindBounds(bounds)) return 0;
  std::int64_t count = 0;
  std::uint64_t position = begin_;
  while (position < bounds.end) {
    const Record record = RecordAt(position, bounds);
    if (record.kind != Record::Kind::kComplete) break;
    position += record.bytes.size();
    ++count;
  }
  return count;
}

std::int64_t CPAXTOTokens::Fail(std::int32_t error, std::size_t keep) {
  places_.resize(keep);
  lastErr_ = error;
  return 0;
}

std::int64_t CPAXTOTokens::ReadMailslot(std::int64_t maximum) {
  lastErr_ = kNoError;
  endsInsideRecord_ = false;
  const std::size_t before = places_.size();
  if (!file_.IsOpen()) return 0;
  Bounds bounds;
  if (!FindBounds(bounds)) return Fail(kDeviceError, before);
  std::uint64_t position = begin_;
  for (std::int64_t counter = 0; position < bounds.end && counter < maximum; ++counter) {
    const Record record = RecordAt(position, bounds);
    if (record.kind == Record::Kind::kUnreadable) return Fail(kDeviceError, before);
    endsInsideRecord_ = record.kind == Record::Kind::kLongerThanFile;
    if (endsInsideRecord_ || record.kind == Record::Kind::kDamaged) return Fail(kBadRecordLength, before);
    if (record.kind == Record::Kind::kEndOfData) position += kLengthBytes;
    if (record.kind != Record::Kind::kComplete) break;
    if (IsKnownKind(record.bytes[kLengthBytes])) {
      if (!HasItsStrings(record.bytes)) return Fail(kBadRecordLength, before);
      places_.push_back(position);
    }
    position += record.bytes.size();
  }
  return static_cast<std::int64_t>(position);
}

void CPAXTOTokens::CloseMailslot() {
  file_.Close();
  window_.Reset();
}

bool CPAXTOTokens::DeleteReadMails(std::string_view path, std::int64_t count) {
  lastErr_ = count < 0 ? kInvalidCall
                       : ExchangeRemoval(platform::ToPath(path)).Remove(static_cast<std::uint64_t>(count));
  return lastErr_ == kNoError;
}

}  // namespace varnlog::intake
