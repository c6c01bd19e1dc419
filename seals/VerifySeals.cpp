#include "seals/VerifySeals.h"

#include <algorithm>

#include "platform/Sha256.h"
#include "seals/Canonical.h"
#include "seals/SealedFields.h"

namespace varnlog::seals {

namespace {

// Among SealFields().
enum At : std::size_t {
  kNumber = 0,
  kKind = 1,
  kTime = 2,
  kFirstRow = 9,
  kLastRow = 10,
  kRows = 11,
  kFirstHistory = 12,
  kLastHistory = 13,
  kRowDigest = 15,
  kHistoryDigest = 16,
  kDigest = 17,
  kMarks = 18,
};

// Of SealLine(), of what stands in the table, whatever that is.
std::string StoredDigest(std::string_view previousDigest, const std::vector<dao::CellView>& seal) {
  platform::Sha256 digest;
  std::string line;
  AppendText(line, previousDigest);
  for (std::size_t i = 0; i < seal.size(); ++i)
    if (i != kDigest) DigestValue(line, digest, seal[i]);
  line += '\n';
  digest.Add(line);
  return digest.Hex();
}

// A number of an entry that can be counted on from, whatever stands in the table.
std::int64_t EntryNumber(const dao::CellView& value) {
  return std::clamp<std::int64_t>(NumberOf(value), 0, SealWalk::kAll - 1);
}

}  // namespace

SealWalk::SealWalk(dao::Database& log, std::int64_t after, const Findings& findings, std::int64_t mostEntries)
    : log_(log),
      after_(after),
      findings_(findings),
      mostEntries_(mostEntries),
      head_{0, std::string(kNoDigest)} {}

void SealWalk::Run() {
  const bool hasBase = after_ > 0;
  const auto seals = log_.Scan(kSeals, SealFields(), {.first = hasBase ? after_ : 1});
  bool hasSeal = seals->Next();
  if (hasSeal && hasBase) {
    TakeBase(seals->Values());
    hasSeal = seals->Next();
  }
  history_ = log_.Scan(kHistory, HistoryFields(), {.first = lastEntry_ + 1});
  hasEntry_ = history_->Next();
  for (; hasSeal; hasSeal = seals->Next()) TakeSeal(seals->Values());
  for (; hasEntry_; hasEntry_ = history_->Next()) {
    const auto& entry = history_->Values();
    ++entries_;
    findings_.Add({Fault::kEntryUnsealed, NumberOf(entry[0]), NumberOf(entry[1]), {}});
  }
}

void SealWalk::TakeBase(const Values& seal) {
  head_ = {NumberOf(seal[kNumber]), TextOf(seal[kDigest])};
  lastEntry_ = EntryNumber(seal[kLastHistory]);
}

void SealWalk::TakeSeal(const Values& seal) {
  ++count_;
  CheckLine(seal);
  TakeNotes(seal);
  TakeRange(seal);
  CheckEntries(seal);
  head_ = {NumberOf(seal[kNumber]), TextOf(seal[kDigest])};
}

// Behind a seal that is missing the next one cannot be checked against it.
void SealWalk::CheckLine(const Values& seal) {
  const std::int64_t number = NumberOf(seal[kNumber]);
  if (number != head_.number + 1) {
    findings_.Add({Fault::kSealDeleted, head_.number + 1, 0, {}});
    SkipEntries(EntryNumber(seal[kFirstHistory]) - 1);
    // A repair knows which one it followed.
    if (seal[kKind].text != NameOf(SealKind::kRepair)) return;
  }
  if (StoredDigest(head_.digest, seal) != seal[kDigest].text)
    findings_.Add({Fault::kSealChanged, number, 0, {}});
}

// Those of a seal that is missing.
void SealWalk::SkipEntries(std::int64_t last) {
  for (; hasEntry_ && NumberOf(history_->Values()[0]) <= last; hasEntry_ = history_->Next()) ++entries_;
  lastEntry_ = std::max(lastEntry_, last);
}

void SealWalk::PassOver(std::int64_t last) {
  history_ = log_.Scan(kHistory, HistoryFields(), {.first = last + 1});
  hasEntry_ = history_->Next();
  lastEntry_ = last;
}

void SealWalk::TakeNotes(const Values& seal) {
  const auto time = platform::DateTime::FromIso(seal[kTime].text).value_or(platform::DateTime());
  const std::int64_t number = NumberOf(seal[kNumber]);
  if (time < time_) notes_.push_back({Note::What::kClockSetBack, number});
  time_ = time;
  if (seal[kKind].text == NameOf(SealKind::kRepair)) notes_.push_back({Note::What::kRepaired, number});
  if (number == 1 || seal[kKind].text != NameOf(SealKind::kTakeover)) return;
  const bool isEmpty = NumberOf(seal[kRows]) == 0 && seal[kHistoryDigest].text.empty();
  notes_.push_back({isEmpty ? Note::What::kWentOn : Note::What::kFoundUnsealed, number});
}

void SealWalk::TakeRange(const Values& seal) {
  if (seal[kKind].text == NameOf(SealKind::kRepair)) return;
  RowRange range{NumberOf(seal[kNumber]), NumberOf(seal[kFirstRow]), NumberOf(seal[kLastRow]),
                 NumberOf(seal[kRows]),   TextOf(seal[kRowDigest]),  0};
  if (range.rows != 0 || !range.digest.empty()) ranges_.push_back(std::move(range));
}

void SealWalk::ReportMissing(std::int64_t from, std::int64_t to) {
  const auto most = static_cast<std::int64_t>(Verification::kMostFindings);
  for (std::int64_t number = from; number < std::min(to, from + most); ++number)
    findings_.Add({Fault::kEntryDeleted, number, 0, {}});
}

void SealWalk::CheckEntries(const Values& seal) {
  const std::int64_t last = EntryNumber(seal[kLastHistory]);
  if (last - lastEntry_ > mostEntries_) return PassOver(last);
  LineSeal lines;
  std::vector<Entry> entries;
  bool isComplete = true;
  std::int64_t expected = lastEntry_ + 1;
  for (; hasEntry_ && NumberOf(history_->Values()[0]) <= last; hasEntry_ = history_->Next()) {
    const Entry entry{NumberOf(history_->Values()[0]), NumberOf(history_->Values()[1])};
    isComplete = isComplete && entry.number == expected;
    ReportMissing(expected, entry.number);
    expected = entry.number + 1;
    lines.Add(history_->Values());
    entries.push_back(entry);
  }
  isComplete = isComplete && expected > last;
  ReportMissing(expected, last + 1);
  lastEntry_ = std::max(lastEntry_, last);
  entries_ += lines.Count();
  if (isComplete && lines.Digest() != seal[kHistoryDigest].text) FindChangedEntry(seal, lines, entries);
}

// The marks of the entries stand behind those of the exposures.
void SealWalk::FindChangedEntry(const Values& seal, LineSeal& lines, const std::vector<Entry>& entries) {
  const std::string_view all = seal[kMarks].text;
  const std::size_t wanted = entries.size() * kMarkLength;
  const std::string_view marks = all.substr(all.size() - std::min(wanted, all.size()));
  bool isFound = false;
  for (std::size_t i = 0; i < entries.size() && marks.size() == wanted; ++i) {
    const std::size_t at = i * kMarkLength;
    if (marks.substr(at, kMarkLength) == std::string_view(lines.Marks()).substr(at, kMarkLength)) continue;
    findings_.Add({Fault::kEntryChanged, entries[i].number, entries[i].exposure, {}});
    isFound = true;
  }
  if (!isFound) findings_.Add({Fault::kSealEntries, NumberOf(seal[kNumber]), 0, {}});
}

}  // namespace varnlog::seals
