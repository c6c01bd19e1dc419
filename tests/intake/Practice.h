#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "core/Globals.h"
#include "intake/UpdateRun.h"
#include "platform/Clock.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/TestFolder.h"

namespace varnlog::intake::test {

/// Shows nothing, remembers everything, answers by script (then with Cancel).
class ScriptedView final : public UpdateView {
 public:
  core::MessageAnswer Show(const core::Message& message) override;
  void Beep() override {}
  void SetRecordCount(std::int64_t records) override { recordCount = records; }
  void Advance(std::int64_t recordsDone) override;
  [[nodiscard]] bool CancelIsWanted() const override { return cancelWanted; }
  void AskCancel() override {
    cancelWanted = false;
    if (onAskCancel) onAskCancel();
  }
  void Wait() override { ++waits; }
  void ShowNotices(const std::vector<std::string>& lines) override { notices = lines; }

  /// The first words of the messages: their keys.
  [[nodiscard]] std::vector<std::string> Keys() const;

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

/// A practice on some day in 2024: an empty log, the suite's exchange file, one workstation.
class Practice {
 public:
  explicit Practice(const std::filesystem::path& folder);
  ~Practice();

  /// The suite writes.
  void Reports(const std::string& records) const;
  UpdateResult Updates(const RunOptions& options = kHasty);
  [[nodiscard]] std::vector<Row> Log();
  /// Of "Patient 0" to "Patient N-1", who should have one exposure each: those who have none or several, and
  /// how many there are of anybody else.
  [[nodiscard]] std::string Differences(int patients);
  [[nodiscard]] bool ExchangePending() const { return ExchangeDataPending(globals); }

  static const RunOptions kHasty;

  std::filesystem::path folder;
  std::filesystem::path exchange;
  std::filesystem::path log;
  ScriptedView view;
  core::Globals globals;

 private:
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
