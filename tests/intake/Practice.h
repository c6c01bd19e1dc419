#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/Globals.h"
#include "intake/UpdateRun.h"
#include "platform/Clock.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "tests/Paths.h"
#include "tests/intake/ExchangeRecords.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/PrivateServer.h"
#include "tests/support/TestFolder.h"

namespace varnlog::intake::test {

/// Shows nothing, remembers everything, answers by script (then with Cancel).
class ScriptedView final : public UpdateView {
 public:
  core::MessageAnswer Show(const core::Message& message) override {
    messages.push_back(message);
    if (onMessage) onMessage();
    if (answers.empty()) {
      return message.choices.empty() ? core::MessageAnswer::kCancel : core::MessageAnswer::kOk;
    }
    const core::MessageAnswer answer = answers.front();
    answers.pop_front();
    return answer;
  }
  void Beep() override {}
  void SetRecordCount(std::int64_t records) override { recordCount = records; }
  void Advance(std::int64_t recordsDone) override {
    done = recordsDone;
    if (onAdvance) onAdvance(recordsDone);
  }
  [[nodiscard]] bool CancelIsWanted() const override { return cancelWanted; }
  void AskCancel() override {
    cancelWanted = false;
    if (onAskCancel) onAskCancel();
  }
  void Wait() override { ++waits; }
  void ShowNotices(const std::vector<std::string>& lines) override { notices = lines; }

  /// The first words of the messages: their keys.
  [[nodiscard]] std::vector<std::string> Keys() const {
    std::vector<std::string> keys;
    for (const core::Message& message : messages)
      keys.push_back(message.text.substr(0, message.text.find(' ')));
    return keys;
  }

  std::deque<core::MessageAnswer> answers;
  std::function<void()> onMessage;
  std::function<void(std::int64_t)> onAdvance;
  std::function<void()> onAskCancel;
  std::vector<core::Message> messages;
  std::vector<std::string> notices;
  bool cancelWanted = false;
  int waits = 0;
  std::int64_t recordCount = -1;
  std::int64_t done = 0;
};

using Row = std::map<std::string, std::string>;  // field name, stored value; NULL fields are absent

/// The safe copy's.
inline std::string CopyName() {
  return varnlog::test::LogsAreOnServer() ? "varnlog.sdx.intake" : "Varnlog.mdb.intake";
}

/// A practice on some day in 2024: an empty log, the suite's exchange file, one workstation.
class Practice {
 public:
  explicit Practice(const std::filesystem::path& where)
      : folder(where),
        exchange(where / "varnlog.sdx"),
        log(where / "Varnlog.mdb"),
        clock_(*platform::DateTime::FromCivil(2024, 6, 30, 12)) {
    const std::filesystem::path program = VARNLOG_PROGRAM_DIR;
    if (!std::filesystem::exists(log)) MakeLog(program / "varnlog.md0");
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
    // What is changed on a server has to stand in the history.
    if (varnlog::test::LogsAreOnServer()) {
      globals.LedgerGl = std::make_shared<seals::Ledger>(globals.AuthorGl, clock_);
      static_cast<void>(seals::OpenLedger(*globals.LogEngineGl->Database(), globals.LedgerGl));
    }
  }
  ~Practice() { globals.LogEngineGl.reset(); }
  Practice(const Practice&) = delete;
  Practice& operator=(const Practice&) = delete;

  /// The suite writes.
  void Reports(const std::string& records) const { AppendFile(exchange, records); }
  UpdateResult Updates(const RunOptions& options = kHasty) {
    view.messages.clear();
    view.notices.clear();
    globals.UpdateDeclinedGl = false;
    return RunUpdate({globals, texts_, clock_}, view, options);
  }
  [[nodiscard]] std::vector<Row> Log() {
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
  /// Of "Patient 0" to "Patient N-1", who should have one exposure each: those who have none or several, and
  /// how many there are of anybody else.
  [[nodiscard]] std::string Differences(int patients) {
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
      if (found[i] != 1)
        differences += "Patient " + std::to_string(i) + ": " + std::to_string(found[i]) + "; ";
    }
    return differences;
  }
  [[nodiscard]] bool ExchangePending() const { return ExchangeDataPending(globals); }

  static inline const RunOptions kHasty{.patience = std::chrono::milliseconds(500),
                                        .grace = std::chrono::milliseconds(0),
                                        .quiet = std::chrono::milliseconds(0)};

  std::filesystem::path folder;
  std::filesystem::path exchange;
  std::filesystem::path log;
  ScriptedView view;
  core::Globals globals;

 private:
  void MakeLog(const std::filesystem::path& empty) const {
    if (varnlog::test::LogsAreOnServer())
      varnlog::test::PrivateServer::Instance().MakeLog(log);
    else
      std::filesystem::copy_file(empty, log);
  }

  dao::DBEngine engine_;
  varnlog::test::FakeTexts texts_{
      {{"RU_COUNTS", " $lngAdded$ $lngChanged$ $lngSkipped$"},
       {"RU_CLOCK", "RU_CLOCK $dNow$ $dNewest$"},
       {"RU_SUCCESS", "RU_SUCCESS"},
       {"RU_XRUPDATE", "RU_XRUPDATE"},
       {"GL_THOUSANDS", ""}},
      " $strLastName$ $str1stName$ $dDefault$ $strField$ $strError$ $strKeptAs$ $dTaken$"};
  platform::FixedClock clock_;
};

}  // namespace varnlog::intake::test
