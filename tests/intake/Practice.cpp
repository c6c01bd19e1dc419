#include "tests/intake/Practice.h"

#include <stdexcept>

#include "tests/Paths.h"
#include "tests/intake/ExchangeRecords.h"

namespace varnlog::intake::test {

using std::chrono::milliseconds;

const RunOptions Practice::kHasty{
    .patience = milliseconds(500), .grace = milliseconds(0), .quiet = milliseconds(0)};

core::MessageAnswer ScriptedView::Show(const core::Message& message) {
  messages.push_back(message);
  if (onMessage) onMessage();
  if (answers.empty()) {
    return message.choices.empty() ? core::MessageAnswer::kCancel : core::MessageAnswer::kOk;
  }
  const core::MessageAnswer answer = answers.front();
  answers.pop_front();
  return answer;
}

void ScriptedView::Advance(std::int64_t recordsDone) {
  done = recordsDone;
  if (onAdvance) onAdvance(recordsDone);
}

std::vector<std::string> ScriptedView::Keys() const {
  std::vector<std::string> keys;
  for (const core::Message& message : messages)
    keys.push_back(message.text.substr(0, message.text.find(' ')));
  return keys;
}

Practice::Practice(const std::filesystem::path& where)
    : folder(where),
      exchange(where / "varnlog.sdx"),
      log(where / "Varnlog.mdb"),
      clock_(*platform::DateTime::FromCivil(2024, 6, 30, 12)) {
  const std::filesystem::path program = VARNLOG_PROGRAM_DIR;
  if (!std::filesystem::exists(log)) std::filesystem::copy_file(program / "varnlog.md0", log);
  globals.ExchangeFileGl = exchange.string();
  globals.strDataFileGl = log.string();
  globals.kVGl = 60;
  globals.mAGl = 8;
  globals.LogEngineGl = std::make_unique<db::CJetEngine>(engine_);
  globals.LogEngineGl->SetWorkgroupPath((program / "system.mdw").string());
  globals.LogEngineGl->OpenWorkspace("MyWs", "Admin", "");
  if (globals.LogEngineGl->OpenDBInWorkspace(log.string(), false, false) != 0) {
    throw std::runtime_error(globals.LogEngineGl->LastError());
  }
}

Practice::~Practice() {
  globals.LogEngineGl.reset();
}

void Practice::Reports(const std::string& records) const {
  AppendFile(exchange, records);
}

UpdateResult Practice::Updates(const RunOptions& options) {
  view.messages.clear();
  view.notices.clear();
  globals.UpdateDeclinedGl = false;
  return RunUpdate({globals, texts_, clock_}, view, options);
}

std::vector<Row> Practice::Log() {
  std::vector<Row> rows;
  const auto set = globals.LogEngineGl->Database()->OpenRecordset("SELECT TXray.* FROM TXray");
  for (; !set->IsEOF(); set->MoveNext()) {
    Row row;
    for (std::size_t i = 0; i < set->FieldCount(); ++i) {
      const dao::Field& field = set->Fields(i);
      if (!field.IsNull()) row[field.Name()] = std::string(field.Text());
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

std::string Practice::Differences(int patients) {
  std::vector<int> found(static_cast<std::size_t>(patients));
  int others = 0;
  const auto set = globals.LogEngineGl->Database()->OpenRecordset("TXray", dao::RecordsetType::kTable);
  const dao::Field& name = set->Fields("tXraySName");
  for (; !set->IsEOF(); set->MoveNext()) {
    const std::string text(name.Text());
    const bool isPatient = text.starts_with("Patient ");
    const std::size_t number = isPatient ? std::stoul(text.substr(8)) : found.size();
    if (number < found.size()) {
      ++found[number];
    } else {
      ++others;
    }
  }
  std::string differences = others == 0 ? "" : std::to_string(others) + " others; ";
  for (std::size_t i = 0; i < found.size() && differences.size() < 1000; ++i) {
    if (found[i] != 1) differences += "Patient " + std::to_string(i) + ": " + std::to_string(found[i]) + "; ";
  }
  return differences;
}

}  // namespace varnlog::intake::test
