#include "logview/CTDBGColumnsINI.h"

#include "logview/LeadingNumber.h"

namespace varnlog::logview {

namespace {

/// The '=' is part of it, so that column 1 does not find the entry of column 11.
std::string EntryOf(int column) {
  return "W" + std::to_string(column) + "=";
}

}  // namespace

bool CTDBGColumnsINI::SaveColumns() {
  if (grid_ == nullptr) return true;
  std::string widths;
  for (int column = 0; column < grid_->ColumnCount(); ++column) {
    widths += EntryOf(column) + std::to_string(grid_->Width(column)) + ";";
  }
  settings_.WriteString(section_, keyName_, widths, iniFile_);
  return true;
}

void CTDBGColumnsINI::RestoreColumns() {
  if (grid_ == nullptr) return;
  const std::string widths = settings_.ReadString(section_, keyName_, iniFile_);
  for (int column = 0; column < grid_->ColumnCount(); ++column) {
    const std::string entry = EntryOf(column);
    const auto at = widths.find(entry);
    if (at == std::string::npos) continue;
    const auto width = LeadingNumber(std::string_view(widths).substr(at + entry.size()), kWidest);
    if (width) grid_->SetWidth(column, *width);
  }
}

}  // namespace varnlog::logview
