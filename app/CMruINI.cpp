#include "app/CMruINI.h"

#include <algorithm>

#include "db/dao/Collation.h"

namespace varnlog::app {

namespace {

bool SamePath(std::string_view a, std::string_view b) {
  return dao::FoldCase(a) == dao::FoldCase(b);
}

}  // namespace

std::vector<MruEntry> CMruINI::Read() const {
  std::vector<MruEntry> entries;
  for (int position = 1; position <= maxItems_; ++position) {
    const std::string number = std::to_string(position);
    MruEntry entry;
    entry.path = settings_.ReadString(section_, prefix_ + number, iniFile_);
    if (entry.path.empty()) continue;
    if (!tagPrefix_.empty()) entry.tag = settings_.ReadString(section_, tagPrefix_ + number, iniFile_);
    entries.push_back(std::move(entry));
  }
  return entries;
}

void CMruINI::Show(std::vector<MruEntry> entries) const {
  if (menu_ == nullptr) return;
  int number = 0;
  for (MruEntry& entry : entries) entry.caption = "&" + std::to_string(++number) + ". " + entry.path;
  menu_->ShowEntries(entries);
}

void CMruINI::GetMRUList() {
  Show(Read());
}

void CMruINI::SetMRUList(std::string_view path, std::string_view tag) {
  std::vector<MruEntry> entries = Read();
  std::erase_if(entries, [path](const MruEntry& entry) { return SamePath(entry.path, path); });
  entries.insert(entries.begin(), MruEntry{{}, std::string(path), std::string(tag)});
  entries.resize(std::min(entries.size(), static_cast<std::size_t>(std::max(maxItems_, 0))));
  int position = 0;
  for (const MruEntry& entry : entries) {
    const std::string number = std::to_string(++position);
    settings_.WriteString(section_, prefix_ + number, entry.path, iniFile_);
    if (!tagPrefix_.empty()) settings_.WriteString(section_, tagPrefix_ + number, entry.tag, iniFile_);
  }
  Show(std::move(entries));
}

}  // namespace varnlog::app
