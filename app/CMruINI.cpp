#include "app/CMruINI.h"

#include <algorithm>

#include "platform/CodePage.h"
#include "platform/Files.h"

namespace varnlog::app {

namespace {

constexpr std::size_t kMostCharacters = 255;

bool SamePath(std::string_view a, std::string_view b) {
  return platform::UpperCase(a) == platform::UpperCase(b);
}

bool CanBeKept(std::string_view path) {
  return !path.empty() && platform::CharacterCount(path) <= kMostCharacters &&
         path.find_first_of(std::string_view("\r\n\0", 3)) == path.npos;
}

}  // namespace

CMruINI::CMruINI(core::SettingsStore& settings)
    : settings_(settings), iniFile_(platform::ExecutableName() + ".ini") {}

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
  std::vector<MruEntry> entries;
  if (CanBeKept(path)) entries.push_back({{}, std::string(path), std::string(tag)});
  for (MruEntry& stored : Read()) {
    const auto isStored = [&stored](const MruEntry& entry) { return SamePath(entry.path, stored.path); };
    if (std::none_of(entries.begin(), entries.end(), isStored)) entries.push_back(std::move(stored));
  }
  entries.resize(std::min(entries.size(), static_cast<std::size_t>(std::max(maxItems_, 0))));
  Write(entries);
  Show(std::move(entries));
}

void CMruINI::Write(const std::vector<MruEntry>& entries) {
  for (int position = 1; position <= maxItems_; ++position) {
    const auto index = static_cast<std::size_t>(position) - 1;
    const std::string number = std::to_string(position);
    // Positions behind the list's end are emptied: what an older list left there would be read again.
    const bool isUsed = index < entries.size();
    WriteValue(prefix_ + number, isUsed ? entries[index].path : std::string());
    if (!tagPrefix_.empty()) WriteValue(tagPrefix_ + number, isUsed ? entries[index].tag : std::string());
  }
}

void CMruINI::WriteValue(const std::string& key, const std::string& value) {
  if (value.empty() && settings_.ReadString(section_, key, iniFile_).empty()) return;
  settings_.WriteString(section_, key, value, iniFile_);
}

}  // namespace varnlog::app
