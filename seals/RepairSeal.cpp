#include "seals/RepairSeal.h"

#include <algorithm>
#include <array>
#include <utility>

#include "db/dao/TableScan.h"
#include "platform/Sha256.h"
#include "seals/Canonical.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "seals/SealTables.h"
#include "seals/SealedFields.h"
#include "seals/Verifier.h"

namespace varnlog::seals {

namespace {

constexpr const char* kEntryNumber = "tHistCulNrPk";
constexpr const char* kSealNumber = "tSealCulNrPk";
constexpr std::size_t kMostNumbers = 4000;  // characters

// The fields whose numbers were lost, in the order of Loss::What.
const std::array<std::string, 3>& LossFields() {
  static const std::array<std::string, 3> kFields = {SealedFields()[0], kEntryNumber, kSealNumber};
  return kFields;
}

void AddLines(dao::Database& log, const char* table, std::span<const std::string> fields, std::int64_t last,
              platform::Sha256& digest) {
  const auto scan = log.Scan(table, fields, {.last = last});
  std::string line;
  while (scan->Next()) {
    line.clear();
    AppendLine(line, scan->Values());
    digest.Add(line);
  }
}

std::string LeftDigest(dao::Database& log, std::int64_t lastHistory, std::int64_t lastSeal) {
  platform::Sha256 digest;
  AddLines(log, kHistory, HistoryFields(), lastHistory, digest);
  AddLines(log, kSeals, SealFields(), lastSeal, digest);
  return digest.Hex();
}

// Numbers that were given out are never given out again.
std::int64_t LastGivenOut(dao::Database& log, const char* table, const char* field,
                          const std::vector<dao::IdRange>& unused) {
  return std::max(log.Greatest(table, field), unused.empty() ? 0 : unused.back().last);
}

void NameLosses(dao::Database& log, std::int64_t seal,
                const std::array<const std::vector<dao::IdRange>*, 3>& losses) {
  const auto rows = log.OpenRecordset(kHistory, dao::RecordsetType::kTable);
  for (std::size_t i = 0; i < losses.size(); ++i) {
    if (losses.at(i)->empty()) continue;
    rows->AddNew();
    rows->Fields("tHistSField").SetText(LossFields().at(i));
    rows->Fields("tHistSOld").SetText(dao::RangesText(*losses.at(i), kMostNumbers));
    rows->Fields("tHistSKind").SetText(NameOf(ChangeKind::kRepair));
    rows->Fields("tHistNSeal").SetNumber(seal);
    rows->Update();
  }
}

void AddRowsAsTheyAre(dao::Database& log, Seal& seal) {
  LineSeal rows;
  const auto scan = log.Scan(kExposures, SealedFields(), {});
  while (scan->Next()) rows.Add(scan->Values());
  AddRows(seal, rows);
}

}  // namespace

void SealRepaired(dao::Database& log, const std::vector<dao::IdRange>& lostExposures,
                  const platform::Author& author, const platform::Clock& clock) {
  if (!HasSeals(log)) return;
  const Head head = ReadHead(log);
  const auto lostEntries = log.UnusedIds(kHistory);
  const auto lostSeals = log.UnusedIds(kSeals);
  const std::int64_t lastEntry = LastGivenOut(log, kHistory, kEntryNumber, lostEntries);
  Seal seal = Ledger(author, clock).NewSeal(SealKind::kRepair);
  seal.number = LastGivenOut(log, kSeals, kSealNumber, lostSeals) + 1;
  if (!Verify(log).IsSound()) {
    seal.exchange = LeftDigest(log, lastEntry, head.number);
    AddRowsAsTheyAre(log, seal);
  }
  NameLosses(log, seal.number, {&lostExposures, &lostEntries, &lostSeals});
  AddHistory(seal, log, lastEntry);
  WriteSeal(log, head.digest, seal);
}

std::optional<RepairBase> ReadRepairBase(dao::Database& log, std::int64_t firstSeal) {
  const std::vector<std::string> fields = {kSealNumber,  "tSealNFirstHist", "tSealNFirstRow", "tSealNLastRow",
                                           "tSealNRows", "tSealSRowDigest", "tSealSExchange", "tSealSKind"};
  std::optional<RepairBase> base;
  const auto scan = log.Scan(kSeals, fields, {.first = firstSeal});
  while (scan->Next()) {
    const auto& seal = scan->Values();
    if (seal[7].text != NameOf(SealKind::kRepair) || seal[6].text.empty()) continue;
    base = RepairBase{NumberOf(seal[0]), NumberOf(seal[1]), NumberOf(seal[2]), NumberOf(seal[3]),
                      NumberOf(seal[4]), TextOf(seal[5]),   TextOf(seal[6])};
  }
  return base;
}

bool AreLeftAsSealed(dao::Database& log, const RepairBase& base) {
  return LeftDigest(log, base.firstHistory - 1, base.seal - 1) == base.leftDigest;
}

namespace {

void AddLosses(dao::Database& log, std::int64_t seal, std::int64_t first, std::int64_t last,
               std::vector<Loss>& losses) {
  const std::vector<std::string> fields = {"tHistSField", "tHistSOld", "tHistSNew"};
  const auto scan = log.Scan(kHistory, fields, {.first = first, .last = last});
  while (scan->Next()) {
    const auto& row = scan->Values();
    const auto field = std::find(LossFields().begin(), LossFields().end(), row[0].text);
    if (field == LossFields().end() || row[2].kind != dao::CellKind::kNull) continue;
    losses.push_back({static_cast<Loss::What>(field - LossFields().begin()), TextOf(row[1]), seal});
  }
}

}  // namespace

std::vector<Loss> ReadLosses(dao::Database& log) {
  std::vector<Loss> losses;
  const std::vector<std::string> fields = {kSealNumber, "tSealSKind", "tSealNFirstHist", "tSealNLastHist"};
  const auto scan = log.Scan(kSeals, fields, {});
  while (scan->Next()) {
    const auto& seal = scan->Values();
    if (seal[1].text == NameOf(SealKind::kRepair))
      AddLosses(log, NumberOf(seal[0]), NumberOf(seal[2]), NumberOf(seal[3]), losses);
  }
  return losses;
}

}  // namespace varnlog::seals
