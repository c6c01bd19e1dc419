#include "app/Commands.h"

#include <algorithm>
#include <array>

#include "app/MainProgram.h"

namespace varnlog::app {

namespace {

using enum CommandId;
using enum EnabledWhen;
using core::Globals;
using enum core::SelectionKind;

template <core::SelectionKind kind>
void Select(CommandHost& host) {
  host.Program().Select(kind);
}
template <bool Globals::*option>
void Toggle(CommandHost& host) {
  host.Toggle(option);
}
template <HelpPart part>
void Help(CommandHost& host) {
  host.ShowHelp(part);
}

constexpr CommandDef kCommands[] = {
    {mnuFileNew, "mnuFileNew", "MN_MNU_FILENEW", "New", "", kNever, false, [](CommandHost&) {}},
    {mnuFileOpen, "mnuFileOpen", "MN_MNU_FILEOPEN", "Open", "Ctrl+O", kAlways, false,
     [](CommandHost& host) { host.Program().FileOpen(); }},
    {mnuFilePrintPreview, "mnuFilePrintPreview", "MN_MNU_FILEPRINTPREVIEW", "Preview", "Ctrl+Shift+P",
     kPrintable, false, [](CommandHost& host) { host.ShowPreview(); }},
    {mnuFilePrint, "mnuFilePrint", "MN_MNU_FILEPRINT", "Print", "Ctrl+P", kPrintable, false,
     [](CommandHost& host) { host.Print(); }},
    {mnuFilePrintSetup, "mnuFilePrintSetup", "MN_MNU_FILEPRINTSETUP", "", "", kPrintable, false,
     [](CommandHost& host) { host.SetUpPrinter(); }},
    {mnuFileVerify, "mnuFileVerify", "MN_MNU_FILEVERIFY", "", "", kDataFileOpen, false,
     [](CommandHost& host) { host.ShowVerify(); }},
    {mnuFileEnd, "mnuFileEnd", "MN_MNU_FILEEND", "", "Ctrl+Q", kAlways, false,
     [](CommandHost& host) { host.Quit(); }},
    {mnuFileExport, "mnuFileExport", "MN_MNU_FILEEXPORT", "", "Ctrl+E", kPrintable, false,
     [](CommandHost& host) { host.ExportShownRows(); }},
    {mnuFileInspection, "mnuFileInspection", "MN_MNU_FILEINSPECTION", "", "", kDataFileOpen, false,
     [](CommandHost& host) { host.MakeInspection(); }},
    {mnuFileBackup, "mnuFileBackup", "MN_MNU_FILEBACKUP", "", "", kAlways, false,
     [](CommandHost& host) { host.ShowBackup(); }},
    {mnuEditUpdate, "mnuEditUpdate", "MN_MNU_UPDATE", "Update", "Ctrl+U", kUpdatable, false,
     [](CommandHost& host) { host.Program().Update(); }},
    {mnuEditFind, "mnuEditFind", "MN_MNU_EDITFIND", "", "Ctrl+Shift+F", kPrintable, false,
     [](CommandHost& host) { host.FindInList(); }},
    {mnuEditIncomplete, "mnuEditIncomplete", "MN_MNU_EDITINCOMPLETE", "", "Ctrl+Shift+I", kPrintable, true,
     [](CommandHost& host) { host.ToggleIncomplete(); }},
    {mnuEditNextMissing, "mnuEditNextMissing", "MN_MNU_EDITNEXTMISSING", "", "F8", kPrintable, false,
     [](CommandHost& host) { host.GoToMissing(1); }},
    {mnuEditPreviousMissing, "mnuEditPreviousMissing", "MN_MNU_EDITPREVMISSING", "", "Shift+F8", kPrintable,
     false, [](CommandHost& host) { host.GoToMissing(-1); }},
    {mnuSortPatAll, "mnuSortPatAll", "MN_MNU_SELPATALL", "PatAll", "Ctrl+F", kDataFileOpen, false,
     Select<kPatient>},
    {mnuSortPatPeriod, "mnuSortPatPeriod", "MN_MNU_PATPERIOD", "PatPeriod", "Ctrl+Shift+D", kDataFileOpen,
     false, Select<kPatientPeriod>},
    {mnuSortDateAll, "mnuSortDateAll", "MN_MNU_SELDATEALL", "DateAll", "Ctrl+D", kDataFileOpen, false,
     Select<kPeriod>},
    {mnuSortDateAllXI, "mnuSortDateAllXI", "MN_MNU_SELDATEALLXI", "", "", kDataFileOpen, false,
     Select<kPeriodXI>},
    {mnuSortDateAllXP, "mnuSortDateAllXP", "MN_MNU_SELDATEALLXP", "", "", kDataFileOpen, false,
     Select<kPeriodXP>},
    {mnuSortDateAllXC, "mnuSortDateAllXC", "MN_MNU_SELDATEALLXC", "", "", kDataFileOpen, false,
     Select<kPeriodXC>},
    {mnuSortDateAllXS, "mnuSortDateAllXS", "MN_MNU_SELDATEALLXS", "", "", kDataFileOpen, false,
     Select<kPeriodXS>},
    {mnuSortDateAllXV, "mnuSortDateAllXV", "MN_MNU_SELDATEALLXV", "", "", kDataFileOpen, false,
     Select<kPeriodXV>},
    {mnuSortAll, "mnuSortAll", "MN_MNU_SELALL", "All", "Ctrl+Shift+A", kDataFileOpen, false, Select<kAll>},
    {mnuViewToolbar, "mnuViewToolbar", "MN_MNU_VIEWTOOLBAR", "", "", kAlways, true,
     Toggle<&Globals::OptTbrVisible>},
    {mnuViewStatusbar, "mnuViewStatusbar", "MN_MNU_VIEWSTATUSBAR", "", "", kAlways, true,
     Toggle<&Globals::OptSbrVisible>},
    {mnuViewBigIcons, "mnuViewBigIcons", "MN_MNU_VIEWBIGICONS", "", "", kAlways, true,
     Toggle<&Globals::OptBigIcons>},
    {mnuViewHistory, "mnuViewHistory", "MN_MNU_VIEWHISTORY", "", "Ctrl+H", kAlways, true,
     Toggle<&Globals::OptHistoryVisible>},
    {mnuViewLoad, "mnuViewLoad", "MN_MNU_VIEWLOAD", "", "F5", kDataFileOpen, false,
     [](CommandHost& host) { host.ReloadView(); }},
    {mnuViewProperties, "mnuViewProperties", "MN_MNU_VIEWPROPERTIES", "", "Alt+Return", kAlways, false,
     [](CommandHost& host) { host.ShowPropertiesOfLog(); }},
    {mnuViewStatistics, "mnuViewStatistics", "MN_MNU_VIEWSTATISTICS", "", "Ctrl+T", kPrintable, false,
     [](CommandHost& host) { host.ShowStatistics(); }},
    {mnuViewSettings, "mnuViewSettings", "MN_MNU_VIEWSETTINGS", "", "", kAlways, false,
     [](CommandHost& host) { host.ShowSettings(); }},
    {mnuHelpOnHelp, "mnuHelpOnHelp", "MN_MNU_HELPONHELP", "", "", kAlways, false,
     Help<HelpPart::kHelpOnHelp>},
    {mnuHelpContents, "mnuHelpContents", "MN_MNU_HELPCONTENTS", "", "F1", kAlways, false,
     Help<HelpPart::kContents>},
    {mnuHelpIndex, "mnuHelpIndex", "MN_MNU_HELPINDEX", "Help", "Shift+F1", kAlways, false,
     Help<HelpPart::kIndex>},
    {mnuHelpSearch, "mnuHelpSearch", "MN_MNU_HELPSEARCH", "", "", kAlways, false, Help<HelpPart::kSearch>},
    {mnuHelpInfo, "mnuHelpInfo", "MN_MNU_HELPINFO", "", "", kAlways, false,
     [](CommandHost& host) { host.ShowAbout(); }},
    {mnuHelpSupport, "mnuHelpSupport", "MN_MNU_HELPSUPPORT", "", "", kAlways, false,
     [](CommandHost& host) { host.ShowSupport(); }},
};

constexpr MenuEntry Item(CommandId id) {
  return {MenuEntry::Kind::kCommand, id};
}
constexpr MenuEntry kSeparator{MenuEntry::Kind::kSeparator, mnuFileNew};
constexpr MenuEntry kRecentFiles{MenuEntry::Kind::kRecentFiles, mnuFileNew};

constexpr MenuEntry kFileMenu[] = {
    Item(mnuFileNew),    Item(mnuFileOpen),       kSeparator,          Item(mnuFilePrintPreview),
    Item(mnuFilePrint),  Item(mnuFilePrintSetup), kSeparator,          Item(mnuFileVerify),
    Item(mnuFileExport), Item(mnuFileInspection), Item(mnuFileBackup), kRecentFiles,
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
    Item(mnuViewToolbar), Item(mnuViewStatusbar),  Item(mnuViewBigIcons),   Item(mnuViewHistory), kSeparator,
    Item(mnuViewLoad),    Item(mnuViewProperties), Item(mnuViewStatistics), Item(mnuViewSettings)};
constexpr MenuEntry kHelpMenu[] = {
    Item(mnuHelpOnHelp), Item(mnuHelpContents), Item(mnuHelpIndex),  Item(mnuHelpSearch),
    kSeparator,          Item(mnuHelpInfo),     Item(mnuHelpSupport)};

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
