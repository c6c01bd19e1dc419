#include "exports/RowSource.h"

#include <numeric>

#include "logview/Columns.h"
#include "logview/RowDisplay.h"

namespace varnlog::exports {

namespace {

using dao::Field;
using dao::FieldType;
using dao::Recordset;
using logview::Column;
using logview::Form;
using logview::kColumns;

Cell::Kind KindOf(FieldType type) {
  const bool isNumber = type == FieldType::kLong || type == FieldType::kBoolean;
  return isNumber ? Cell::Kind::kNumber : Cell::Kind::kText;
}

Cell::Kind KindOf(const Column& column) {
  if (column.form == Form::kRowNumber) return Cell::Kind::kNumber;
  if (column.form == Form::kDate) return Cell::Kind::kDate;
  return column.isNumber ? Cell::Kind::kMeasured : Cell::Kind::kText;
}

class StoredRows final : public RowSource {
 public:
  explicit StoredRows(Recordset& rows) {
    for (std::size_t i = 0; i < rows.FieldCount(); ++i) fields_.push_back(&rows.Fields(i));
  }

  [[nodiscard]] std::vector<std::string> Headings() const override {
    std::vector<std::string> names;
    for (const Field* field : fields_) names.push_back(field->Name());
    return names;
  }

  [[nodiscard]] std::vector<int> Widths() const override { return std::vector<int>(fields_.size()); }

  void Read(Row& row) const override {
    row.resize(fields_.size());
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      const Field& field = *fields_[i];
      row[i].kind = field.IsNull() ? Cell::Kind::kNull : KindOf(field.Type());
      row[i].text.assign(field.Text());
    }
  }

 private:
  std::vector<Field*> fields_;
};

class DisplayedRows final : public RowSource {
 public:
  DisplayedRows(Recordset& rows, const DisplayForm& form, std::vector<int> columns)
      : texts_(form.texts),
        display_(rows, texts_, form.scheme, form.shortDate),
        taken_(rows.Fields("tXrayTs")),
        columns_(std::move(columns)) {}

  [[nodiscard]] std::vector<std::string> Headings() const override {
    std::vector<std::string> headings;
    for (const int column : columns_) headings.push_back(logview::ColumnHeading(column, texts_));
    return headings;
  }

  [[nodiscard]] std::vector<int> Widths() const override {
    std::vector<int> widths;
    for (const int column : columns_) widths.push_back(kColumns.at(static_cast<std::size_t>(column)).digits);
    return widths;
  }

  void Read(Row& row) const override {
    row.resize(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      Cell& cell = row[i];
      cell.text = display_.Text(columns_[i]);
      cell.kind = KindOf(kColumns.at(static_cast<std::size_t>(columns_[i])));
      if (cell.kind == Cell::Kind::kDate) cell.date = taken_.Date().DatePart();
    }
  }

 private:
  core::RememberedTexts texts_;
  logview::RowDisplay display_;
  const Field& taken_;
  std::vector<int> columns_;
};

}  // namespace

std::unique_ptr<RowSource> MakeStoredRows(Recordset& rows) {
  return std::make_unique<StoredRows>(rows);
}

std::vector<int> AllColumns() {
  std::vector<int> columns(logview::kColumnCount);
  std::iota(columns.begin(), columns.end(), 0);
  return columns;
}

std::unique_ptr<RowSource> MakeDisplayedRows(Recordset& rows, const DisplayForm& form,
                                             std::vector<int> columns) {
  return std::make_unique<DisplayedRows>(rows, form, std::move(columns));
}

bool ReadRow(const RowSource& source, Row& row) {
  try {
    source.Read(row);
    return true;
  } catch (const dao::EngineError& error) {
    if (error.number() != dao::ErrorNumber::kRecordDeleted) throw;
    return false;
  }
}

}  // namespace varnlog::exports
