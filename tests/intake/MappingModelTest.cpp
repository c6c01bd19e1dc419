#include <array>
#include <random>

#include <gtest/gtest.h>

#include "tests/intake/ExchangeRecords.h"
#include "tests/intake/MappingModel.h"
#include "tests/intake/Practice.h"

namespace varnlog::intake {
namespace {

using test::Report;
using test::Row;

/// A day as the suite writes it and as the log stores it.
struct Dated {
  std::string written;
  std::string stored;
};

class Generator {
 public:
  Report Next() {
    Report report;
    report.kind = Any(3) == 0 ? 'I' : 'T';
    report.lastName = Pick({"Berg", "O'Neil", "Muster", "Zander", ""});
    report.firstName = Pick({"Anna", "Max", ""});
    const Dated birthday = Day({"01.02.1960", "1960-02-01"}, {"31.12.99", "1999-12-31"});
    const Dated taken = Day({"03.04.2020", "2020-04-03"}, {"29.02.24", "2024-02-29"});
    const Dated time = Time();
    report.birthday = birthday.written;
    report.takeDate = taken.written;
    report.takeTime = time.written;
    report.storedBirthday = birthday.stored + " 00:00:00";
    report.storedTaken = taken.stored + " " + time.stored;
    report.type = Pick({"XI", "XI", "XP", "XC", "XS", "XV", "YI", "X?"});
    report.extra = Pick({"11", "~~", "", "8", "48"});
    report.responsible = Pick({"Wagner", "-", "", "Dr. Berg"});
    if (report.kind == 'I') return report;
    report.sex = Pick({"M", "F", "m", "", "?"});
    report.pregnancy = Pick({"P", "N", "", "x"});
    report.duration = Pick({"", "120"});
    report.volt = Pick({"", "65"});
    report.current = Pick({"", "7.5"});
    report.dose = Pick({"", "3.5 mGycm2"});
    return report;
  }

 private:
  std::size_t Any(std::size_t below) { return random_() % below; }
  std::string Pick(const std::vector<std::string>& choices) { return choices[Any(choices.size())]; }
  Dated Day(const Dated& one, const Dated& two) {
    const std::array<Dated, 4> days = {{one, two, {"", "1880-01-01"}, {"99.99.2001", "1880-01-01"}}};
    return days[Any(8) == 0 ? Any(4) : Any(2)];
  }
  Dated Time() {
    if (Any(20) == 0) return {"24:00:00", "00:00:00"};
    const std::string text = "1" + std::to_string(Any(10)) + ":0" + std::to_string(Any(10)) + ":30";
    return {text, text};
  }

  std::mt19937 random_{20240630};
};

std::string Bytes(const Report& report) {
  std::string extra = report.extra;
  extra.insert(0, 2 - extra.size(), ' ');
  test::Exposure exposure{report.lastName,    report.firstName,    report.birthday, report.sex,
                          report.pregnancy,   extra + report.type, report.takeDate, report.takeTime,
                          report.responsible, report.duration,     report.volt,     report.current,
                          report.dose};
  return report.kind == 'I' ? exposure.Information() : exposure.New();
}

TEST(MappingModelTest, TenThousandMixedRecordsMakeTheSameLog) {
  test::TestFolder folder;
  test::Practice practice(folder.Path());
  test::MappingModel model;
  Generator generator;
  std::int64_t changed = 0;
  for (int portion = 0; portion < 10; ++portion) {
    std::string bytes;
    for (int i = 0; i < 1000; ++i) {
      const Report report = generator.Next();
      bytes += Bytes(report);
      model.Take(report);
    }
    practice.Reports(bytes);
    const UpdateResult result = practice.Updates();
    ASSERT_EQ(result.read, 1000);
    changed += result.changed;
  }
  const std::vector<Row> rows = practice.Log();
  ASSERT_EQ(rows.size(), model.Rows().size());
  EXPECT_GT(rows.size(), 500U);
  EXPECT_GT(changed, 500);
  for (std::size_t i = 0; i < rows.size(); ++i) ASSERT_EQ(rows[i], model.Rows()[i]) << "row " << i;
}

}  // namespace
}  // namespace varnlog::intake
