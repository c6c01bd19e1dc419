#include <gtest/gtest.h>

#include "core/LogLayout.h"
#include "logview/Columns.h"
#include "logview/Selection.h"
#include "tests/logview/LogviewFakes.h"
#include "tests/support/Table.h"

namespace varnlog::logview {
namespace {

using core::Selection;
using core::SelectionKind;
using platform::DateTime;
using platform::ShortDate;

DateTime Day(int year, int month, int day) {
  return DateTime::FromCivil(year, month, day).value();
}

class SelectionTest : public testing::Test {
 protected:
  SelectionTest() {
    selection_.dBegGl = Day(2004, 2, 9);
    selection_.dEndGl = Day(2004, 11, 30);
    selection_.strPatNameGl = "Müller";
    selection_.strPatFirstnameGl = "Käthe";
    selection_.dPatBirthdayGl = Day(1960, 2, 1);
    texts_.texts["RS_PERIOD"] = "Alle vom $dBegGl$ bis $dEndGl$";
    texts_.texts["RS_XRPROOF"] = "Nachweis: $strPatName$";
    texts_.texts["RS_XRPROOFPERIOD"] = "$strPatName$ vom $dBegGl$ bis $dEndGl$";
  }

  SelectionView Select(SelectionKind kind) {
    selection_.SortSelectionGl = kind;
    return BuildSelection(selection_, texts_, ShortDate());
  }

  Selection selection_;
  FakeTexts texts_;
};

TEST_F(SelectionTest, BuildsTheQueryOfEveryKind) {
  const std::string patient =
      "(TXray.tXraySName)='Müller') AND ((TXray.tXraySFirstname)='Käthe') AND "
      "((TXray.tXrayDBirthday)=#2/1/1960#))) ";
  const Table<SelectionKind, std::string, std::string> cases = {
      {SelectionKind::kAll, "SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;", "DateAll"},
      {SelectionKind::kPeriod,
       "SELECT TXray.* From TXray WHERE (((TXray.tXrayTs) Between #2/9/2004# And #11/30/2004 11:59:59 PM#)) "
       "ORDER BY TXray.tXrayTs DESC;",
       "DateAll"},
      {SelectionKind::kPatient,
       "SELECT TXray.* From TXray WHERE (((" + patient +
           "ORDER BY TXray.tXraySName DESC , TXray.tXraySFirstname DESC , TXray.tXrayTs DESC;",
       "PatAll"},
      {SelectionKind::kPatientPeriod,
       "SELECT TXray.* From TXray WHERE (((TXray.tXrayTs) Between #2/9/2004# And #11/30/2004 11:59:59 PM# "
       "AND (" +
           patient + "ORDER BY TXray.tXrayTs DESC;",
       "PatPeriod"}};
  for (const auto& [kind, sql, icon] : cases) {
    const SelectionView view = Select(kind);
    EXPECT_EQ(view.sql, sql) << static_cast<int>(kind);
    EXPECT_EQ(view.icon, icon) << static_cast<int>(kind);
  }
}

TEST_F(SelectionTest, RestrictsAPeriodToOneType) {
  const Table<SelectionKind, std::string, std::string> cases = {
      {SelectionKind::kPeriodXI, "XI", "RS_PERIODIO"},
      {SelectionKind::kPeriodXP, "XP", "RS_PERIODPAN"},
      {SelectionKind::kPeriodXC, "XC", "RS_PERIODCEPH"},
      {SelectionKind::kPeriodXS, "XS", "RS_PERIODTSA"},
      {SelectionKind::kPeriodXV, "XV", "RS_PERIODXV"}};
  for (const auto& [kind, type, headline] : cases) {
    const SelectionView view = Select(kind);
    EXPECT_EQ(view.sql,
              "SELECT TXray.* From TXray WHERE (((TXray.tXrayTs) Between #2/9/2004# AND #11/30/2004 11:59:59 "
              "PM#) AND TXray.tXraySType = '" +
                  type + "') ORDER BY TXray.tXrayTs DESC;");
    EXPECT_EQ(view.headline, headline) << type;
    EXPECT_EQ(view.icon, "DateAll") << type;
  }
}

TEST_F(SelectionTest, HeadlinesNamePeriodAndPatient) {
  EXPECT_EQ(Select(SelectionKind::kAll).headline, "RS_ALLPATIENTIMG");
  EXPECT_EQ(Select(SelectionKind::kPeriod).headline, "Alle vom 09.02.2004 bis 30.11.2004");
  EXPECT_EQ(Select(SelectionKind::kPatient).headline, "Nachweis: Müller, Käthe *01.02.1960");
  EXPECT_EQ(Select(SelectionKind::kPatientPeriod).headline,
            "Müller, Käthe *01.02.1960 vom 09.02.2004 bis 30.11.2004");
  selection_.strPatNameGl = "$strPatName$'";
  EXPECT_EQ(Select(SelectionKind::kPatient).headline, "Nachweis: $strPatName$', Käthe *01.02.1960");
  EXPECT_NE(Select(SelectionKind::kPatient).sql.find("(TXray.tXraySName)='$strPatName$'')"),
            std::string::npos);
}

TEST_F(SelectionTest, AnUnknownKindIsTheWholeTable) {
  for (const int kind : {-1, 9, 32767}) {
    const SelectionView view = Select(static_cast<SelectionKind>(kind));
    EXPECT_EQ(view.sql, "TXray") << kind;
    EXPECT_EQ(view.headline, "") << kind;
    EXPECT_EQ(view.icon, "") << kind;
  }
}

TEST_F(SelectionTest, AHeadingTogglesTheDirectionOfWhateverWasSortedBefore) {
  const std::string select = "SELECT TXray.* From TXray ";
  std::string sql = Select(SelectionKind::kAll).sql;
  const Table<int, std::string> clicks = {
      {kDateColumn, select + "ORDER BY TXray.tXrayTs;"},
      {kDateColumn, select + "ORDER BY TXray.tXrayTs DESC;"},
      {7, select + "ORDER BY TXray.tXraySVolt;"},
      {kCommentColumn, select + "ORDER BY TXray.tXraySComment DESC;"},
      {kNumberColumn, select + "ORDER BY TXray.tXraySComment DESC;"},
      {13, select + "ORDER BY TXray.tXraySComment DESC;"},
      {-1, select + "ORDER BY TXray.tXraySComment DESC;"},
      {kPatientColumn, select + "ORDER BY TXray.tXraySName , TXray.tXraySFirstname , TXray.tXrayDBirthday;"},
      {kPatientColumn,
       select + "ORDER BY TXray.tXraySName DESC , TXray.tXraySFirstname DESC , TXray.tXrayDBirthday DESC;"}};
  for (const auto& [column, expected] : clicks) {
    sql = SortByColumn(sql, column);
    EXPECT_EQ(sql, expected) << column;
  }
  const std::string patient = Select(SelectionKind::kPatient).sql;
  EXPECT_EQ(SortByColumn(patient, kTypeColumn),
            patient.substr(0, patient.find("ORDER BY ")) + "ORDER BY TXray.tXraySType;");
  EXPECT_EQ(SortByColumn("TXray", kDateColumn), "") << "the whole table is no query";
  EXPECT_EQ(SortByColumn("TXray", kNumberColumn), "TXray");
}

TEST(Columns, WriteAndSortByFieldsOfTheLog) {
  const auto typeOf = [](std::string_view name) {
    for (const core::LogField& field : core::ExposureFields()) {
      if (field.name == name) return field.type;
    }
    return dao::FieldType::kMemo;
  };
  for (const Column& column : kColumns) {
    for (const std::string_view name : column.sortFields) {
      EXPECT_TRUE(name.empty() || typeOf(name) != dao::FieldType::kMemo) << name;
    }
    if (!column.IsWritten()) continue;
    EXPECT_EQ(typeOf(column.field), dao::FieldType::kText) << column.field;
    EXPECT_TRUE(column.editFlag.empty() || typeOf(column.editFlag) == dao::FieldType::kBoolean);
  }
}

}  // namespace
}  // namespace varnlog::logview
