#pragma once

#include <functional>
#include <memory>

#include <QTranslator>

#include "app/frmMDIMain.h"
#include "start/Language.h"
#include "start/modINIFile.h"
#include "tools/screenshots/DemoPractice.h"
#include "tools/screenshots/ModalUser.h"
#include "ui/KeyNames.h"
#include "ui/MessageBox.h"

namespace varnlog::tools {

/// Opens every window and dialog of the program once, on a made-up practice and the way a user comes to it,
/// and shows each to a visitor as it stands.
class WindowTour {
 public:
  /// `window` is the one to look at; popups that are open belong to it.
  using Visitor = std::function<void(const QString& name, QWidget& window)>;

  WindowTour(const DemoPractice& practice, const std::string& language, Visitor visit);
  ~WindowTour();

  /// Throws std::runtime_error when a window does not come.
  void Run();

 private:
  void Start();
  void ShowLog();
  void ShowEditing();
  void ShowMenus();
  void ShowSelections();
  void ShowPatientSearch();
  void ShowProgramWindows();
  void ShowHelp();
  void ShowPrinting();
  void ShowOtherStates();
  void ShowConversion();
  void Quit();

  void Visit(const QString& name, QWidget& window);
  /// Visits the dialog of that name and presses the button with that object name in it.
  void ExpectAndPress(const char* dialog, const QString& name, const char* button);
  /// Visits a message box and answers it.
  void ExpectMessage(const QString& name, bool agree = true);
  void Trigger(app::CommandId command);
  void Enter(int row, int column, const QString& text);
  [[nodiscard]] int FirstRow(int column, ui::CellState state) const;
  [[nodiscard]] ui::TDBGrid& Grid() const { return window_->Results()->Grid(); }
  [[nodiscard]] QString Text(core::TextKey key) const;

  std::string oldLog_;
  Visitor visit_;
  int visits_ = 0;
  ModalUser user_;
  core::Globals globals_;
  QTranslator qtTexts_;
  start::Language texts_{globals_};
  ui::KeyNames keyNames_{texts_};
  ui::MessageBox messages_{texts_};
  start::modINIFile ini_;
  platform::FixedClock clock_;
  platform::ShortDate shortDate_;
  start::HostToothScheme scheme_{globals_, ini_};
  std::unique_ptr<app::frmMDIMain> window_;
};

}  // namespace varnlog::tools
