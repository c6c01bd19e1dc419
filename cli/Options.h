#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "core/Selection.h"
#include "core/TextLookup.h"
#include "platform/ShortDate.h"

namespace CLI {
class App;
}

namespace varnlog::cli {

enum class ListFormat { kTable, kCsv, kJson };

/// What the command line says, before dates and patient are understood.
struct Options {
  std::string folder;  // program folder; "" for the executable's own
  std::string file;    // log; "" for the INI file's
  std::string from;
  std::string to;
  std::string type;
  std::string patient;
  ListFormat format = ListFormat::kTable;
  bool display = false;
  bool raw = false;
  bool withEntries = false;
  std::string output;  // the file of a report or an export
  std::string oldLog;  // to convert
  std::string newLog;  //
  std::string link;    // to a log on a server
  std::string action;  // on that server
  std::string partition;
  std::string anchor;  // a state that the log must contain
  std::string backupFolder;
  std::string backupFile;
  int keepCount = 0;  // 0: as the settings say
  int keepDays = 0;
  bool isSure = false;
  bool partial = false;
  bool overwrite = false;
  bool despiteClock = false;
  bool otherLog = false;
  bool withComments = false;
  bool oldestFirst = false;
  int patients = 2;
};

/// The full path, as long as the current folder is still the user's own.
[[nodiscard]] std::string FromCurrentFolder(const std::string& path);

/// Adds the options that every command takes.
void AddCommonOptions(CLI::App& app, Options& options);
/// Adds --from, --to, --type and --patient.
void AddSelectionOptions(CLI::App& command, Options& options);

/// Options that make no sense together, or a value that cannot be read: a text key, and what replaces its
/// placeholder.
class UsageError : public std::runtime_error {
 public:
  explicit UsageError(core::TextKey text, std::string placeholder = {}, std::string by = {})
      : std::runtime_error("wrong usage"), key(text), name(std::move(placeholder)), value(std::move(by)) {}

  core::TextKey key;
  std::string name;
  std::string value;
};

/// Turns the selection options into one of the nine selections. Throws UsageError when they name none of
/// them, and for a date or a patient that cannot be read.
void SetSelection(core::Selection& selection, const Options& options, const platform::ShortDate& shortDate);
/// The same for who only wants to know whether it throws.
void ValidateSelection(const Options& options);

}  // namespace varnlog::cli
