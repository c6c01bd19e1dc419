#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include <QObject>

#include "app/CFormPosIni.h"
#include "app/Commands.h"
#include "app/HelpCollection.h"
#include "app/PlacedWidget.h"
#include "app/frmHelp.h"
#include "start/StartUp.h"

namespace varnlog::app {

/// The program's help, in the program's language. Its window is made when it is first asked for. While this
/// lives, F1 in a dialog or message shows the page about it; the window can be used beside the dialog.
class Help final : public QObject {
 public:
  Help(const core::Globals& globals, const start::Services& services);
  /// Closes the window and keeps its place.
  ~Help() override;

  /// A help file that is missing or cannot be read is told to the user.
  void Show(HelpPart part);
  void ShowPage(std::string_view name);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  [[nodiscard]] bool Open();
  void Present();
  /// Beside the dialog, or at least beside its buttons: whoever looks up a question wants to answer it.
  void PlaceBeside(const QWidget& dialog);
  void PlaceWhereItWas();

  const core::Globals& globals_;
  start::Services services_;
  std::unique_ptr<HelpCollection> collection_;
  std::unique_ptr<frmHelp> window_;
  std::unique_ptr<PlacedWidget> place_;
  CFormPosIni formPos_;
  std::optional<QRect> ownPlace_;  // while it stands beside a dialog
};

}  // namespace varnlog::app
