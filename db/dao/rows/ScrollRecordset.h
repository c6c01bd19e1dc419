#pragma once

#include <cstdint>

#include "db/dao/Recordset.h"
#include "db/dao/rows/RowFields.h"

namespace varnlog::dao {

/// Moving among numbered rows; what the rows are is the derived class's business.
class ScrollRecordset : public Recordset, protected RowSource {
 public:
  [[nodiscard]] std::size_t FieldCount() const override { return fields_.size(); }
  using Recordset::Fields;
  [[nodiscard]] Field& Fields(std::size_t ordinal) override;

  [[nodiscard]] bool IsBOF() const override;
  [[nodiscard]] bool IsEOF() const override;
  void MoveFirst() override;
  void MoveLast() override;
  void MoveNext() override { Move(1); }
  void MovePrevious() override { Move(-1); }
  void Move(std::int64_t rows) override;
  [[nodiscard]] std::int64_t AbsolutePosition() const override;
  void SetAbsolutePosition(std::int64_t position) override;
  [[nodiscard]] dao::Bookmark Bookmark() const override;
  void SetBookmark(dao::Bookmark bookmark) override { SetAbsolutePosition(bookmark.position); }

 protected:
  explicit ScrollRecordset(std::shared_ptr<const std::vector<FieldDef>> defs)
      : fields_(std::move(defs), *this) {}

  /// Makes the row at `position` known; false when there is none.
  [[nodiscard]] virtual bool Reach(std::int64_t position) = 0;
  /// Makes all rows known and returns their number.
  [[nodiscard]] virtual std::int64_t ReachEnd() = 0;
  /// Another row is about to be current, or none.
  virtual void Leave() = 0;

  /// kNoCurrentRecord when there is none.
  [[nodiscard]] std::int64_t RequirePosition() const;
  [[nodiscard]] bool MovesBackward() const { return movesBackward_; }
  [[nodiscard]] CopyBuffer& Buffer() { return fields_.Buffer(); }
  [[nodiscard]] const std::vector<FieldDef>& Defs() const { return fields_.Defs(); }

  void GoToFirst();

 private:
  enum class Place { kNowhere, kBefore, kAtRow, kAfter };

  void GoTo(Place place, std::int64_t position);
  void RequireRows() const;

  RowFields fields_;
  Place place_ = Place::kNowhere;
  std::int64_t position_ = -1;
  bool movesBackward_ = false;
};

}  // namespace varnlog::dao
