#include <string>

#include <gtest/gtest.h>

#include "app/Commands.h"
#include "app/SelectionCommands.h"

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
  struct Row {
    SelectionKind kind;
    bool patientOk, periodOk;
    const char* asked;
    bool chosen;
  };
  const Row rows[] = {
      {SelectionKind::kAll, false, false, "", true},
      {SelectionKind::kPeriod, true, true, "period 1;", true},
      {SelectionKind::kPeriodXC, true, false, "period 6;", false},
      {SelectionKind::kPatient, true, false, "patient;", true},
      {SelectionKind::kPatient, false, true, "patient;", false},
      {SelectionKind::kPatientPeriod, true, true, "patient;period 3;", true},
      {SelectionKind::kPatientPeriod, false, true, "patient;", false},
      {SelectionKind::kPatientPeriod, true, false, "patient;period 3;", false},
  };
  for (const Row& row : rows) {
    Globals globals;
    globals.SortSelectionGl = SelectionKind::kPeriodXV;
    globals.strPatNameGl = "Alt";
    ScriptedDialogs dialogs(globals, row.patientOk, row.periodOk);
    EXPECT_EQ(ChooseSelection(globals, row.kind, dialogs), row.chosen) << row.asked;
    EXPECT_EQ(dialogs.asked, row.asked);
    EXPECT_EQ(globals.SortSelectionGl, row.chosen ? row.kind : SelectionKind::kPeriodXV);
    if (!row.chosen) {
      EXPECT_EQ(globals.strPatNameGl, "Alt");
      EXPECT_FALSE(globals.dPatBirthdayGl.IsSet());
    }
  }
}

TEST(SelectionCommandsTest, ActivationUpdatesOnlyAWritableShownLogWhoseOfferWasNotDeclined) {
  Globals globals;
  EXPECT_TRUE(UpdatesOnActivation(globals, true));
  EXPECT_FALSE(UpdatesOnActivation(globals, false));
  globals.ReadOnlyGl = true;
  EXPECT_FALSE(UpdatesOnActivation(globals, true));
  globals.ReadOnlyGl = false;
  globals.UpdateDeclinedGl = true;
  EXPECT_FALSE(UpdatesOnActivation(globals, true));
  globals.UpdateDeclinedGl = false;
  globals.UpdateOnActivation = false;
  EXPECT_FALSE(UpdatesOnActivation(globals, true));
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
