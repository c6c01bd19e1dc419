#include "intake/IntakeSources.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "intake/ExchangeRemoval.h"

namespace varnlog::intake {

using platform::File;

namespace {

constexpr std::int64_t kAllRecords = std::numeric_limits<std::int64_t>::max();

/// A folder of that name counts: opening it fails and is reported.
bool IsThere(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

}  // namespace

IntakeSources::Source::Source(CopySection::Source from, std::filesystem::path file, std::string_view language)
    : kind(from), path(std::move(file)), tokens(platform::CodePage::Oem(language)) {}

IntakeSources::IntakeSources(const std::filesystem::path& exchange, const std::filesystem::path& logFile,
                             std::string_view language, RunOptions options)
    : exchange_(ExchangeLocation(exchange)),
      options_(std::move(options)),
      language_(language),
      copy_(logFile) {}

bool IntakeSources::AnythingThere() const {
  return IsThere(exchange_) || ShiftJournal(exchange_).Exists() || copy_.Exists() ||
         std::ranges::any_of(ListTakenFiles(exchange_), &TakenFile::IsPending);
}

void IntakeSources::Sweep() const {
  SweepTakenFiles(exchange_, options_.grace);
}

bool IntakeSources::IsPending(const std::function<RunId()>& committed) const {
  if (platform::FileSize(exchange_).value_or(0) > 0) return true;
  if (std::ranges::any_of(ListTakenFiles(exchange_), &TakenFile::IsPending)) return true;
  return copy_.Exists() && copy_.PeekId() != committed();
}

IntakeSources::Opened IntakeSources::Open(const RunId& committed) {
  sources_.clear();
  if (!ExchangeRemoval(exchange_, options_).Recover()) return Opened::kCannotOpen;
  Sweep();
  takenFiles_ = ListTakenFiles(exchange_);
  const Opened copy = OpenCopy(committed);
  if (copy != Opened::kReady) return copy;
  for (const TakenFile& taken : takenFiles_) {
    if (taken.IsPending() && !OpenTaken(taken)) return Opened::kCannotRead;
  }
  return IsThere(exchange_) ? OpenExchange() : Opened::kReady;
}

IntakeSources::Opened IntakeSources::OpenCopy(const RunId& committed) {
  copy_.Load();
  switch (copy_.GetState()) {
    case IntakeCopy::State::kNone:
      return Opened::kReady;
    case IntakeCopy::State::kUnreadable:
      return Opened::kCannotRead;
    case IntakeCopy::State::kDamaged:
      PutAway(copy_.Path());
      return Opened::kReady;
    case IntakeCopy::State::kSound:
      break;
  }
  // The run that made the copy reached its end and was interrupted just before deleting it.
  if (copy_.Id() == committed) return copy_.Delete() ? Opened::kReady : Opened::kCannotRead;
  for (const CopySection& section : copy_.Sections()) {
    if (!IsStillThere(section) && !Carry(section)) return Opened::kCannotRead;
  }
  return Opened::kReady;
}

/// The same bytes in the exchange file are taken for the ones that the copy was made of. Should they be
/// others that happen to be equal, then taking them once gives the same log as taking them twice.
bool IntakeSources::IsStillThere(const CopySection& section) const {
  switch (section.source) {
    case CopySection::Source::kCarried:
      return false;
    case CopySection::Source::kTaken:
      return std::ranges::any_of(takenFiles_, [&section](const TakenFile& taken) {
        return taken.stamp == section.stamp && taken.from <= section.offset;
      });
    case CopySection::Source::kExchange:
      break;
  }
  std::error_code error;
  const File exchange = File::Open(exchange_, File::Mode::kRead, error);
  return !error && SameBytes({&exchange, section.offset, section.bytes.length}, section.bytes);
}

bool IntakeSources::Carry(const CopySection& section) {
  Source source(CopySection::Source::kCarried, copy_.Path(), language_);
  source.carried = section.bytes;
  source.begin = section.bytes.offset;
  source.reached = section.bytes.offset + section.bytes.length;
  if (!source.tokens.OpenPiece(source.path, source.begin, source.reached)) return false;
  if (source.tokens.ReadMailslot(kAllRecords) == 0) return false;
  sources_.push_back(std::move(source));
  return true;
}

bool IntakeSources::OpenTaken(const TakenFile& taken) {
  Source source(CopySection::Source::kTaken, taken.path, language_);
  source.taken = taken;
  source.begin = taken.from;
  if (!source.tokens.OpenPiece(taken.path, taken.from)) return false;
  source.reached = static_cast<std::uint64_t>(source.tokens.ReadMailslot(kAllRecords));
  if (source.tokens.LastErr() == kDeviceError) return false;
  if (source.reached > source.begin) {
    sources_.push_back(std::move(source));
    return true;
  }
  // What is missing may still be on its way, unless nobody can write it any more.
  source.tokens.CloseMailslot();
  if (IsOutOfReach(taken, options_.grace)) PutAway(taken.path);
  return true;
}

IntakeSources::Opened IntakeSources::OpenExchange() {
  Source source(CopySection::Source::kExchange, exchange_, language_);
  if (!source.tokens.OpenMailslot(platform::FromPath(exchange_))) return Opened::kCannotOpen;
  source.reached = static_cast<std::uint64_t>(source.tokens.ReadMailslot(kAllRecords));
  if (source.tokens.LastErr() != kNoError) return Opened::kCannotRead;
  sources_.push_back(std::move(source));
  return Opened::kReady;
}

void IntakeSources::PutAway(const std::filesystem::path& path) {
  foundDamage_ = true;
  KeepAsDamaged(path);
}

std::int64_t IntakeSources::TokenCount() const {
  return std::accumulate(sources_.begin(), sources_.end(), std::int64_t{0},
                         [](std::int64_t sum, const Source& source) { return sum + source.tokens.Count(); });
}

bool IntakeSources::ForEachToken(const std::function<bool(CToken&)>& take) {
  CToken token;
  for (Source& source : sources_) {
    for (std::int64_t index = 0; index < source.tokens.Count(); ++index) {
      if (!source.tokens.Item(index, token)) return false;
      if (!take(token)) return true;
    }
  }
  return true;
}

bool IntakeSources::HasRead() const {
  return std::ranges::any_of(sources_, [](const Source& source) { return source.reached > source.begin; });
}

bool IntakeSources::Secure(const RunId& id) {
  std::vector<File> files;
  files.reserve(sources_.size());
  std::vector<CopySection> sections;
  for (Source& source : sources_) {
    source.tokens.CloseMailslot();
    CopySection section{source.kind, source.taken.stamp, source.begin, source.carried};
    if (source.kind != CopySection::Source::kCarried) {
      std::error_code error;
      files.push_back(File::Open(source.path, File::Mode::kRead, error));
      if (error) return false;
      section.bytes = {&files.back(), source.begin, source.reached - source.begin};
    }
    sections.push_back(section);
  }
  return !copy_.Replace(id, sections, options_);
}

RunId IntakeSources::CopiedRun() const {
  return copy_.GetState() == IntakeCopy::State::kSound ? copy_.Id() : RunId();
}

bool IntakeSources::RemoveFrom(const Source& source) {
  switch (source.kind) {
    case CopySection::Source::kCarried:
      return true;
    case CopySection::Source::kTaken:
      if (!AccountFor(exchange_, source.taken, source.reached)) return false;
      options_.Reached(RunStep::kMovedAside);
      return true;
    case CopySection::Source::kExchange:
      break;
  }
  return ExchangeRemoval(exchange_, options_).Remove(source.reached) == kNoError;
}

bool IntakeSources::RemoveRead() {
  // What this run itself holds open can never be had alone.
  for (Source& source : sources_) source.tokens.CloseMailslot();
  const bool done =
      std::ranges::all_of(sources_, [this](const Source& source) { return RemoveFrom(source); });
  if (done) options_.Reached(RunStep::kRemoved);
  return done;
}

}  // namespace varnlog::intake
