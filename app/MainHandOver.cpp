#include <QApplication>

#include "app/frmBackup.h"
#include "app/frmMDIMain.h"
#include "backup/Schedule.h"
#include "core/EngineMessages.h"
#include "core/Installation.h"
#include "db/dao/ServerLink.h"
#include "exports/Separator.h"
#include "inspection/frmInspection.h"
#include "statistics/ReferenceLevels.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"
#include "ui/SaveFolder.h"
#include "ui/WaitWindow.h"

// What leaves the program as files: the inspection folder and copies of the log.

namespace varnlog::app {

using core::literals::operator""_key;

namespace {

constexpr int kMillisecondsUntilBackup = 20'000;
constexpr int kMillisecondsBetweenBackups = 30 * 60 * 1'000;

class ShownProgress final : public inspection::InspectionProgress {
 public:
  ShownProgress(QWidget* parent, const core::TextLookup& texts) : window_(parent, texts, "dlgInspection") {}
  bool Working(core::TextKey what, std::int64_t done, std::int64_t all) override {
    return window_.Advance(what, done, all);
  }

 private:
  ui::WaitWindow window_;
};

}  // namespace

void frmMDIMain::MakeInspection() {
  const core::TextLookup& texts = context_.services.texts;
  inspection::frmInspection dialog(this, texts, context_.services.clock.Today());
  if (dialog.exec() != QDialog::Accepted) return;
  inspection::InspectionOrder order = dialog.Order();
  ui::SaveFolder kept(context_.services.ini, context_.globals.IniFileGl, "Export", "Folder");
  ui::CFileDialog where;
  where.SetDialogTitle(texts.GetText("IN_WHERE"_key));
  where.SetHelpTopic("IN_WHERE");
  where.SetInitDir(kept.Last());
  const auto parent = where.ShowFolder(this);
  if (!parent) return;
  kept.Keep(*parent);
  order.parent = platform::ToPath(*parent);
  try {
    const auto made = [&] {
      ShownProgress progress(this, texts);
      return inspection::MakeInspectionFolder(
          {.log = *context_.globals.LogEngineGl->Database(),
           .logFile = context_.globals.strDataFileGl,
           .texts = texts,
           .scheme = context_.scheme,
           .shortDate = context_.shortDate,
           .clock = context_.services.clock,
           .site = context_.globals.SiteGl,
           .language = context_.globals.LanguageGl,
           .levels = core::DeliveredFile(context_.globals, statistics::kReferenceLevels),
           .listSeparator = exports::ListSeparatorOf(context_.services.ini, context_.globals.IniFileGl)},
          order, progress);
    }();
    if (!made) return;
    context_.services.Messages().Inform("IN_DONE"_key, {{"lngCount", std::to_string(made->exposures)},
                                                        {"strFolder", platform::FromPath(made->folder)},
                                                        {"strArchive", platform::FromPath(made->archive)}});
  } catch (const std::exception& error) {
    context_.services.Messages().ShowText(inspection::InspectionErrorText(texts, error));
  }
}

void frmMDIMain::SaveRecord(std::unique_ptr<dao::Recordset> rows, const std::string& headline) {
  report::PrintSource source;
  source.rows = std::move(rows);
  source.headline = headline;
  source.state = report::ReadLogState(*context_.globals.LogEngineGl->Database());
  print_.SaveRecord(this, source);
}

void frmMDIMain::ShowBackup() {
  // The dialog would promise copies that are never made.
  if (dao::IsServerLink(context_.globals.strDataFileGl)) {
    context_.services.Messages().ShowText(
        core::EngineErrorText(context_.services.texts, dao::ErrorNumber::kServersOwn, {}),
        core::MessageIcon::kInformation);
    return;
  }
  PropertiesHost host;
  host.closeLog = [this] { return program_.CloseForMaintenance(); };
  host.reopenLog = [this] {
    program_.ReopenAfterMaintenance();
    if (results_) results_->ReloadGrid();
  };
  frmBackup(this, context_.globals, context_.services, context_.shortDate, std::move(host)).exec();
  RefreshCommands();
}

void frmMDIMain::ScheduleBackup() {
  timBackup_.setObjectName("timBackup");
  timBackup_.setInterval(kMillisecondsUntilBackup);
  connect(&timBackup_, &QTimer::timeout, this, &frmMDIMain::BackUpIfDue);
  timBackup_.start();
}

/// Once a day, in a process of its own. What keeps it from being made is said once.
void frmMDIMain::BackUpIfDue() {
  timBackup_.setInterval(kMillisecondsBetweenBackups);
  const backup::Settings settings = backup::LoadSettings(context_.services.ini, context_.globals.IniFileGl);
  if (settings.folder.empty() || unloading_ || program_.IsInspection() || !program_.State().dataFileOpen ||
      start::IsOtherLog(context_.globals) || dao::IsServerLink(context_.globals.strDataFileGl))
    return;
  if (IsBusy()) return timBackup_.start(kMillisecondsUntilBackup);
  const auto tell = [this](core::TextKey key, const core::Placeholders& values) {
    if (!std::exchange(backupTold_, true)) context_.services.Messages().Critical(key, values);
  };
  std::error_code error;
  if (!std::filesystem::is_directory(platform::ToPath(settings.folder), error))
    return tell("BK_VANISHED"_key, {{"strFolder", settings.folder}});
  if (!backup::IsDue(settings, context_.globals.strDataFileGl, context_.services.clock.Now())) return;
  backup_.Start(settings.folder, [tell](bool made, const std::string& said) {
    if (!made) tell("BK_DAILYFAILED"_key, {{"strError", said}});
  });
}

}  // namespace varnlog::app
