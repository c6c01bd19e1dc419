#include "app/Commands.h"

#include <algorithm>
#include <array>

namespace varnlog::app {

namespace {

using enum CommandId;
using enum EnabledWhen;

constexpr CommandDef kCommands[] = {
    {mnuFileNew, "mnuFileNew", "MN_MNU_FILENEW", "New", "", kNever, false},
    {mnuFileOpen, "mnuFileOpen", "MN_MNU_FILEOPEN", "Open", "Ctrl+O", kAlways, false},
    {mnuFilePrintPreview, "mnuFilePrintPreview", "MN_MNU_FILEPRINTPREVIEW", "Preview", "Ctrl+Shift+P",
     kPrintable, false},
    {mnuFilePrint, "mnuFilePrint", "MN_MNU_FILEPRINT", "Print", "Ctrl+P", kPrintable, false},
    {mnuFilePrintSetup, "mnuFilePrintSetup", "MN_MNU_FILEPRINTSETUP", "", "", kPrintable, false},
    {mnuFileVerify, "mnuFileVerify", "MN_MNU_FILEVERIFY", "", "", kDataFileOpen, false},
    {mnuFileEnd, "mnuFileEnd", "MN_MNU_FILEEND", "", "Ctrl+Q", kAlways, false},
    {mnuFileExport, "mnuFileExport", "MN_MNU_FILEEXPORT", "", "Ctrl+E", kPrintable, false},
    {mnuEditUpdate, "mnuEditUpdate", "MN_MNU_UPDATE", "Update", "Ctrl+U", kUpdatable, false},
    {mnuEditFind, "mnuEditFind", "MN_MNU_EDITFIND", "", "Ctrl+Shift+F", kPrintable, false},
    {mnuEditIncomplete, "mnuEditIncomplete", "MN_MNU_EDITINCOMPLETE", "", "Ctrl+Shift+I", kPrintable, true},
    {mnuEditNextMissing, "mnuEditNextMissing", "MN_MNU_EDITNEXTMISSING", "", "F8", kPrintable, false},
    {mnuEditPreviousMissing, "mnuEditPreviousMissing", "MN_MNU_EDITPREVMISSING", "", "Shift+F8", kPrintable,
     false},
    {mnuSortPatAll, "mnuSortPatAll", "MN_MNU_SELPATALL", "PatAll", "Ctrl+F", kDataFileOpen, false},
    {mnuSortPatPeriod, "mnuSortPatPeriod", "MN_MNU_PATPERIOD", "PatPeriod", "Ctrl+Shift+D", kDataFileOpen,
     false},
    {mnuSortDateAll, "mnuSortDateAll", "MN_MNU_SELDATEALL", "DateAll", "Ctrl+D", kDataFileOpen, false},
    {mnuSortDateAllXI, "mnuSortDateAllXI", "MN_MNU_SELDATEALLXI", "", "", kDataFileOpen, false},
    {mnuSortDateAllXP, "mnuSortDateAllXP", "MN_MNU_SELDATEALLXP", "", "", kDataFileOpen, false},
    {mnuSortDateAllXC, "mnuSortDateAllXC", "MN_MNU_SELDATEALLXC", "", "", kDataFileOpen, false},
    {mnuSortDateAllXS, "mnuSortDateAllXS", "MN_MNU_SELDATEALLXS", "", "", kDataFileOpen, false},
    {mnuSortDateAllXV, "mnuSortDateAllXV", "MN_MNU_SELDATEALLXV", "", "", kDataFileOpen, false},
    {mnuSortAll, "mnuSortAll", "MN_MNU_SELALL", "All", "Ctrl+Shift+A", kDataFileOpen, false},
    {mnuViewToolbar, "mnuViewToolbar", "MN_MNU_VIEWTOOLBAR", "", "", kAlways, true},
    {mnuViewStatusbar, "mnuViewStatusbar", "MN_MNU_VIEWSTATUSBAR", "", "", kAlways, true},
    {mnuViewBigIcons, "mnuViewBigIcons", "MN_MNU_VIEWBIGICONS", "", "", kAlways, true},
    {mnuViewHistory, "mnuViewHistory", "MN_MNU_VIEWHISTORY", "", "Ctrl+H", kAlways, true},
    {mnuViewLoad, "mnuViewLoad", "MN_MNU_VIEWLOAD", "", "F5", kDataFileOpen, false},
    {mnuViewProperties, "mnuViewProperties", "MN_MNU_VIEWPROPERTIES", "", "Alt+Return", kAlways, false},
    {mnuHelpOnHelp, "mnuHelpOnHelp", "MN_MNU_HELPONHELP", "", "", kAlways, false},
    {mnuHelpContents, "mnuHelpContents", "MN_MNU_HELPCONTENTS", "", "F1", kAlways, false},
    {mnuHelpIndex, "mnuHelpIndex", "MN_MNU_HELPINDEX", "Help", "Shift+F1", kAlways, false},
    {mnuHelpSearch, "mnuHelpSearch", "MN_MNU_HELPSEARCH", "", "", kAlways, false},
    {mnuHelpInfo, "mnuHelpInfo", "MN_MNU_HELPINFO", "", "", kAlways, false},
};

constexpr MenuEntry Item(CommandId id) {
  return {MenuEntry::Kind::kCommand, id};
}
constexpr MenuEntry kSeparator{MenuEntry::Kind::kSeparator, mnuFileNew};
constexpr MenuEntry kRecentFiles{MenuEntry::Kind::kRecentFiles, mnuFileNew};

constexpr MenuEntry kFileMenu[] = {Item(mnuFileNew),    Item(mnuFileOpen),
                                   kSeparator,          Item(mnuFilePrintPreview),
                                   Item(mnuFilePrint),  Item(mnuFilePrintSetup),
                                   kSeparator,          Item(mnuFileVerify),
                                   Item(mnuFileExport), kRecentFiles,
                                   kSeparator,          Item(mnuFileEnd)};
constexpr MenuEntry kEditMenu[] = {Item(mnuEditUpdate),      kSeparator,
                                   Item(mnuEditFind),        Item(mnuEditIncomplete),
                                   Item(mnuEditNextMissing), Item(mnuEditPreviousMissing)};
constexpr MenuEntry kSelectionMenu[] = {Item(mnuSortPatAll),
                                        Item(mnuSortPatPeriod),
                                        kSeparator,
                                        Item(mnuSortDateAll),
                                        Item(mnuSortDateAllXI),
                                        Item(mnuSortDateAllXP),
                                        Item(mnuSortDateAllXC),
                                        Item(mnuSortDateAllXS),
                                        Item(mnuSortDateAllXV),
                                        kSeparator,
                                        Item(mnuSortAll)};
constexpr MenuEntry kViewMenu[] = {
    Item(mnuViewToolbar), Item(mnuViewStatusbar), Item(mnuViewBigIcons),  Item(mnuViewHistory),
    kSeparator,           Item(mnuViewLoad),      Item(mnuViewProperties)};
constexpr MenuEntry kHelpMenu[] = {Item(mnuHelpOnHelp), Item(mnuHelpContents),
                                   Item(mnuHelpIndex),  Item(mnuHelpSearch),
                                   kSeparator,          Item(mnuHelpInfo)};

constexpr MenuDef kMenus[] = {
    {"mnuFile", "MN_MNU_FILE", kFileMenu},     {"mnuEdit", "MN_MNU_EDIT", kEditMenu},
    {"mnuSort", "MN_MNU_SEL", kSelectionMenu}, {"mnuView", "MN_MNU_VIEW", kViewMenu},
    {"mnuHelp", "MN_MNU_HELP", kHelpMenu},
};

constexpr ToolbarButton kToolbar[] = {
    {"New", "MN_NEWXRLOG", mnuFileNew},
    {"Open", "MN_OPENXRLOG", mnuFileOpen},
    {"Update", "MN_UPDATEXRLOG", mnuEditUpdate},
    {},
    {"Print", "MN_PRINTXRLOG", mnuFilePrint},
    {"Preview", "MN_PRINTPREVIEW", mnuFilePrintPreview},
    {},
    {"PatAll", "MN_SELPAT", mnuSortPatAll},
    {"PatPeriod", "MN_SELPATPERIOD", mnuSortPatPeriod},
    {"DateAll", "MN_SELPERIOD", mnuSortDateAll},
    {"All", "MN_ALLPATIMG", mnuSortAll},
    {},
    {"Help", "MN_HELP", mnuHelpIndex},
};

}  // namespace

std::span<const CommandDef> AllCommands() {
  return kCommands;
}

const CommandDef& Def(CommandId id) {
  return kCommands[static_cast<std::size_t>(id)];
}

std::span<const MenuDef> Menus() {
  return kMenus;
}

std::span<const ToolbarButton> Toolbar() {
  return kToolbar;
}

bool IsEnabled(EnabledWhen rule, const CommandState& state) {
  switch (rule) {
    case kAlways:
      return true;
    case kNever:
      return false;
    case kDataFileOpen:
      return state.dataFileOpen;
    case kUpdatable:
      return state.dataFileOpen && !state.readOnly;
    case kPrintable:
      return state.dataFileOpen && state.logViewShown;
  }
  return false;
}

}  // namespace varnlog::app
