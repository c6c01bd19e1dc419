#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "legacy/Conversion.h"
#include "tests/legacy/Samples.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/LogFolder.h"

namespace varnlog::legacy {

/// Answers by script, by default "Yes" and "Cancel", and remembers what was shown.
class ScriptedView : public ConversionView {
 public:
  core::MessageAnswer Show(const core::Message& message) override {
    shown.push_back(message.text);
    if (onShow) onShow(message);
    if (message.buttons == core::MessageButtons::kOk) return core::MessageAnswer::kOk;
    if (message.buttons == core::MessageButtons::kYesNo)
      return yes ? core::MessageAnswer::kYes : core::MessageAnswer::kNo;
    if (retries == 0) return core::MessageAnswer::kCancel;
    --retries;
    return core::MessageAnswer::kRetry;
  }
  void Beep() override {}
  void Begin(ConversionStep next, std::int64_t exposures) override {
    step = next;
    rowsOfStep[next] = exposures;
    if (onBegin) onBegin(next);
  }
  [[nodiscard]] bool Advance(std::int64_t done) override { return step != cancelIn || done < 64; }

  [[nodiscard]] bool HasShown(const std::string& start) const {
    for (const std::string& text : shown) {
      if (text.starts_with(start)) return true;
    }
    return false;
  }

  bool yes = true;
  int retries = 0;
  std::optional<ConversionStep> cancelIn;
  std::function<void(const core::Message&)> onShow;
  std::function<void(ConversionStep)> onBegin;
  std::vector<std::string> shown;
  std::map<ConversionStep, std::int64_t> rowsOfStep;
  ConversionStep step = ConversionStep::kReading;
};

/// A practice's data folder with an old log in it, and a program folder.
class ConversionFixture : public testing::Test, protected test::LogFolder {
 protected:
  void SetUp() override { MakeLog("varnlog.md0"); }

  void HasOldLog(const std::string& content) {
    test::WriteFile(log_(), content);
    original_ = content;
  }
  void HasSample(const std::string& name) { HasOldLog(samples::ReadOurs(name)); }

  ConversionResult ConvertsInPlace() { return ConvertInPlace(Context(), log_(), view_); }
  [[nodiscard]] ConversionContext Context() {
    return {engine_, texts_, folder_ / "varnlog.md0", author_, clock_};
  }

  [[nodiscard]] std::filesystem::path log_() const { return folder_ / "Varnlog.mdb"; }
  [[nodiscard]] std::filesystem::path kept() const { return folder_ / "Varnlog.jet.mdb"; }

  /// The rows of the new log as the expectation files write them, sorted, without the heading.
  [[nodiscard]] std::vector<std::string> NewRows(const std::filesystem::path& file);
  /// The same of the sample's expectation; version 1.0 gets its two fields.
  [[nodiscard]] static std::vector<std::string> ExpectedRows(const std::string& sample);
  [[nodiscard]] std::string Setting(const std::filesystem::path& file, const std::string& key);
  /// For reading, at a workstation of its own.
  [[nodiscard]] std::shared_ptr<dao::Database> Open(const std::filesystem::path& file);

  void ExpectOnlyTheOldLog() const {
    EXPECT_EQ(samples::Read(log_()), original_);
    EXPECT_FALSE(std::filesystem::exists(kept()));
    ExpectNothingGrowing();
  }
  void ExpectNothingGrowing() const {
    for (const std::string& name : folder_.Names()) {
      EXPECT_EQ(name.find(".converting"), std::string::npos) << name;
    }
  }

  std::string original_;
  test::FakeTexts texts_{{}, "|$strFile$|$lngReadable$/$lngCount$|$strError$"};
  platform::Author author_;
  platform::SystemClock clock_;
  ScriptedView view_;
};

}  // namespace varnlog::legacy
