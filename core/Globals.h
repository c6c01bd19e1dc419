#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/Selection.h"
#include "db/CJetEngine.h"
#include "platform/Author.h"

namespace varnlog::seals {
class Ledger;
}

namespace varnlog::core {

/// The program's state. Start-up owns the one instance and hands it on by reference; a test makes its own.
struct Globals : Selection {
  std::string IniFileGl;        // full path of "varnlog.ini"
  std::string ProgramFolderGl;  // without a trailing separator
  std::string DataPathGl;       // the imaging suite's data folder, with its trailing separator
  std::string ExchangeFileGl;   // DataPathGl + "varnlog.sdx"
  std::string strDataFileGl;    // the log that is open or to be opened
  std::string StartFileGl;      // the log that the settings named at start; "" when they named none
  std::string ConfiguredGl;     // the log that the settings are to name
  std::string DBVersionGl;      // TConfig "DBVersion" of the open log
  bool ReadOnlyGl = false;      // TConfig "ReadOnly" is "1", or the log was opened for reading

  bool OptBigIcons = true;
  bool OptTbrVisible = true;
  bool OptSbrVisible = true;
  bool OptHistoryVisible = false;
  bool UpdateOnActivation = true;
  bool TakeInAtOnce = false;  // what the suite reports while the program runs, without asking

  /// What the log view shows now; its members carry names of this struct's own.
  [[nodiscard]] Selection& CurrentSelection() { return *this; }

  std::string SiteGl;     // the practice's name as the suite knows it
  std::int16_t kVGl = 0;  // the suite's default tube voltage in kilovolts
  std::int16_t mAGl = 0;  // the suite's default tube current in milliamperes

  /// The user declined the last update offer or cancelled the run; no offer on activation while set.
  bool UpdateDeclinedGl = false;

  std::string LanguageGl = "D";

  std::unique_ptr<db::CJetEngine> LogEngineGl;   // workspace "MyWs"
  std::unique_ptr<db::CJetEngine> LangEngineGl;  // workspace "LangWs"

  platform::Author AuthorGl;                // who changes the log, where and with what
  std::shared_ptr<seals::Ledger> LedgerGl;  // seals what is changed; nullptr while nothing can be
};

}  // namespace varnlog::core
