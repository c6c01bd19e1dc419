#pragma once

#include <map>
#include <string>
#include <utility>

#include "db/dao/Recordset.h"
#include "report/Formula.h"

namespace varnlog::report {

/// What the formulas of the report see: the current row of a record set and the page that is being laid out.
class LogLine final : public FormulaContext {
 public:
  /// `rows` outlives the line.
  LogLine(dao::Recordset& rows, platform::DateTime printDate) : rows_(rows), printDate_(printDate) {}

  void SetPage(std::int64_t page, std::int64_t pages) { page_ = page, pages_ = pages; }
  void SetCount(std::int64_t count) { count_ = count; }
  /// What the field "laterEntry" holds.
  void SetEntry(std::string entry) { entry_ = std::move(entry); }

  /// Empty for every field while there is no current row, so that header and footer can be drawn then.
  /// Throws dao::EngineError when the row cannot be read.
  [[nodiscard]] FormulaValue Field(std::string_view name) const override;
  [[nodiscard]] std::int64_t PageNumber() const override { return page_; }
  [[nodiscard]] std::int64_t TotalPageCount() const override { return pages_; }
  [[nodiscard]] std::int64_t RecordNumber() const override { return rows_.AbsolutePosition() + 1; }
  [[nodiscard]] std::int64_t Count() const override { return count_; }
  [[nodiscard]] platform::DateTime PrintDate() const override { return printDate_; }

 private:
  [[nodiscard]] const dao::Field& FieldOf(std::string_view name) const;

  dao::Recordset& rows_;
  platform::DateTime printDate_;
  std::int64_t page_ = 1;
  std::int64_t pages_ = 1;
  std::int64_t count_ = 0;
  std::string entry_;
  mutable std::map<std::string, const dao::Field*, std::less<>> fields_;  // looked up once
};

}  // namespace varnlog::report
