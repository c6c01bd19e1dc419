#include "tests/faults/Disk.h"

#include <algorithm>
#include <random>

namespace varnlog::faults {

namespace {

constexpr std::size_t kSector = 512;

bool Chance(std::mt19937_64& random, unsigned ofTen) {
  return random() % 10 < ofTen;
}

}  // namespace

Disk::Disk(const std::filesystem::path& folder, const Files& beginning, Flushing flushing)
    : folder_(folder.string()), flushing_(flushing) {
  for (const auto& [name, bytes] : beginning) {
    names_[name] = files_.size();
    files_.push_back({bytes, {}});
  }
}

std::string Disk::NameOf(const std::string& path) const {
  return path.starts_with(folder_ + "/") ? path.substr(folder_.size() + 1) : "";
}

std::optional<std::size_t> Disk::Holder(const std::string& name) const {
  for (auto change = since_.rbegin(); change != since_.rend(); ++change) {
    for (const auto& [changed, holder] : *change) {
      if (changed == name) return holder;
    }
  }
  const auto found = names_.find(name);
  return found == names_.end() ? std::nullopt : std::optional(found->second);
}

Disk::File& Disk::Open(const Step& step) {
  return files_[byNumber_.at(step.file)];
}

void Disk::Do(const Step& step) {
  if (step.call == Call::kSync && step.path == folder_) return Flush(step);
  if (NameOf(step.path).empty()) return;
  switch (step.call) {
    case Call::kOpen:
    case Call::kEmpty:
      if (const auto holder = Holder(NameOf(step.path))) byNumber_[step.file] = *holder;
      if (step.call == Call::kEmpty) Open(step).since.push_back({0, "", true});
      return;
    case Call::kWrite:
      return Open(step).since.push_back({step.offset, step.bytes, false});
    case Call::kTruncate:
      return Open(step).since.push_back({step.offset, "", true});
    case Call::kSync:
      return Flush(step);
    case Call::kArrive:
      return Arrive(step);
    default:
      return DoNames(step);
  }
}

void Disk::DoNames(const Step& step) {
  const std::string name = NameOf(step.path);
  if (step.call == Call::kCreate) {
    byNumber_[step.file] = files_.size();
    since_.push_back({{name, files_.size()}});
    files_.emplace_back();
  } else if (step.call == Call::kRename) {
    since_.push_back({{NameOf(step.newPath), Holder(name)}, {name, std::nullopt}});
  } else if (step.call == Call::kLink) {
    since_.push_back({{NameOf(step.newPath), Holder(name)}});
  } else if (step.call == Call::kRemove) {
    since_.push_back({{name, std::nullopt}});
  }
}

void Disk::Flush(const Step& step) {
  if (flushing_ == Flushing::kIsIgnored) return;
  if (step.path != folder_) {
    File& file = Open(step);
    for (const Change& change : file.since) Apply(change, file.flushed);
    file.since.clear();
    return;
  }
  for (const NameChange& change : since_) {
    for (const auto& [name, holder] : change) {
      if (holder) {
        names_[name] = *holder;
      } else {
        names_.erase(name);
      }
    }
  }
  since_.clear();
}

/// What the suite appends is on the disk: it is not its program that is tried here.
void Disk::Arrive(const Step& step) {
  const std::string name = NameOf(step.path);
  const auto holder = Holder(name);
  if (!holder) {
    names_[name] = files_.size();
    files_.push_back({step.bytes, {}});
    return;
  }
  files_[*holder].flushed += step.bytes;
}

void Disk::Apply(const Change& change, std::string& content) {
  if (change.isLength) {
    content.resize(change.offset);
    return;
  }
  content.resize(std::max(content.size(), change.offset + change.bytes.size()));
  content.replace(change.offset, change.bytes.size(), change.bytes);
}

std::string Disk::Content(const File& file, const PowerCut& cut, std::uint64_t seed) {
  std::string content = file.flushed;
  if (cut.variant == PowerCut::kNothing) return content;
  std::mt19937_64 random(seed);
  const bool isMixed = cut.variant >= PowerCut::kFirstMixed;
  for (Change change : file.since) {
    if (isMixed && Chance(random, 4)) continue;
    const bool isZeros = cut.variant == PowerCut::kNamesOnly || (isMixed && Chance(random, 2));
    // Room that was given to the file but never written to; old bytes under it stay.
    if (isZeros && change.offset + change.bytes.size() > content.size())
      change.bytes.assign(change.bytes.size(), '\0');
    if (isMixed && Chance(random, 3)) change.bytes.resize(change.bytes.size() / kSector / 2 * kSector);
    Apply(change, content);
  }
  return content;
}

Files Disk::After(const PowerCut& cut) const {
  std::mt19937_64 random(cut.after * 1000 + static_cast<std::uint64_t>(cut.variant));
  std::map<std::string, std::size_t> names = names_;
  const bool isMixed = cut.variant >= PowerCut::kFirstMixed;
  for (const NameChange& change : since_) {
    if (cut.variant == PowerCut::kNothing || cut.variant == PowerCut::kContentOnly) break;
    if (isMixed && Chance(random, 4)) continue;
    for (const auto& [name, holder] : change) {
      if (holder) {
        names[name] = *holder;
      } else {
        names.erase(name);
      }
    }
  }
  Files files;
  for (const auto& [name, holder] : names) files[name] = Content(files_[holder], cut, random());
  return files;
}

std::vector<PowerCut> EveryPowerCut(const std::vector<Step>& run, int variants) {
  std::vector<PowerCut> cuts;
  for (const Step& step : run) {
    if (!Changes(step.call)) continue;
    for (int variant = 0; variant < variants; ++variant) cuts.push_back({step.number, variant});
  }
  return cuts;
}

}  // namespace varnlog::faults
