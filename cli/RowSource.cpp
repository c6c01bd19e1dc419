#include "cli/RowSource.h"

#include "logview/Columns.h"
#include "logview/RowDisplay.h"
#include "start/StartUp.h"

namespace varnlog::cli {

namespace {

using dao::Field;
using dao::FieldType;
using dao::Recordset;

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

  void Read(Row& row) const override {
    row.resize(fields_.size());
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      const Field& field = *fields_[i];
      row[i].isNull = field.IsNull();
      row[i].isNumber = field.Type() == FieldType::kLong || field.Type() == FieldType::kBoolean;
      row[i].text.assign(field.Text());
    }
  }

 private:
  std::vector<Field*> fields_;
};

class DisplayedRows final : public RowSource {
 public:
  DisplayedRows(Recordset& rows, const Session& session)
      : texts_(session.texts()),
        scheme_(session.globals(), session.ini()),
        display_(rows, texts_, scheme_, session.shortDate()) {}

  [[nodiscard]] std::vector<std::string> Headings() const override {
    std::vector<std::string> headings;
    headings.reserve(logview::kColumnCount);
    for (int i = 0; i < logview::kColumnCount; ++i) headings.push_back(logview::ColumnHeading(i, texts_));
    return headings;
  }

  void Read(Row& row) const override {
    row.resize(logview::kColumnCount);
    for (int i = 0; i < logview::kColumnCount; ++i) {
      Cell& cell = row[static_cast<std::size_t>(i)];
      cell.text = display_.Text(i);
      cell.isNumber = logview::kColumns.at(static_cast<std::size_t>(i)).form == logview::Form::kRowNumber;
    }
  }

 private:
  core::RememberedTexts texts_;
  start::HostToothScheme scheme_;
  logview::RowDisplay display_;
};

}  // namespace

std::unique_ptr<RowSource> MakeStoredRows(Recordset& rows) {
  return std::make_unique<StoredRows>(rows);
}

std::unique_ptr<RowSource> MakeDisplayedRows(Recordset& rows, const Session& session) {
  return std::make_unique<DisplayedRows>(rows, session);
}

}  // namespace varnlog::cli
