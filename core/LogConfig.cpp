#include "core/LogConfig.h"

#include "core/LogLayout.h"

namespace varnlog::core {

namespace {

constexpr std::string_view kKeyField = "tCfgSKey";
constexpr std::string_view kValueField = "tCfgSSet";

std::unique_ptr<dao::Recordset> ConfigRow(dao::Database& log, std::string_view key) {
  std::string sql = "SELECT TConfig.tCfgSKey, TConfig.tCfgSSet From TConfig WHERE (((TConfig.tCfgSKey)='";
  sql.append(key).append("'));");
  return log.OpenRecordset(sql, dao::RecordsetType::kDynaset);
}

}  // namespace

std::optional<std::string> ReadLogConfig(dao::Database& log, std::string_view key) {
  const auto row = ConfigRow(log, key);
  if (row->IsEOF()) return std::nullopt;
  return std::string(row->Fields(kValueField).Text());
}

bool ChangeLogConfig(dao::Database& log, std::string_view key, std::string_view value) {
  const auto row = ConfigRow(log, key);
  if (row->IsEOF()) return false;
  row->Edit();
  row->Fields(kValueField).SetText(value);
  row->Update();
  return true;
}

void WriteLogConfig(dao::Database& log, std::string_view key, std::string_view value) {
  if (ChangeLogConfig(log, key, value)) return;
  const auto table = log.OpenRecordset(std::string(kConfigTable), dao::RecordsetType::kTable);
  table->AddNew();
  table->Fields(kKeyField).SetText(key);
  table->Fields(kValueField).SetText(value);
  table->Update();
}

}  // namespace varnlog::core
