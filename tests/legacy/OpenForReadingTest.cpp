#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "legacy/LoadTables.h"
#include "tests/legacy/ConversionFixture.h"
#include "tests/support/Table.h"

// Jet files that are opened through the engine.

namespace varnlog::legacy {
namespace {

using dao::ErrorNumber;
using enum dao::ErrorNumber;
using dao::RecordsetType;

class OpenForReading : public ConversionFixture {
 protected:
  void SetUp() override {
    ConversionFixture::SetUp();
    InstallJetFormat(engine_);
  }

  // The number of the error with which opening fails, kNone when it does not.
  ErrorNumber OpenError(bool readOnly) {
    return test::ErrorOf([&] {
      try {
        static_cast<void>(workspace_->OpenDatabase(log_().string(), false, readOnly));
      } catch (const dao::EngineError& error) {
        EXPECT_NE(std::string(error.what()).find(log_().string()), std::string::npos) << error.what();
        throw;
      }
    });
  }
};

TEST_F(OpenForReading, AnOldLogHasItsRowsAndTheLayoutOfNow) {
  for (const std::string name : {"log-1.0-jet3-cp1252", "log-1.1-jet3-cp1251",
                                 "log-1.1-jet4-password-encoded", "log-1.1-upgraded-jet4"}) {
    SCOPED_TRACE(name);
    HasSample(name + ".mdb");
    EXPECT_EQ(NewRows(log_()), ExpectedRows(name));
    EXPECT_EQ(Setting(log_(), "DBVersion"), "1.1");
    EXPECT_TRUE(Open(log_())->Check().empty());
    ExpectOnlyTheOldLog();
  }
}

TEST_F(OpenForReading, RecordSetsOfEveryKindAndSeekWork) {
  HasSample("log-1.1-jet4-scratch.mdb");
  const auto log = Open(log_());
  const auto all =
      log->OpenRecordset("SELECT * FROM TXray ORDER BY tXraySName, tXrayTs", RecordsetType::kDynaset);
  all->MoveLast();
  EXPECT_EQ(all->RecordCount(), 262);
  const auto period = log->OpenRecordset(
      "SELECT TXray.* FROM TXray WHERE tXrayTs Between #1/1/1895# And #12/31/1895#", RecordsetType::kDynaset);
  EXPECT_EQ(period->Fields("tXrayTs").Text(), "1895-11-08 17:30:01");
  const auto patients = log->OpenRecordset("SELECT DISTINCT tXraySName, tXraySFirstname FROM TXray");
  EXPECT_FALSE(patients->IsEOF());

  const dao::TableDef exposures = log->TableDefs("TXray");
  EXPECT_TRUE(exposures.IndexNamed("PrimaryKey").isPrimary);
  const std::vector<std::string> identity{"tXraySName", "tXraySFirstname", "tXrayDBirthday", "tXrayTs"};
  EXPECT_EQ(exposures.IndexNamed("iXRayIdent").fields, identity);
  const auto table = log->OpenRecordset("TXray", RecordsetType::kTable);
  table->SetIndex("PrimaryKey");
  table->Seek("=", {all->Fields("tXrayCulIntIDPk").Number()});
  EXPECT_FALSE(table->NoMatch());
  EXPECT_EQ(table->Fields("tXraySName").Text(), all->Fields("tXraySName").Text());
}

TEST_F(OpenForReading, WhatCannotBeOpenedSaysWhyAndInWhichFile) {
  const std::string sound = samples::ReadOurs("log-1.1-jet4-scratch.mdb");
  std::string newer = sound;
  newer[0x14] = 2;
  for (const auto& [what, content, reading, writing] :
       Table<const char*, std::string, ErrorNumber, ErrorNumber>{
           {"sound", sound, kNone, kUnrecognisedFormat},
           {"newer", newer, kUnrecognisedFormat, kUnrecognisedFormat},
           {"cut", sound.substr(0, 126976), kDamaged, kUnrecognisedFormat},
           {"start only", sound.substr(0, 40), kUnrecognisedFormat, kUnrecognisedFormat},
           {"text", samples::ReadOurs("broken-text-renamed.mdb"), kUnrecognisedFormat, kUnrecognisedFormat},
           {"empty", "", kUnrecognisedFormat, kUnrecognisedFormat}}) {
    SCOPED_TRACE(what);
    HasOldLog(content);
    EXPECT_EQ(OpenError(true), reading);
    EXPECT_EQ(OpenError(false), writing);
    EXPECT_EQ(samples::Read(log_()), content);
  }
  std::filesystem::remove(log_());
  EXPECT_EQ(OpenError(true), kFileNotFound);
}

}  // namespace
}  // namespace varnlog::legacy
