#include <algorithm>
#include <limits>
#include <random>

#include "tests/db/dao/EngineFixture.h"
#include "tests/support/Table.h"

namespace varnlog::dao {

namespace {

constexpr const char* kByTime = "SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;";

class DynasetTest : public EngineTest {
 protected:
  DynasetTest() : log_(Open(MakeLog())) {}

  static std::string Names(Recordset& rows) {
    std::string names;
    for (rows.MoveFirst(); !rows.IsEOF(); rows.MoveNext())
      names += std::string(rows.Fields("tXraySName").Text()) + " ";
    return names;
  }
  static std::vector<std::int64_t> Ids(Recordset& rows) {
    std::vector<std::int64_t> ids;
    for (; !rows.IsEOF(); rows.MoveNext()) ids.push_back(rows.Fields("tXrayCulIntIDPk").Number());
    return ids;
  }

  std::shared_ptr<Database> log_;
};

TEST_F(DynasetTest, MovesAmongRowsAndBeyondTheirEnds) {
  FillLog(*workspace_, *log_, 5);
  const auto rows = log_->OpenRecordset(kByTime);
  EXPECT_EQ(rows->Type(), RecordsetType::kDynaset);
  EXPECT_EQ(rows->AbsolutePosition(), 0) << "the first row is current after opening";
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "P4");
  for (const auto& [by, position, edge] : Table<std::int64_t, std::int64_t, const char*>{{2, 2, ""},
                                                                                         {-1, 1, ""},
                                                                                         {0, 1, ""},
                                                                                         {100, -1, "EOF"},
                                                                                         {-2, 3, ""},
                                                                                         {-4, -1, "BOF"},
                                                                                         {1, 0, ""},
                                                                                         {4, 4, ""},
                                                                                         {1, -1, "EOF"}}) {
    rows->Move(by);
    EXPECT_EQ(rows->AbsolutePosition(), position) << "after moving by " << by;
    EXPECT_EQ(rows->IsEOF(), std::string_view(edge) == "EOF") << "after moving by " << by;
    EXPECT_EQ(rows->IsBOF(), std::string_view(edge) == "BOF") << "after moving by " << by;
  }
  EXPECT_EQ(ErrorOf([&] { rows->MoveNext(); }), kNoCurrentRecord);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(rows->Fields(0).Text()); }), kNoCurrentRecord);
  for (const std::int64_t outside :
       {std::int64_t{-1}, std::int64_t{5}, std::numeric_limits<std::int64_t>::max()})
    EXPECT_EQ(ErrorOf([&] { rows->SetAbsolutePosition(outside); }), kNoCurrentRecord) << outside;
  rows->Move(std::numeric_limits<std::int64_t>::min());
  EXPECT_TRUE(rows->IsBOF());
  rows->MoveLast();
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "P0");
}

TEST_F(DynasetTest, AnEmptyOneIsAtBothEnds) {
  const auto rows = log_->OpenRecordset(kByTime);
  EXPECT_TRUE(rows->IsBOF() && rows->IsEOF());
  EXPECT_EQ(rows->RecordCount(), 0);
  EXPECT_TRUE(rows->Populate(10));
  for (const auto& move :
       std::vector<std::function<void()>>{[&] { rows->MoveFirst(); }, [&] { rows->MoveLast(); },
                                          [&] { rows->MoveNext(); }, [&] { rows->Edit(); }})
    EXPECT_EQ(ErrorOf(move), kNoCurrentRecord);
}

// Many rows share a time stamp, so that slices end among equal ones.
TEST_F(DynasetTest, SlicesGiveTheSameRowsAsOneReading) {
  struct Row {
    int patient, minute;
    std::int64_t id;
  };
  std::vector<Row> added;
  workspace_->BeginTrans();
  std::mt19937 random(7);
  const auto table = log_->OpenRecordset("TXray");
  for (int i = 0; i < 700; ++i) {
    added.push_back({i % 9, static_cast<int>(random() % 40), i + 1});
    AddExposure(*table, {"P" + std::to_string(i % 9), "Anna", Minute(0), Minute(added.back().minute)});
  }
  workspace_->CommitTrans();
  const auto inTime = [](const Row& a, const Row& b) {
    return std::pair(a.minute, a.id) < std::pair(b.minute, b.id);
  };
  std::ranges::sort(added, inTime);
  const auto expected = [&added](bool isDescending, const std::function<bool(const Row&)>& isWanted) {
    std::vector<std::int64_t> ids;
    for (const Row& row : added)
      if (isWanted(row)) ids.push_back(row.id);
    if (isDescending) std::ranges::reverse(ids);
    return ids;
  };
  for (const auto& [sql, isDescending, isWanted] : Table<const char*, bool, std::function<bool(const Row&)>>{
           {"SELECT * FROM TXray ORDER BY tXrayTs", false, [](const Row&) { return true; }},
           {kByTime, true, [](const Row&) { return true; }},
           {"SELECT * FROM TXray WHERE tXraySName = 'p3' ORDER BY tXrayTs DESC", true,
            [](const Row& row) { return row.patient == 3; }},
           {"SELECT * FROM TXray WHERE tXrayTs Between #3/1/2024 8:10:00 AM# And #3/1/2024 8:20:00 AM# ORDER "
            "BY tXrayTs",
            false, [](const Row& row) { return row.minute >= 10 && row.minute <= 20; }}}) {
    const auto wantedIds = expected(isDescending, isWanted);
    for (const std::int64_t slice : {1, 7, 64, 10000}) {
      const auto rows = log_->OpenRecordset(sql);
      while (!rows->Populate(slice)) {
      }
      EXPECT_EQ(rows->RecordCount(), static_cast<std::int64_t>(wantedIds.size())) << sql;
      EXPECT_EQ(Ids(*rows), wantedIds) << sql << ", slices of " << slice;
    }
  }
}

TEST_F(DynasetTest, RowsWithoutADateAreNotLostBetweenSlices) {
  FillLog(*workspace_, *log_, 200);
  Damages(*log_, "UPDATE TXray SET tXrayTs = NULL WHERE rowid % 2 = 1");
  for (const char* sql : {kByTime, "SELECT * FROM TXray ORDER BY tXrayTs"}) {
    const auto rows = log_->OpenRecordset(sql);
    while (!rows->Populate(10)) {
    }
    auto ids = Ids(*rows);
    std::sort(ids.begin(), ids.end());
    ASSERT_EQ(ids.size(), 200U) << sql;
    EXPECT_TRUE(std::adjacent_find(ids.begin(), ids.end()) == ids.end()) << sql;
  }
}

TEST_F(DynasetTest, OthersCanWriteWhileItIsHalfPopulated) {
  FillLog(*workspace_, *log_, 1000);
  const auto rows = log_->OpenRecordset(kByTime);
  EXPECT_FALSE(rows->Populate(100));
  const auto other = AnotherStation();
  const auto otherLog = other.workspace->OpenDatabase(log_->Name(), false, false);
  AddExposure(*otherLog->OpenRecordset("TXray"), {"Late", "Comer", Minute(0), Minute(5)});
  Damages(*otherLog, "DELETE FROM TXray WHERE tXraySName = 'P7'");
  rows->MoveLast();
  EXPECT_EQ(rows->RecordCount(), 1000) << "the new row is in, the deleted one is not";
}

TEST_F(DynasetTest, SeesWhatOthersChangedAndWhatTheyDeleted) {
  FillLog(*workspace_, *log_, 10);
  const auto other = AnotherStation();
  const auto otherLog = other.workspace->OpenDatabase(log_->Name(), false, false);
  const auto rows = log_->OpenRecordset("SELECT * FROM TXray");
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "P0");
  Damages(*otherLog, "UPDATE TXray SET tXraySName = 'Neu' WHERE tXraySName = 'P1'");
  HearsOfOthers();
  rows->MoveNext();
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "Neu");
  Damages(*otherLog, "DELETE FROM TXray WHERE tXraySName = 'P3'");
  HearsOfOthers();
  rows->Move(2);
  EXPECT_EQ(rows->AbsolutePosition(), 3);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(rows->Fields(0).Text()); }), kRecordDeleted);
  EXPECT_EQ(ErrorOf([&] { rows->Edit(); }), kRecordDeleted);
  rows->MoveNext();
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "P4") << "moving goes on";
  Damages(*log_, "UPDATE TXray SET tXraySName = 'Own' WHERE tXraySName = 'P5'");
  HearsOfOthers();
  rows->MoveNext();
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "Own");
}

TEST_F(DynasetTest, ReadsTheSameRowsInAnyDirection) {
  FillLog(*workspace_, *log_, 500);
  Damages(*log_, "DELETE FROM TXray WHERE rowid % 7 = 0 OR rowid BETWEEN 100 AND 140");
  for (const char* sql :
       {"SELECT * FROM TXray", kByTime, "SELECT * FROM TXray ORDER BY tXrayBEdDr, tXraySName"}) {
    const auto rows = log_->OpenRecordset(sql);
    const std::vector<std::int64_t> ids = Ids(*rows);
    std::mt19937 random(11);
    for (int i = 0; i < 300; ++i) {
      const auto position = static_cast<std::int64_t>(random() % ids.size());
      rows->SetAbsolutePosition(position);
      for (int step = 0; step < 3 && !rows->IsBOF(); ++step) {
        ASSERT_EQ(rows->Fields(0).Number(), ids[static_cast<std::size_t>(rows->AbsolutePosition())]) << sql;
        rows->MovePrevious();
      }
    }
  }
}

TEST_F(DynasetTest, ClonesShareRowsAndBookmarksButNotThePosition) {
  FillLog(*workspace_, *log_, 10);
  const auto rows = log_->OpenRecordset(kByTime);
  rows->Move(3);
  const auto clone = rows->Clone();
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(clone->Fields(0).Text()); }), kNoCurrentRecord);
  EXPECT_EQ(clone->AbsolutePosition(), -1);
  clone->SetBookmark(rows->Bookmark());
  EXPECT_EQ(clone->Fields("tXraySName").Text(), "P6");
  clone->MoveLast();
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "P6");
  EXPECT_EQ(rows->RecordCount(), 10);
  rows->Edit();
  rows->Fields("tXraySName").SetText("Anders");
  rows->Update();
  clone->SetAbsolutePosition(3);
  EXPECT_EQ(clone->Fields("tXraySName").Text(), "Anders");
}

TEST_F(DynasetTest, RefusesToOverwriteWhatAnotherUserChangedMeanwhile) {
  FillLog(*workspace_, *log_, 3);
  const auto other = AnotherStation();
  const auto otherLog = other.workspace->OpenDatabase(log_->Name(), false, false);
  const auto rows = log_->OpenRecordset("SELECT * FROM TXray");
  EXPECT_TRUE(rows->Fields("tXraySVolt").IsNull());
  Damages(*otherLog, "UPDATE TXray SET tXraySVolt = '60' WHERE rowid = 1");
  rows->Edit();
  rows->Fields("tXraySVolt").SetText("70");
  EXPECT_EQ(ErrorOf([&] { rows->Update(); }), kDataChanged);
  rows->CancelUpdate();
  EXPECT_EQ(rows->Fields("tXraySVolt").Text(), "60") << "now it is shown";
  rows->Edit();
  rows->Fields("tXraySVolt").SetText("70");
  Damages(*otherLog, "UPDATE TXray SET tXraySDr = 'B' WHERE rowid = 1");  // another field does not matter
  EXPECT_EQ(ErrorOf([&] { rows->Update(); }), kNone);
  rows->Edit();
  rows->Fields("tXraySVolt").SetText("80");
  EXPECT_EQ(ErrorOf([&] { rows->Update(); }), kNone) << "a change of one's own is no conflict";
  EXPECT_EQ(rows->Fields("tXraySVolt").Text(), "80");
  rows->Edit();
  rows->Fields("tXraySVolt").SetText("85");
  Damages(*otherLog, "UPDATE TXray SET tXraySVolt = '81' WHERE rowid = 1");
  workspace_->BeginTrans();
  EXPECT_EQ(ErrorOf([&] { rows->Update(); }), kDataChanged) << "a transaction that began meanwhile";
  rows->CancelUpdate();
  workspace_->Rollback();
  rows->Edit();
  rows->Fields("tXraySVolt").SetText("90");
  Damages(*otherLog, "DELETE FROM TXray WHERE rowid = 1");
  EXPECT_EQ(ErrorOf([&] { rows->Update(); }), kRecordDeleted);
}

TEST_F(DynasetTest, AddsRows) {
  FillLog(*workspace_, *log_, 2);
  const auto rows = log_->OpenRecordset("SELECT tXraySName, tXrayTs FROM TXray");
  rows->AddNew();
  rows->Fields("tXraySName").SetText("Neu");
  rows->Update();
  EXPECT_EQ(Names(*rows), "P0 P1 Neu ");
}

TEST_F(DynasetTest, ShowsRowsAsTheyWereAfterARollback) {
  FillLog(*workspace_, *log_, 3);
  const auto rows = log_->OpenRecordset("SELECT * FROM TXray");
  workspace_->BeginTrans();
  rows->Edit();
  rows->Fields("tXraySName").SetText("Changed");
  rows->Update();
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "Changed");
  workspace_->Rollback();
  EXPECT_EQ(Names(*rows), "P0 P1 P2 ");
}

}  // namespace
}  // namespace varnlog::dao
