#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "db/CJetEngine.h"
#include "platform/DateTime.h"

namespace varnlog::core {

/// The nine selections of the log view; the numbers are stored in the program's INI file.
enum class SelectionKind : std::int16_t {
  kAll = 0,
  kPeriod = 1,
  kPatient = 2,
  kPatientPeriod = 3,
  kPeriodXI = 4,
  kPeriodXP = 5,
  kPeriodXC = 6,
  kPeriodXS = 7,
  kPeriodXV = 8,
};

/// The program's state. Start-up owns the one instance and hands it on by reference; a test makes its own.
struct Globals {
  std::string IniFileGl;        // full path of "varnlog.ini"
  std::string ProgramFolderGl;  // without a trailing separator
  std::string DataPathGl;       // the imaging suite's data folder, with its trailing separator
  std::string ExchangeFileGl;   // DataPathGl + "varnlog.sdx"
  std::string strDataFileGl;    // the log that is open or to be opened
  std::string DBVersionGl;      // TConfig "DBVersion" of the open log
  bool ReadOnlyGl = false;      // TConfig "ReadOnly" is "1", or the log was opened for reading

  bool OptBigIcons = true;
  bool OptTbrVisible = true;
  bool OptSbrVisible = true;
  bool UpdateOnActivation = true;

  SelectionKind SortSelectionGl = SelectionKind::kAll;
  platform::DateTime dBegGl;
  platform::DateTime dEndGl;
  std::string strPatNameGl;
  std::string strPatFirstnameGl;
  platform::DateTime dPatBirthdayGl;

  std::string SiteGl;     // the practice's name as the suite knows it
  std::int16_t kVGl = 0;  // the suite's default tube voltage in kilovolts
  std::int16_t mAGl = 0;  // the suite's default tube current in milliamperes

  /// The user declined the last update offer or cancelled the run; no offer on activation while set.
  bool UpdateDeclinedGl = false;

  std::string LanguageGl = "D";

  std::unique_ptr<db::CJetEngine> LogEngineGl;   // workspace "MyWs"
  std::unique_ptr<db::CJetEngine> LangEngineGl;  // workspace "LangWs"
};

}  // namespace varnlog::core
