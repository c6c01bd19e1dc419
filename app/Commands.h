#pragma once

#include <span>
#include <string_view>

#include "core/Globals.h"

namespace varnlog::app {

/// Every command of the main window. Menus, toolbar, shortcuts and enabling are built from the tables below.
enum class CommandId {
  mnuFileNew,
  mnuFileOpen,
  mnuFilePrintPreview,
  mnuFilePrint,
  mnuFilePrintSetup,
  mnuFileVerify,
  mnuFileEnd,
  mnuFileExport,
  mnuFileInspection,
  mnuFileBackup,
  mnuEditUpdate,
  mnuEditFind,
  mnuEditIncomplete,
  mnuEditNextMissing,
  mnuEditPreviousMissing,
  mnuSortPatAll,
  mnuSortPatPeriod,
  mnuSortDateAll,
  mnuSortDateAllXI,
  mnuSortDateAllXP,
  mnuSortDateAllXC,
  mnuSortDateAllXS,
  mnuSortDateAllXV,
  mnuSortAll,
  mnuViewToolbar,
  mnuViewStatusbar,
  mnuViewBigIcons,
  mnuViewHistory,
  mnuViewLoad,
  mnuViewProperties,
  mnuViewStatistics,
  mnuViewSettings,
  mnuHelpOnHelp,
  mnuHelpContents,
  mnuHelpIndex,
  mnuHelpSearch,
  mnuHelpInfo,
  mnuHelpSupport,
};

/// When a command can be used.
enum class EnabledWhen {
  kAlways,
  kNever,         // the entry stands in the menu but has no command
  kDataFileOpen,  // a log is open
  kUpdatable,     // a log is open and not read-only
  kPrintable,     // the log view is shown
};

/// Where the help begins.
enum class HelpPart { kContents, kIndex, kSearch, kHelpOnHelp };

class MainProgram;

/// What commands ask of the window besides what MainProgram does.
class CommandHost {
 public:
  virtual ~CommandHost() = default;
  [[nodiscard]] virtual MainProgram& Program() = 0;
  virtual void Quit() = 0;
  virtual void Print() = 0;
  virtual void ShowPreview() = 0;
  virtual void SetUpPrinter() = 0;
  virtual void ShowVerify() = 0;
  virtual void ExportShownRows() = 0;
  virtual void MakeInspection() = 0;
  virtual void ShowBackup() = 0;
  virtual void FindInList() = 0;
  virtual void ToggleIncomplete() = 0;
  /// `step` is 1 or -1.
  virtual void GoToMissing(int step) = 0;
  /// Turns one of the view's options over.
  virtual void Toggle(bool core::Globals::*option) = 0;
  virtual void ReloadView() = 0;
  virtual void ShowPropertiesOfLog() = 0;
  virtual void ShowStatistics() = 0;
  virtual void ShowSettings() = 0;
  virtual void ShowHelp(HelpPart part) = 0;
  virtual void ShowAbout() = 0;
  virtual void ShowSupport() = 0;
};

struct CommandDef {
  CommandId id;
  std::string_view name;     // object name of the action
  std::string_view textKey;  // caption
  std::string_view icon;     // name of an icon, or empty
  std::string_view shortcut;
  EnabledWhen enabledWhen;
  bool isChecked;  // shows a check mark
  /// What it does. An open entry has been stored before.
  void (*run)(CommandHost& host);
};

[[nodiscard]] std::span<const CommandDef> AllCommands();
[[nodiscard]] const CommandDef& Def(CommandId id);

/// One line of a menu.
struct MenuEntry {
  enum class Kind { kCommand, kSeparator, kRecentFiles };
  Kind kind = Kind::kSeparator;
  CommandId command = CommandId::mnuFileNew;
};

struct MenuDef {
  std::string_view name;
  std::string_view textKey;
  std::span<const MenuEntry> entries;
};

[[nodiscard]] std::span<const MenuDef> Menus();

/// One button of the toolbar; without a key it is a separator.
struct ToolbarButton {
  std::string_view key;
  std::string_view tooltipKey;
  CommandId command = CommandId::mnuFileNew;
};

[[nodiscard]] std::span<const ToolbarButton> Toolbar();

/// What the enabling rules look at.
struct CommandState {
  bool dataFileOpen = false;
  bool readOnly = false;
  bool logViewShown = false;
};

[[nodiscard]] bool IsEnabled(EnabledWhen rule, const CommandState& state);

}  // namespace varnlog::app
