#include <map>
#include <random>
#include <tuple>

#include "tests/db/dao/EngineFixture.h"

namespace varnlog::dao {

namespace {

using platform::DateTime;

class TableRecordsetTest : public EngineTest {
 protected:
  TableRecordsetTest() : log_(Open(MakeLog())), table_(log_->OpenRecordset("TXray")) {}

  std::shared_ptr<Database> log_;
  std::unique_ptr<Recordset> table_;
  const DateTime birthday_ = *DateTime::FromCivil(1961, 3, 12);
};

TEST_F(TableRecordsetTest, ANewRowHasTheTablesDefaults) {
  AddExposure(*table_, {"Müller", "Hans", birthday_, Minute(0)});
  table_->MoveFirst();
  EXPECT_EQ(table_->Fields("TXRAYSNAME").Text(), "Müller") << "names of fields without regard to case";
  EXPECT_EQ(table_->Fields("tXrayDBirthday").Text(), "1961-03-12 00:00:00");
  EXPECT_EQ(table_->Fields("tXrayTs").Date(), Minute(0));
  EXPECT_EQ(table_->Fields("tXrayCulIntIDPk").Number(), 1);
  EXPECT_TRUE(table_->Fields("tXraySComment").IsNull());
  EXPECT_EQ(table_->Fields("tXraySComment").Text(), "");
  EXPECT_FALSE(table_->Fields("tXrayBEdDose").IsNull());
  EXPECT_FALSE(table_->Fields("tXrayBEdDose").Boolean());
  EXPECT_EQ(table_->Fields("tXrayBEdDose").Value(), Value(false));
  EXPECT_EQ(table_->RecordCount(), 1);
}

TEST_F(TableRecordsetTest, AnUnwrittenFieldIsNotTheOneOfTheRowBefore) {
  table_->AddNew();
  table_->Fields("tXraySDr").SetText("Dr. Weiß");
  table_->Fields("tXrayBEdDr").SetBoolean(true);
  table_->Fields("tXrayTs").SetDate(Minute(1));
  table_->Update();
  table_->AddNew();
  table_->Update();
  table_->MoveFirst();
  table_->MoveNext();
  for (std::size_t i = 1; i < table_->FieldCount(); ++i) {
    const Field& field = table_->Fields(i);
    if (field.Type() == FieldType::kBoolean)
      EXPECT_FALSE(field.Boolean()) << field.Name();
    else
      EXPECT_TRUE(field.IsNull()) << field.Name();
  }
}

TEST_F(TableRecordsetTest, SeekTakesValuesInTheOrderOfTheIndexAndIgnoresCase) {
  AddExposure(*table_, {"Weiß", "Änne", birthday_, Minute(0)});
  AddExposure(*table_, {"Weiß", "Änne", birthday_, Minute(5)});
  EXPECT_EQ(log_->TableDefs("TXray").IndexNamed("ixrayident").fields,
            (std::vector<std::string>{"tXraySName", "tXraySFirstname", "tXrayDBirthday", "tXrayTs"}));
  EXPECT_TRUE(FindExposure(*table_, {"WEISS", "änne", birthday_, Minute(5)}));
  EXPECT_EQ(table_->Fields(0).Number(), 2);
  EXPECT_FALSE(FindExposure(*table_, {"Weiß", "Anne", birthday_, Minute(5)})) << "accents count";
  EXPECT_FALSE(FindExposure(*table_, {"Weiß", "Änne", birthday_, Minute(6)}));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(table_->Fields(0).Number()); }), kNoCurrentRecord);
  table_->Seek("=", {std::string_view("weiß"), std::string_view("ÄNNE")});
  ASSERT_FALSE(table_->NoMatch());
  EXPECT_EQ(table_->Fields(0).Number(), 1) << "of several rows the oldest";
}

TEST_F(TableRecordsetTest, SeeksThePrimaryKeyByNumberOrText) {
  FillLog(*workspace_, *log_, 20);
  table_->SetIndex("PrimaryKey");
  table_->Seek("=", {std::int64_t{7}});
  EXPECT_EQ(table_->Fields("tXraySName").Text(), "P6");
  table_->Seek("=", {std::string_view("12")});
  EXPECT_EQ(table_->Fields("tXraySName").Text(), "P11");
  table_->Seek("=", {std::string_view("none")});
  EXPECT_TRUE(table_->NoMatch());
}

TEST_F(TableRecordsetTest, SeekWithoutIndexOrWithWrongKeysIsAnError) {
  const auto seek = [&](std::string_view comparison, std::initializer_list<SeekKey> keys) {
    return ErrorOf([&] { table_->Seek(comparison, keys); });
  };
  EXPECT_EQ(seek("=", {std::int64_t{1}}), kNotSupported);
  EXPECT_EQ(ErrorOf([&] { table_->SetIndex("iNone"); }), kItemNotFound);
  table_->SetIndex("PrimaryKey");
  EXPECT_EQ(seek(">", {std::int64_t{1}}), kNotSupported);
  EXPECT_EQ(seek("=", {}), kNotSupported);
  EXPECT_EQ(seek("=", {std::int64_t{1}, std::int64_t{2}}), kNotSupported);
}

// Whether a row is looked up in the index or known to be later than all others must never show.
// As an update looks for them: some with their values as they were changed last, many of one minute, undone
// or not.
TEST_F(TableRecordsetTest, FindsExactlyTheRowsThatAreThereWhateverTheOrder) {
  std::mt19937 random(20240301);
  std::map<std::tuple<int, int>, std::string> model;  // a value by patient and minute
  const auto exposure = [&](int patient, int minute) {
    return Exposure{"P" + std::to_string(patient), "Anna", birthday_, Minute(minute)};
  };
  const auto other = AnotherStation();
  const auto otherLog = other.workspace->OpenDatabase(log_->Name(), false, false);
  int latest = 0;
  for (int run = 0; run < 20; ++run) {
    const bool isOther = run % 3 == 2;
    Workspace& workspace = isOther ? *other.workspace : *workspace_;
    const auto otherTable = otherLog->OpenRecordset("TXray");
    Recordset& table = isOther ? *otherTable : *table_;
    const bool keeps = run % 5 != 4;
    const bool isOneMinute = run % 4 == 1;
    auto changed = model;
    workspace.BeginTrans();
    const RulesSuspension suspension = (isOther ? otherLog : log_)->SuspendRules();
    for (int i = 0; i < 200; ++i) {
      if (!isOneMinute && random() % 2 == 0) latest += static_cast<int>(random() % 3);
      const int minute =
          random() % 4 == 0 ? static_cast<int>(random() % (static_cast<unsigned>(latest) + 1)) : latest;
      const int patient = static_cast<int>(random() % (isOneMinute ? 150 : 3));
      const auto known = changed.find({patient, minute});
      ASSERT_EQ(FindExposure(table, exposure(patient, minute)), known != changed.end())
          << "run " << run << ", row " << i;
      if (known == changed.end()) {
        AddExposure(table, exposure(patient, minute));
        changed[{patient, minute}] = "";
        continue;
      }
      ASSERT_EQ(table.Fields("tXraySDr").Text(), known->second) << "run " << run << ", row " << i;
      if (i % 3 == 0) continue;
      table.Edit();
      table.Fields("tXraySDr").SetText(known->second = std::to_string(i));
      table.Update();
    }
    if (keeps) {
      workspace.CommitTrans();
      model = changed;
    } else {
      workspace.Rollback();
    }
  }
  EXPECT_EQ(table_->RecordCount(), static_cast<std::int64_t>(model.size()));
}

// A server knows no such text; it is the same in both kinds of logs all the same.
TEST_F(TableRecordsetTest, KeepsATextWithTheCharacterZero) {
  const std::string name("Mü\0ll\0er\\", 10);
  const auto find = [this](const std::string& where) {
    const auto rows = log_->OpenRecordset("SELECT tXraySName FROM TXray WHERE " + where);
    return rows->IsEOF() ? "nobody" : std::string(rows->Fields(0).Text());
  };
  for (const bool inOneTransaction : {false, true}) {
    const Exposure exposure{name, name, birthday_, Minute(inOneTransaction ? 1 : 0)};
    if (inOneTransaction) workspace_->BeginTrans();
    {
      const RulesSuspension suspension = log_->SuspendRules();
      AddExposure(*table_, exposure);
      ASSERT_TRUE(FindExposure(*table_, exposure));
      EXPECT_EQ(table_->Fields("tXraySName").Text(), name);
      table_->Edit();
      table_->Fields("tXraySDr").SetText(name);
      table_->Update();
      EXPECT_EQ(table_->Fields("tXraySDr").Text(), name);
    }
    if (inOneTransaction) workspace_->CommitTrans();
  }
  EXPECT_EQ(find("tXraySName = 'MÜLLER\\'"), name) << "as if the character were not there";
  EXPECT_EQ(find("tXraySName Like 'mü*r?'"), name);
  EXPECT_EQ(find("tXraySName = '" + name + "' AND tXraySDr > 'Mo'"), name);
}

TEST_F(TableRecordsetTest, ANumberIsNeverGivenTwice) {
  FillLog(*workspace_, *log_, 3);
  Damages(*log_, "DELETE FROM TXray WHERE tXrayCulIntIDPk = 3");
  AddExposure(*table_, {"New", "Row", birthday_, Minute(9)});
  ASSERT_TRUE(FindExposure(*table_, {"New", "Row", birthday_, Minute(9)}));
  EXPECT_EQ(table_->Fields(0).Number(), 4);
}

TEST_F(TableRecordsetTest, TextsAreMeasuredInCharacters) {
  const std::string umlauts32 = "ääääääääääääääääääääääääääääääää";
  table_->AddNew();
  Field& name = table_->Fields("tXraySName");
  EXPECT_EQ(name.Size(), 32);
  EXPECT_EQ(ErrorOf([&] { name.SetText(umlauts32); }), kNone);
  EXPECT_EQ(ErrorOf([&] { name.SetText(umlauts32 + "x"); }), kTooLongForField);
  EXPECT_EQ(ErrorOf([&] { name.SetText(std::string(33, 'x')); }), kTooLongForField);
  EXPECT_EQ(name.Text(), umlauts32) << "what was refused leaves the value alone";
  table_->Update();
  EXPECT_EQ(ErrorOf([&] { name.SetText("x"); }), kNotSupported) << "not between AddNew and Update";
}

TEST_F(TableRecordsetTest, FieldsTakeOnlyValuesOfTheirType) {
  table_->AddNew();
  Field& text = table_->Fields("tXraySName");
  Field& date = table_->Fields("tXrayTs");
  Field& flag = table_->Fields("tXrayBEdDr");
  Field& counter = table_->Fields("tXrayCulIntIDPk");
  const std::vector<std::function<void()>> wrong = {
      [&] { text.SetBoolean(true); }, [&] { text.SetNumber(1); },    [&] { text.SetDate(Minute(0)); },
      [&] { date.SetText("x"); },     [&] { date.SetNumber(1); },    [&] { flag.SetText("1"); },
      [&] { flag.SetDate({}); },      [&] { counter.SetNumber(9); }, [&] { counter.SetNull(); }};
  for (std::size_t i = 0; i < wrong.size(); ++i) EXPECT_EQ(ErrorOf(wrong[i]), kNotSupported) << i;
  date.SetDate(DateTime());
  EXPECT_TRUE(date.IsNull()) << "a date that is not set";
}

TEST_F(TableRecordsetTest, EditChangesTheWrittenFieldsOnly) {
  FillLog(*workspace_, *log_, 2);
  table_->MoveFirst();
  table_->Edit();
  table_->Fields("tXraySComment").SetText("Verwackelt, nächstes Mal ruhig halten");
  table_->Fields("tXrayBEdDr").SetBoolean(true);
  // Another user's field of the same row stays.
  const auto other = AnotherStation();
  Damages(*other.workspace->OpenDatabase(log_->Name(), false, false),
          "UPDATE TXray SET tXraySDr = 'Dr. B' WHERE tXrayCulIntIDPk = 1");
  table_->Update();
  EXPECT_EQ(table_->Fields("tXraySComment").Text(), "Verwackelt, nächstes Mal ruhig halten");
  EXPECT_TRUE(table_->Fields("tXrayBEdDr").Boolean());
  EXPECT_EQ(table_->Fields("tXraySDr").Text(), "Dr. B");
  EXPECT_EQ(table_->Fields("tXraySName").Text(), "P0");
}

TEST_F(TableRecordsetTest, AnEditMayBeGivenUp) {
  FillLog(*workspace_, *log_, 2);
  table_->MoveFirst();
  table_->Edit();
  table_->Fields("tXraySDr").SetText("wrong");
  table_->CancelUpdate();
  EXPECT_TRUE(table_->Fields("tXraySDr").IsNull());
  EXPECT_EQ(ErrorOf([&] { table_->Update(); }), kUpdateWithoutEdit);
  table_->Edit();
  table_->Fields("tXraySDr").SetText("wrong");
  table_->MoveNext();  // moving gives an edit up, too
  EXPECT_EQ(ErrorOf([&] { table_->Update(); }), kUpdateWithoutEdit);
  table_->MoveFirst();
  EXPECT_TRUE(table_->Fields("tXraySDr").IsNull());
}

TEST_F(TableRecordsetTest, WalksThroughTheTableAndKnowsItsEnds) {
  EXPECT_TRUE(table_->IsBOF() && table_->IsEOF()) << "an empty table";
  FillLog(*workspace_, *log_, 3);
  const auto fresh = log_->OpenRecordset("TXray");
  std::string names;
  for (; !fresh->IsEOF(); fresh->MoveNext()) names += std::string(fresh->Fields("tXraySName").Text()) + " ";
  EXPECT_EQ(names, "P0 P1 P2 ");
  EXPECT_EQ(ErrorOf([&] { fresh->MoveNext(); }), kNoCurrentRecord);
  EXPECT_EQ(ErrorOf([&] { fresh->MoveLast(); }), kNotSupported);
}

TEST_F(TableRecordsetTest, ADatabaseOpenForReadingIsNotChanged) {
  FillLog(*workspace_, *log_, 1);
  const auto readOnly = Open(log_->Name(), true);
  const auto table = readOnly->OpenRecordset("TXray");
  EXPECT_EQ(ErrorOf([&] { table->AddNew(); }), kReadOnlyDatabase);
  EXPECT_EQ(ErrorOf([&] { table->Edit(); }), kReadOnlyDatabase);
  EXPECT_EQ(ErrorOf([&] { readOnly->TableDefs("TXray").Append({.name = "x", .type = FieldType::kBoolean}); }),
            kReadOnlyDatabase);
}

TEST_F(TableRecordsetTest, AddsFieldsToATable) {
  FillLog(*workspace_, *log_, 2);
  auto definition = log_->TableDefs("txRAY");
  definition.Append({.name = "tXraySNote", .type = FieldType::kText, .size = 32});
  definition.Append({.name = "tXrayBEdNote", .type = FieldType::kBoolean});
  EXPECT_EQ(ErrorOf([&] { definition.Append({.name = "TXRAYSNAME", .type = FieldType::kText, .size = 8}); }),
            kObjectInvalid);
  const auto table = log_->OpenRecordset("TXray");
  EXPECT_TRUE(table->Fields("tXraySNote").IsNull());
  EXPECT_EQ(table->Fields("tXraySNote").Size(), 32);
  EXPECT_EQ(table->Fields("tXrayBEdNote").Value(), Value(false));
  EXPECT_EQ(log_->TableDefs("TXray").Fields().size(), 27U);
}

}  // namespace
}  // namespace varnlog::dao
