#include "intake/RunMark.h"

namespace varnlog::intake {
namespace {

constexpr std::string_view kKey = "IntakeRun";

std::unique_ptr<dao::Recordset> OpenMark(dao::Database& log) {
  return log.OpenRecordset(
      "SELECT TConfig.tCfgSKey, TConfig.tCfgSSet From TConfig "
      "WHERE (((TConfig.tCfgSKey)='IntakeRun'));",
      dao::RecordsetType::kDynaset);
}

}  // namespace

RunId ReadRunMark(dao::Database& log) {
  const auto mark = OpenMark(log);
  return mark->IsEOF() ? RunId() : RunId(mark->Fields("tCfgSSet").Text());
}

void WriteRunMark(dao::Database& log, const RunId& id) {
  auto mark = OpenMark(log);
  if (mark->IsEOF()) {
    mark = log.OpenRecordset("TConfig", dao::RecordsetType::kTable);
    mark->AddNew();
    mark->Fields("tCfgSKey").SetText(kKey);
  } else {
    mark->Edit();
  }
  mark->Fields("tCfgSSet").SetText(id);
  mark->Update();
}

}  // namespace varnlog::intake
