#include "tests/legacy/ConversionFixture.h"

#include <algorithm>

#include "legacy/LogSchema.h"

namespace varnlog::legacy {
namespace {

std::vector<std::string> Split(const std::string& line) {
  std::vector<std::string> fields;
  for (std::size_t at = 0; at <= line.size(); at += fields.back().size() + 1)
    fields.push_back(line.substr(at, line.find('\t', at) - at));
  return fields;
}

std::string Join(const std::vector<std::string>& fields) {
  std::string line;
  for (const std::string& field : fields) line += (line.empty() ? "" : "\t") + field;
  return line;
}

// A row under the old heading, in the order of the new fields.
std::string InNewOrder(const std::vector<std::string>& heading, const std::vector<std::string>& row) {
  std::vector<std::string> fields;
  for (const core::LogField& column : core::ExposureFields()) {
    const auto found = std::find(heading.begin(), heading.end(), column.name);
    const std::string missing = column.type == dao::FieldType::kBoolean ? "0" : "\\N";
    fields.push_back(found == heading.end() ? missing
                                            : row[static_cast<std::size_t>(found - heading.begin())]);
  }
  return Join(fields);
}

}  // namespace

std::shared_ptr<dao::Database> ConversionFixture::Open(const std::filesystem::path& file) {
  workspace_ = engine_.CreateWorkspace("TestWs", "Admin", "");
  return workspace_->OpenDatabase(file.string(), false, true);
}

std::vector<std::string> ConversionFixture::NewRows(const std::filesystem::path& file) {
  const auto database = Open(file);
  const auto rows = database->OpenRecordset("SELECT * FROM TXray", dao::RecordsetType::kSnapshot);
  std::vector<std::string> lines;
  for (; !rows->IsEOF(); rows->MoveNext()) {
    std::vector<std::string> fields;
    for (const core::LogField& column : core::ExposureFields()) {
      fields.push_back(
          samples::Render(rows->Fields(column.name).Value(), static_cast<ColumnType>(column.type)));
    }
    lines.push_back(Join(fields));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::vector<std::string> ConversionFixture::ExpectedRows(const std::string& sample) {
  const auto all = samples::Expected(samples::ReadOurs(sample + ".expected.tsv"));
  const auto table = std::find(all.begin(), all.end(), "# TXray");
  std::vector<std::string> lines;
  const std::vector<std::string> heading = Split(*(table + 1));
  for (auto line = table + 2; line != all.end() && !line->starts_with("# "); ++line) {
    lines.push_back(InNewOrder(heading, Split(*line)));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::string ConversionFixture::Setting(const std::filesystem::path& file, const std::string& key) {
  const auto rows = Open(file)->OpenRecordset("SELECT * FROM TConfig", dao::RecordsetType::kSnapshot);
  for (; !rows->IsEOF(); rows->MoveNext()) {
    if (rows->Fields("tCfgSKey").Text() == key) return std::string(rows->Fields("tCfgSSet").Text());
  }
  return {};
}

}  // namespace varnlog::legacy
