#include "intake/IntakeSources.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <numeric>
#include <utility>

#include "intake/ReadAhead.h"

namespace varnlog::intake {

using platform::File;

namespace {

constexpr std::int64_t kAllRecords = std::numeric_limits<std::int64_t>::max();

}  // namespace

IntakeSources::Source::Source(CopySection::Source from, std::filesystem::path file, std::string_view language)
    : kind(from), path(std::move(file)), tokens(platform::CodePage::Oem(language)) {}

IntakeSources::IntakeSources(const std::filesystem::path& exchange, const std::filesystem::path& logFile,
                             std::string_view language, RunOptions options)
    : exchange_(exchange),
      logFile_(logFile),
      options_(std::move(options)),
      language_(language),
      copy_(logFile) {}

bool IntakeSources::AnythingThere() const {
  std::error_code error;
  const std::vector<TakenFile> taken = ListTakenFiles(exchange_, error);
  return error || platform::MayExist(exchange_) || ShiftJournal(exchange_).Exists() || copy_.Exists() ||
         std::ranges::any_of(taken, &TakenFile::IsPending);
}

/// As long as there is a copy, what was moved aside stays: should the copy be damaged, the bytes are there.
void IntakeSources::Sweep() const {
  for (const std::filesystem::path& path : {copy_.Path(), ShiftJournal(exchange_).Path()}) {
    platform::SweepUnfinished(path);
    platform::SweepFormer(std::filesystem::path(path) += ".tmp");
  }
  platform::SweepUnfinished(RestPath(exchange_));
  if (!copy_.Exists()) SweepTakenFiles(exchange_, options_.grace);
}

bool IntakeSources::IsPending(const std::function<RunId()>& committed) const {
  const std::uint64_t size = platform::FileSize(exchange_).value_or(0);
  if (size > 0 && size > ExchangeBegin() && !IsBeingWritten()) return true;
  std::error_code ignored;
  if (std::ranges::any_of(ListTakenFiles(exchange_, ignored), &TakenFile::IsPending)) return true;
  if (ShiftJournal(exchange_).Exists()) return true;
  return copy_.Exists() && copy_.PeekId() != committed();
}

/// In either direction: the clock of a server may be ahead.
bool IntakeSources::HasChangedJustNow() const {
  std::error_code error;
  const auto changed = std::filesystem::last_write_time(exchange_, error);
  return !error && std::chrono::abs(std::filesystem::file_time_type::clock::now() - changed) < options_.quiet;
}

bool IntakeSources::IsBeingWritten() const {
  const std::uint64_t begin = ExchangeBegin();
  // No record is longer than this.
  if (platform::FileSize(exchange_).value_or(0) > begin + std::numeric_limits<std::int16_t>::max())
    return false;
  CPAXTOTokens tokens(platform::CodePage::Oem(language_));
  if (begin > 0) {
    return tokens.OpenPiece(exchange_, begin) &&
           static_cast<std::uint64_t>(tokens.ReadMailslot(kAllRecords)) == begin;
  }
  if (!tokens.OpenMailslot(platform::FromPath(exchange_))) return false;
  return tokens.ReadMailslot(kAllRecords) == 0 && tokens.EndsInsideRecord() && HasChangedJustNow();
}

void IntakeSources::AwaitWhatIsBeingWritten() const {
  const auto end = std::chrono::steady_clock::now() + options_.patience;
  while (IsBeingWritten() && std::chrono::steady_clock::now() < end) options_.Wait();
}

bool IntakeSources::ListTaken() {
  std::error_code error;
  takenFiles_ = ListTakenFiles(exchange_, error);
  return !error;
}

IntakeSources::Opened IntakeSources::Open(const RunId& committed) {
  sources_.clear();
  made_.reset();
  std::error_code error;
  if (platform::IsLink(exchange_)) return Opened::kIsLink;
  const ShiftJournal journal(exchange_);
  if (journal.IsDamaged() && !SettleDamagedJournal(journal.Path())) return Opened::kCannotRead;
  if (!ExchangeRemoval(exchange_, options_).Recover()) return Opened::kCannotOpen;
  if (!ListTaken()) return Opened::kCannotRead;
  const Opened copy = OpenCopy(committed);
  if (copy != Opened::kReady) return copy;
  Sweep();
  if (!ListTaken()) return Opened::kCannotRead;
  for (const TakenFile& taken : takenFiles_) {
    if (taken.IsPending() && !OpenTaken(taken, true)) return Opened::kCannotRead;
  }
  return platform::MayExist(exchange_) ? OpenExchange() : Opened::kReady;
}

/// The records that stand at this place as they stood there when they were applied.
std::vector<AppliedBytes> IntakeSources::AppliedAt(const File& file, std::uint64_t origin) const {
  std::vector<AppliedBytes> found;
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  for (const AppliedBytes& bytes : applied_) {
    const bool fits = !error && size >= origin + bytes.length;
    if (fits && DigestOf({&file, origin, bytes.length}) == bytes.digest) found.push_back(bytes);
  }
  return found;
}

void IntakeSources::FindApplied(Source& source) const {
  source.applied = AppliedAt(source.tokens.OpenFile(), source.origin);
  source.begin = source.origin;
  for (const AppliedBytes& bytes : source.applied)
    source.begin = std::max(source.begin, source.origin + bytes.length);
}

std::uint64_t IntakeSources::ExchangeBegin() const {
  if (applied_.empty()) return 0;
  std::error_code error;
  const File file = File::Open(exchange_, File::Mode::kRead, error, File::Links::kRefuse);
  if (error) return 0;
  std::uint64_t begin = 0;
  for (const AppliedBytes& bytes : AppliedAt(file, 0)) begin = std::max(begin, bytes.length);
  return begin;
}

void IntakeSources::OpenToLook() {
  sources_.clear();
  std::error_code error;
  if (ShiftJournal(exchange_).Exists() || platform::IsLink(exchange_) || !ListTaken()) return;
  for (const TakenFile& taken : takenFiles_) {
    if (taken.IsPending()) static_cast<void>(OpenTaken(taken, false));
  }
  if (platform::MayExist(exchange_)) static_cast<void>(OpenExchange());
}

/// What the journal said can be seen from the safe copy of the same run, if that is whole.
bool IntakeSources::SettleDamagedJournal(const std::filesystem::path& journal) {
  using Realigned = ExchangeRemoval::Realigned;
  copy_.Load();
  Realigned realigned =
      copy_.GetState() == IntakeCopy::State::kUnreadable ? Realigned::kFailed : Realigned::kNotNeeded;
  for (const CopySection& section : copy_.Sections()) {
    if (section.source == CopySection::Source::kExchange && realigned == Realigned::kNotNeeded)
      realigned = ExchangeRemoval(exchange_, options_).Realign(section.bytes);
  }
  if (realigned == Realigned::kNotNeeded) return PutAway(journal);
  return realigned == Realigned::kDone;
}

IntakeSources::Opened IntakeSources::OpenCopy(const RunId& committed) {
  copy_.Load();
  switch (copy_.GetState()) {
    case IntakeCopy::State::kNone:
      return Opened::kReady;
    case IntakeCopy::State::kUnreadable:
      return Opened::kCannotRead;
    case IntakeCopy::State::kDamaged:
      return SetDamagedCopyAside(committed);
    case IntakeCopy::State::kSound:
      break;
  }
  // The run that made the copy reached its end and was interrupted just before deleting it.
  if (copy_.Id() == committed) return copy_.Delete() ? Opened::kReady : Opened::kCannotRead;
  for (const CopySection& section : copy_.Sections()) {
    const std::optional<bool> isThere = IsStillThere(section);
    if (!isThere || (!*isThere && !Carry(section))) return Opened::kCannotRead;
  }
  return Opened::kReady;
}

/// What the copy held may have been removed already, and then it is left only in what was moved aside: that
/// is read once more from its beginning. Exposures that are in the log are recognised.
IntakeSources::Opened IntakeSources::SetDamagedCopyAside(const RunId& committed) {
  if (!committed.empty() && copy_.PeekId() == committed) {
    return copy_.Delete() ? Opened::kReady : Opened::kCannotRead;
  }
  for (const TakenFile& taken : takenFiles_) {
    if (!AccountFor(exchange_, taken, 0)) return Opened::kCannotRead;
  }
  return PutAway(copy_.Path()) ? Opened::kReady : Opened::kCannotRead;
}

std::optional<bool> IntakeSources::Holds(const std::filesystem::path& path,
                                         const CopySection& section) const {
  std::error_code error;
  const File file = File::Open(path, File::Mode::kRead, error, File::Links::kRefuse);
  if (error == std::errc::no_such_file_or_directory) return false;
  if (error) return std::nullopt;
  return SameBytes(section.bytes, {&file, section.offset, section.bytes.length});
}

/// The same bytes in the exchange file, or in one that was moved aside and not accounted for any more, are
/// taken for the ones that the copy was made of. Should they be others that happen to be equal, then taking
/// them once gives the same log as taking them twice.
std::optional<bool> IntakeSources::IsStillThere(const CopySection& section) const {
  if (section.source == CopySection::Source::kCarried) return false;
  const bool isTaken = section.source == CopySection::Source::kTaken;
  if (!isTaken) {
    const std::optional<bool> holds = Holds(exchange_, section);
    if (!holds || *holds) return holds;
  }
  for (const TakenFile& taken : takenFiles_) {
    if (taken.from > section.offset) continue;
    if (isTaken && taken.stamp == section.stamp) return true;
    if (isTaken) continue;
    const std::optional<bool> holds = Holds(taken.path, section);
    if (!holds || *holds) return holds;
  }
  return false;
}

bool IntakeSources::Carry(const CopySection& section) {
  Source source(CopySection::Source::kCarried, copy_.Path(), language_);
  source.carried = section.bytes;
  source.origin = section.bytes.offset;
  source.begin = section.bytes.offset;
  source.reached = section.bytes.offset + section.bytes.length;
  if (!source.tokens.OpenPiece(source.path, source.begin, source.reached)) return false;
  if (source.tokens.ReadMailslot(kAllRecords) == 0) return false;
  sources_.push_back(std::move(source));
  return true;
}

bool IntakeSources::OpenTaken(const TakenFile& taken, bool mayPutAway) {
  Source source(CopySection::Source::kTaken, taken.path, language_);
  source.taken = taken;
  source.origin = taken.from;
  if (!source.tokens.OpenPiece(taken.path, taken.from)) return false;
  FindApplied(source);
  if (source.begin > source.origin && !source.tokens.OpenPiece(taken.path, source.begin)) return false;
  source.reached = static_cast<std::uint64_t>(source.tokens.ReadMailslot(kAllRecords));
  if (source.tokens.LastErr() == kDeviceError) return false;
  if (source.reached > source.origin) {
    sources_.push_back(std::move(source));
    return true;
  }
  // What is missing may still be on its way, unless nobody can write it any more.
  source.tokens.CloseMailslot();
  return !mayPutAway || !IsOutOfReach(taken, options_.grace) || PutAway(taken.path);
}

IntakeSources::Opened IntakeSources::OpenExchange() {
  Source source(CopySection::Source::kExchange, exchange_, language_);
  if (!source.tokens.OpenMailslot(platform::FromPath(exchange_))) return Opened::kCannotOpen;
  FindApplied(source);
  if (source.begin > 0 && !source.tokens.OpenPiece(exchange_, source.begin)) return Opened::kCannotOpen;
  source.reached = static_cast<std::uint64_t>(source.tokens.ReadMailslot(kAllRecords));
  if (source.tokens.EndsInsideRecord() && HasChangedJustNow()) return Opened::kReady;
  if (source.tokens.LastErr() != kNoError) return Opened::kCannotRead;
  sources_.push_back(std::move(source));
  return Opened::kReady;
}

bool IntakeSources::PutAway(const std::filesystem::path& path) {
  const auto keptAs = KeepAsDamaged(path);
  if (keptAs) damaged_.push_back({path, *keptAs});
  return keptAs.has_value();
}

std::int64_t IntakeSources::TokenCount() const {
  return std::accumulate(sources_.begin(), sources_.end(), std::int64_t{0},
                         [](std::int64_t sum, const Source& source) { return sum + source.tokens.Count(); });
}

bool IntakeSources::ForEachToken(const std::function<bool(CToken&)>& take, Extent extent,
                                 const std::function<void(std::span<const CToken>)>& expect) {
  for (Source& source : sources_) {
    ReadAhead tokens(source.tokens, extent);
    while (CToken* const token = tokens.Next()) {
      if (expect) expect(tokens.NewBatch());
      if (!take(*token)) return true;
    }
    if (tokens.HasFailed()) return false;
  }
  return true;
}

bool IntakeSources::HasRead() const {
  return std::ranges::any_of(sources_, [](const Source& source) { return source.reached > source.begin; });
}

bool IntakeSources::Secure(const RunId& id) {
  bool secured = id.empty() || MakeCopy(id);
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    Source& source = sources_[i];
    if (secured && source.kind == CopySection::Source::kExchange) secured = NoteWhatWasRead(source, i);
    const FilePiece whole{&source.tokens.OpenFile(), source.origin, source.reached - source.origin};
    const bool isElsewhere = source.kind != CopySection::Source::kCarried;
    if (isElsewhere && (!made_ || source.begin > source.origin)) source.digest = DigestOf(whole).value_or("");
    // What this run itself holds open can never be had alone.
    source.tokens.CloseMailslot();
  }
  return secured;
}

/// From the files that are still open: under their names there may be others by now.
bool IntakeSources::MakeCopy(const RunId& id) {
  std::vector<CopySection> sections;
  platform::Sha256 digest;
  for (const Source& source : sources_) {
    CopySection section{source.kind, source.taken.stamp, source.begin, source.carried};
    if (source.kind != CopySection::Source::kCarried) {
      section.bytes = {&source.tokens.OpenFile(), source.begin, source.reached - source.begin};
    }
    if (!AddToDigest(section.bytes, digest)) return false;
    sections.push_back(section);
  }
  digest_ = digest.Hex();
  const auto letGo = [this] {
    for (Source& source : sources_)
      if (source.kind == CopySection::Source::kCarried) source.tokens.CloseMailslot();
    copy_.LetGo();
  };
  if (copy_.Replace(id, sections, options_, letGo)) return false;
  made_.emplace(logFile_);
  made_->Load();
  if (made_->Id() == id && made_->Sections().size() == sources_.size()) return true;
  made_.reset();
  return false;
}

/// The sum is that of the safe copy as it stands on the disk, if there is one: only what it holds is removed.
bool IntakeSources::NoteWhatWasRead(Source& source, std::size_t section) const {
  const File& file = source.tokens.OpenFile();
  const auto identity = file.Identity();
  const auto sum = SumOf(made_ ? made_->Sections()[section].bytes
                               : FilePiece{&file, source.begin, source.reached - source.begin});
  if (!identity || !sum) return false;
  source.read = {*identity, *sum, source.begin};
  return true;
}

RunId IntakeSources::CopiedRun() const {
  return copy_.GetState() == IntakeCopy::State::kSound ? copy_.Id() : RunId();
}

RunTimeError IntakeSources::RemoveFrom(const Source& source) {
  switch (source.kind) {
    case CopySection::Source::kCarried:
      return kNoError;
    case CopySection::Source::kTaken:
      if (!AccountFor(exchange_, source.taken, source.reached)) return kPathAccess;
      options_.Reached(RunStep::kAccountedFor);
      return kNoError;
    case CopySection::Source::kExchange:
      break;
  }
  return ExchangeRemoval(exchange_, options_).Remove(source.reached, source.read);
}

bool IntakeSources::RemoveRead() {
  for (Source& source : sources_) {
    const RunTimeError error = RemoveFrom(source);
    source.isRemoved = error == kNoError;
    if (!source.isRemoved && error != kPermissionDenied) return false;
  }
  options_.Reached(RunStep::kRemoved);
  return true;
}

std::vector<AppliedBytes> IntakeSources::StillApplied() const {
  std::vector<AppliedBytes> left;
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    const Source& source = sources_[i];
    if (source.isRemoved || source.kind == CopySection::Source::kCarried) continue;
    const auto digest = source.digest.empty() && made_ ? DigestOf(made_->Sections()[i].bytes) : source.digest;
    if (digest && !digest->empty()) left.push_back({source.reached - source.origin, *digest});
  }
  // A file that was emptied by somebody else leaves a note that nobody finds again.
  constexpr std::size_t kMostNoted = 16;
  for (const AppliedBytes& bytes : applied_) {
    const bool isOfTheseFiles = std::ranges::any_of(sources_, [&](const Source& source) {
      return std::ranges::find(source.applied, bytes) != source.applied.end();
    });
    if (left.size() < kMostNoted && !isOfTheseFiles) left.push_back(bytes);
  }
  return left;
}

}  // namespace varnlog::intake
