#include "db/dao/rows/ScrollRecordset.h"

#include <algorithm>
#include <string>

namespace varnlog::dao {

namespace {

[[noreturn]] void ThrowNoCurrentRecord() {
  throw EngineError(ErrorNumber::kNoCurrentRecord, "There is no current record.");
}

}  // namespace

Field& ScrollRecordset::Fields(std::size_t ordinal) {
  if (ordinal < fields_.size()) return fields_[ordinal];
  throw EngineError(ErrorNumber::kItemNotFound,
                    "The record set has no field number " + std::to_string(ordinal) + ".");
}

bool ScrollRecordset::IsBOF() const {
  return place_ == Place::kBefore || (place_ == Place::kAfter && RecordCount() == 0);
}

bool ScrollRecordset::IsEOF() const {
  return place_ == Place::kAfter || (place_ == Place::kBefore && RecordCount() == 0);
}

void ScrollRecordset::GoTo(Place place, std::int64_t position) {
  Leave();
  // Who jumps far back may go on in either direction.
  constexpr std::int64_t kFar = 128;
  movesBackward_ = place == Place::kAtRow && place_ == Place::kAtRow && position < position_ &&
                   position_ - position < kFar;
  place_ = place;
  position_ = position;
}

// The first rows are known since the record set was opened.
void ScrollRecordset::RequireRows() const {
  if (RecordCount() == 0) ThrowNoCurrentRecord();
}

std::int64_t ScrollRecordset::RequirePosition() const {
  if (place_ != Place::kAtRow) ThrowNoCurrentRecord();
  return position_;
}

void ScrollRecordset::GoToFirst() {
  if (Reach(0))
    GoTo(Place::kAtRow, 0);
  else
    GoTo(Place::kBefore, -1);
}

void ScrollRecordset::MoveFirst() {
  RequireRows();
  GoTo(Place::kAtRow, 0);
}

void ScrollRecordset::MoveLast() {
  RequireRows();
  GoTo(Place::kAtRow, ReachEnd() - 1);
}

void ScrollRecordset::Move(std::int64_t rows) {
  RequireRows();
  if (place_ == Place::kNowhere || (IsBOF() && rows < 0) || (IsEOF() && rows > 0)) ThrowNoCurrentRecord();
  const std::int64_t from = place_ == Place::kAfter ? ReachEnd() : position_;
  // Positions are far from this limit, so that no sum overflows and any larger step ends beyond the edge.
  constexpr std::int64_t kFar = std::int64_t{1} << 60;
  const std::int64_t target = from + std::clamp(rows, -kFar, kFar);
  if (target < 0)
    GoTo(Place::kBefore, -1);
  else if (Reach(target))
    GoTo(Place::kAtRow, target);
  else
    GoTo(Place::kAfter, -1);
}

std::int64_t ScrollRecordset::AbsolutePosition() const {
  return place_ == Place::kAtRow ? position_ : -1;
}

void ScrollRecordset::SetAbsolutePosition(std::int64_t position) {
  if (position < 0 || !Reach(position)) ThrowNoCurrentRecord();
  GoTo(Place::kAtRow, position);
}

dao::Bookmark ScrollRecordset::Bookmark() const {
  return {RequirePosition()};
}

}  // namespace varnlog::dao
