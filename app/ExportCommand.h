#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QWidget>

#include "core/Messages.h"
#include "core/SettingsStore.h"
#include "db/dao/DBEngine.h"
#include "intake/CodeMappings.h"
#include "platform/Clock.h"
#include "platform/ShortDate.h"

namespace varnlog::app {

/// What the log view shows: its rows in their order, its columns from left to right, and what that is called.
struct ShownRows {
  std::unique_ptr<dao::Recordset> rows;
  std::vector<int> columns;
  std::string headline;
};

/// What exporting works with.
struct ExportContext {
  const core::TextLookup& texts;
  core::UserDialog& user;
  const platform::Clock& clock;
  const intake::ToothScheme& scheme;
  const platform::ShortDate& shortDate;
  core::SettingsStore& ini;
  const std::string& iniFile;
  const std::string& site;  // the practice
  dao::Database& log;
};

/// Asks for a file and writes to it what is shown, in the form that the file's ending names. Errors have been
/// shown to the user when it returns.
void ExportShown(QWidget* parent, const ExportContext& context, const ShownRows& shown);

}  // namespace varnlog::app
