#pragma once

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "platform/CodePage.h"
#include "report/ReportJob.h"
#include "report/ReportLayout.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/LogFolder.h"

namespace varnlog::report {

/// One exposure to be logged; what is not given is what most rows hold.
struct LoggedRow {
  std::string name = "Muster";
  std::string firstName = "Max";
  platform::DateTime birth = *platform::DateTime::FromCivil(1961, 7, 5);
  platform::DateTime taken = *platform::DateTime::FromCivil(2024, 2, 9, 14, 5, 33);
  std::string pregnancy = "N";
  std::string person = "Dr. Weiß";
  std::string type = "XI";
  std::string region = "36";
  std::string retry = {};
  std::string comment = {};
};

/// A log of its own in the temporary folder.
class LogFile : protected test::LogFolder {
 public:
  LogFile() = default;
  ~LogFile() { workspace_->Close(); }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  void Add(const LoggedRow& row, int times = 1) {
    workspace_->BeginTrans();
    const auto table = database_->OpenRecordset("TXray");
    for (int i = 0; i < times; ++i) {
      table->AddNew();
      const auto taken = platform::DateTime::FromSeconds(row.taken.SecondsSinceEpoch() + i);
      const std::pair<const char*, std::string> values[] = {{"tXraySName", row.name},
                                                            {"tXraySFirstname", row.firstName},
                                                            {"tXrayDBirthday", row.birth.ToIso()},
                                                            {"tXrayTs", taken.ToIso()},
                                                            {"tXraySPreg", row.pregnancy},
                                                            {"tXraySDr", row.person},
                                                            {"tXraySType", row.type},
                                                            {"tXraySRegio", row.region},
                                                            {"tXraySRadDur", "120"},
                                                            {"tXraySVolt", "60"},
                                                            {"tXraySCur", "7"},
                                                            {"tXraySDose", "14.2"},
                                                            {"tXraySDiagRetry", row.retry}};
      for (const auto& [field, value] : values) test::SetField(table->Fields(field), value);
      if (!row.comment.empty()) table->Fields("tXraySComment").SetText(row.comment);
      table->Update();
    }
    workspace_->CommitTrans();
  }
  [[nodiscard]] dao::Database& Database() { return *database_; }
  /// All rows in the order in which they were added.
  [[nodiscard]] std::unique_ptr<dao::Recordset> Rows() {
    return database_->OpenRecordset("SELECT TXray.* FROM TXray ORDER BY TXray.tXrayCulIntIDPk;");
  }
  [[nodiscard]] const std::filesystem::path& Folder() const { return folder_.Path(); }
  [[nodiscard]] std::vector<std::string> Names() const { return folder_.Names(); }

 private:
  std::shared_ptr<dao::Database> database_ = Open(MakeLog());
};

using GivenTexts = test::FakeTexts;

/// Never in the way unless told after how many calls to stop.
class CountedProgress final : public ReportProgress {
 public:
  bool Counting(std::int64_t, std::int64_t) override { return ++countings != stopAtCounting; }
  bool Painting(int, int) override { return ++paintings != stopAtPainting; }

  int countings = 0;
  int paintings = 0;
  int stopAtCounting = 0;
  int stopAtPainting = 0;
};

/// Every character is as wide as a digit of a narrow font.
class SquareMetrics final : public TextMetrics {
 public:
  explicit SquareMetrics(const ReportDesign& design) : design_(design) {}
  [[nodiscard]] double Width(std::string_view text, int font) const override {
    return static_cast<double>(platform::CharacterCount(text)) *
           design_.fonts[static_cast<std::size_t>(font)].size * 0.42;
  }
  [[nodiscard]] bool IsRightToLeft(std::string_view text) const override {
    return text.starts_with("\u05D0");
  }

 private:
  const ReportDesign& design_;
};

/// What was drawn on a page.
class Drawing final : public ReportCanvas {
 public:
  struct Text {
    double left;
    double baseline;
    std::string text;
    int font;
    bool rightToLeft;
  };
  struct Rule {
    double x1, y1, x2, y2, thickness;
  };

  void DrawText(double left, double baseline, std::string_view text, int font, bool rightToLeft) override {
    texts.push_back({left, baseline, std::string(text), font, rightToLeft});
  }
  void DrawRule(double x1, double y1, double x2, double y2, double thickness) override {
    rules.push_back({x1, y1, x2, y2, thickness});
  }

  void DrawSymbol(double, double, double, const QrCode&) override {}

  [[nodiscard]] bool Has(std::string_view text) const {
    return std::ranges::count(texts, text, &Text::text) > 0;
  }
  [[nodiscard]] bool HasAt(const Text& text) const {
    return std::any_of(texts.begin(), texts.end(), [&text](const Text& drawn) {
      return drawn.text == text.text && drawn.left == text.left && drawn.baseline == text.baseline;
    });
  }
  std::vector<Text> texts;
  std::vector<Rule> rules;
};

}  // namespace varnlog::report
