#include <QApplication>
#include <QStatusBar>

#include "app/frmMDIMain.h"
#include "intake/QuietUpdate.h"
#include "intake/UpdateRun.h"
#include "intake/frmUpdateNotices.h"
#include "ui/QtText.h"

// What the suite reports while the program runs: how many exposures wait, and taking them in at once.

namespace varnlog::app {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kMillisecondsUntilFree = 300;
constexpr int kMillisecondsForMessage = 5'000;

}  // namespace

void frmMDIMain::WatchExchange() {
  timAtOnce_.setSingleShot(true);
  connect(&timAtOnce_, &QTimer::timeout, this, &frmMDIMain::TakeInAtOnce);
}

void frmMDIMain::ExchangeChanged() {
  if (loading_ || unloading_) return;
  ShowWaiting();
  if (context_.globals.TakeInAtOnce) timAtOnce_.start(0);
}

void frmMDIMain::ShowWaiting() {
  const bool open = program_.State().dataFileOpen;
  const core::Globals& globals = context_.globals;
  const std::int64_t waiting =
      open ? waiting_->Count(globals.ExchangeFileGl, intake::ExchangeBegin(globals)) : 0;
  waitingPanel_->setVisible(waiting > 0);
  waitingPanel_->setText(
      Caption(context_.services.texts, "MN_STATUS_WAITING"_key, {{"lngCount", std::to_string(waiting)}}));
  const std::size_t notices = notices_.size();
  noticesPanel_->setVisible(notices > 0);
  noticesPanel_->setText(
      Caption(context_.services.texts, "MN_STATUS_NOTICES"_key, {{"lngCount", std::to_string(notices)}}));
}

/// An open dialog or editor is waited for; whoever works there is not disturbed.
void frmMDIMain::TakeInAtOnce() {
  if (unloading_ || !context_.globals.TakeInAtOnce || !program_.MayTakeInAtOnce()) return;
  const core::Globals& globals = context_.globals;
  if (waiting_->Count(globals.ExchangeFileGl, intake::ExchangeBegin(globals)) == 0) return;
  if (IsBusy()) return timAtOnce_.start(kMillisecondsUntilFree);
  program_.TakeInAtOnce();
  ShowWaiting();
}

std::int64_t frmMDIMain::RunQuietUpdate() {
  const intake::QuietResult result =
      intake::RunQuietUpdate({context_.globals, context_.services.texts, context_.services.clock},
                             [] { QApplication::processEvents(QEventLoop::ExcludeUserInputEvents); });
  notices_.insert(notices_.end(), result.unsaid.begin(), result.unsaid.end());
  if (result.update.added > 0) {
    statusBar()->showMessage(Caption(context_.services.texts, "MN_TAKENIN"_key,
                                     {{"lngCount", std::to_string(result.update.added)}}),
                             kMillisecondsForMessage);
  }
  return result.update.added + result.update.changed;
}

void frmMDIMain::ShowRowsInPlace() {
  if (results_) results_->ReloadInPlace();
  RefreshCommands();
}

void frmMDIMain::ShowNotices() {
  if (notices_.empty()) return;
  intake::frmUpdateNotices(this, context_.services.texts, context_.services.user, std::exchange(notices_, {}))
      .exec();
  ShowWaiting();
}

}  // namespace varnlog::app
