#include <string>

#include <gtest/gtest.h>

#include "app/Commands.h"
#include "app/SelectionCommands.h"
#include "tests/support/Table.h"

namespace varnlog::app {
namespace {

using core::Globals;
using core::SelectionKind;
using platform::DateTime;

/// Answers both dialogs and writes down what was asked.
class ScriptedDialogs final : public SelectionDialogs {
 public:
  ScriptedDialogs(Globals& globals, bool patientOk, bool periodOk)
      : globals_(globals), patientOk_(patientOk), periodOk_(periodOk) {}

  bool AskPeriod() override {
    asked += "period " + std::to_string(static_cast<int>(globals_.SortSelectionGl)) + ";";
    return periodOk_;
  }
  bool AskPatient() override {
    asked += "patient;";
    if (patientOk_) {
      globals_.strPatNameGl = "Neumann";
      globals_.strPatFirstnameGl = "Nele";
      globals_.dPatBirthdayGl = *DateTime::FromCivil(1999, 9, 9);
    }
    return patientOk_;
  }

  std::string asked;

 private:
  Globals& globals_;
  bool patientOk_;
  bool periodOk_;
};

TEST(SelectionCommandsTest, AsksWhatEachKindNeedsAndRestoresEverythingOnCancel) {
  const Table<SelectionKind, bool, bool, const char*, bool> rows = {
      {SelectionKind::kAll, false, false, "", true},
      {SelectionKind::kPeriod, true, true, "period 1;", true},
      {SelectionKind::kPeriodXC, true, false, "period 6;", false},
      {SelectionKind::kPatient, true, false, "patient;", true},
      {SelectionKind::kPatient, false, true, "patient;", false},
      {SelectionKind::kPatientPeriod, true, true, "patient;period 3;", true},
      {SelectionKind::kPatientPeriod, false, true, "patient;", false},
      {SelectionKind::kPatientPeriod, true, false, "patient;period 3;", false}};
  for (const auto& [kind, patientOk, periodOk, asked, chosen] : rows) {
    Globals globals;
    globals.SortSelectionGl = SelectionKind::kPeriodXV;
    globals.strPatNameGl = "Alt";
    ScriptedDialogs dialogs(globals, patientOk, periodOk);
    EXPECT_EQ(ChooseSelection(globals, kind, dialogs), chosen) << asked;
    EXPECT_EQ(dialogs.asked, asked);
    EXPECT_EQ(globals.SortSelectionGl, chosen ? kind : SelectionKind::kPeriodXV);
    if (!chosen) {
      EXPECT_EQ(globals.strPatNameGl, "Alt");
      EXPECT_FALSE(globals.dPatBirthdayGl.IsSet());
    }
  }
}

TEST(SelectionCommandsTest, ActivationUpdatesOnlyAWritableShownLogWhoseOfferWasNotDeclined) {
  for (const auto& [isShown, isReadOnly, isDeclined, isWanted, updates] :
       Table<bool, bool, bool, bool, bool>{{true, false, false, true, true},
                                           {false, false, false, true, false},
                                           {true, true, false, true, false},
                                           {true, false, true, true, false},
                                           {true, false, false, false, false}}) {
    Globals globals;
    globals.ReadOnlyGl = isReadOnly;
    globals.UpdateDeclinedGl = isDeclined;
    globals.UpdateOnActivation = isWanted;
    EXPECT_EQ(UpdatesOnActivation(globals, isShown), updates)
        << isShown << isReadOnly << isDeclined << isWanted;
  }
}

TEST(CommandsTest, TheTableIsInTheOrderOfTheIdsAndEveryCommandStandsInOneMenu) {
  std::size_t place = 0;
  for (const CommandDef& command : AllCommands()) {
    EXPECT_EQ(static_cast<std::size_t>(command.id), place++) << command.name;
    int uses = 0;
    for (const MenuDef& menu : Menus()) {
      for (const MenuEntry& entry : menu.entries) {
        uses += entry.kind == MenuEntry::Kind::kCommand && entry.command == command.id;
      }
    }
    EXPECT_EQ(uses, 1) << command.name;
  }
}

}  // namespace
}  // namespace varnlog::app
