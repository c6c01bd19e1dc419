#include "seals/Ledger.h"

#include <algorithm>
#include <utility>

#include "db/dao/DBEngine.h"
#include "db/dao/TableScan.h"
#include "seals/Canonical.h"
#include "seals/LogSeals.h"

namespace varnlog::seals {

namespace {

void SetValue(dao::Field& field, const dao::CellView& value) {
  if (value.kind == dao::CellKind::kNull) {
    field.SetNull();
  } else {
    field.SetText(TextOf(value));
  }
}

// What no writer may change, whether or not the log's rules hold for this open file.
void RequireChangeable(std::string_view field) {
  const auto known = SealedFieldAt(field);
  if (known && RuleOf(*known) == FieldRule::kNever)
    throw dao::EngineError(dao::ErrorNumber::kRuleViolated,
                           "Number, birth date, sex and time of an exposure never change.");
}

}  // namespace

/// Looked up once; the imaging suite may change thousands of exposures in one transaction.
struct Ledger::HistoryRows {
  explicit HistoryRows(dao::Database& log)
      : rows(log.OpenRecordset(kHistory, dao::RecordsetType::kTable)),
        exposure(rows->Fields("tXrayCulIntIDPk")),
        field(rows->Fields("tHistSField")),
        before(rows->Fields("tHistSOld")),
        after(rows->Fields("tHistSNew")),
        kind(rows->Fields("tHistSKind")),
        seal(rows->Fields("tHistNSeal")) {}

  std::unique_ptr<dao::Recordset> rows;
  dao::Field& exposure;
  dao::Field& field;
  dao::Field& before;
  dao::Field& after;
  dao::Field& kind;
  dao::Field& seal;
};

Ledger::Ledger(platform::Author author, const platform::Clock& clock)
    : author_(std::move(author)), clock_(clock) {}

Ledger::~Ledger() = default;

Seal Ledger::NewSeal(SealKind kind) const {
  const platform::Instant now = clock_.NowUtc();
  Seal seal;
  seal.kind = NameOf(kind);
  seal.time = now.utc;
  seal.offsetMinutes = now.offsetMinutes;
  seal.account = author_.account;
  seal.fullName = author_.fullName;
  seal.place = author_.workstation;
  seal.program = author_.program;
  seal.run = author_.run;
  return seal;
}

// What others left without a seal is not to be counted among this transaction's own.
void Ledger::Begin(dao::Database& log, std::int64_t lastRowBefore) {
  isOpen_ = true;
  SealedSoFar sealed = ReadSealed(log);
  if (NeedsSeal(log, sealed, lastRowBefore)) {
    SealUnsealed(log, NewSeal(SealKind::kTakeover), lastRowBefore, {});
    sealed = ReadSealed(log);
  }
  head_ = sealed.head;
  lastHistory_ = log.Greatest(kHistory, "tHistCulNrPk");
}

void Ledger::RowAdded(dao::Database& log, std::span<const dao::FieldDef> fields,
                      std::span<const dao::CellView> values) {
  if (rows_.Count() == 0) {
    places_ = PlacesOfSealedFields(fields);
    areInOrder_ = fields.size() == kFieldCount && std::ranges::is_sorted(places_);
    if (!isOpen_) Begin(log, NumberOf(values[places_[0]]) - 1);
  }
  if (areInOrder_) return rows_.Add(values);
  for (std::size_t i = 0; i < kFieldCount; ++i) values_[i] = values[places_[i]];
  rows_.Add(values_);
}

ChangeKind Ledger::KindOf(const dao::FieldDef& field, const dao::CellView& before) const {
  if (purpose_ == SealKind::kIntake) return ChangeKind::kSuite;
  if (purpose_) return ChangeKind::kRepair;
  const auto known = SealedFieldAt(field.name);
  if (known && RuleOf(*known) == FieldRule::kFlag) return ChangeKind::kLock;
  if (known && RuleOf(*known) == FieldRule::kComment) return ChangeKind::kComment;
  return TextOf(before).empty() ? ChangeKind::kEntry : ChangeKind::kCorrection;
}

void Ledger::FieldChanging(dao::Database& log, std::int64_t rowId, const dao::FieldDef& field,
                           const dao::CellView& before, const dao::CellView& after) {
  RequireChangeable(field.name);
  if (!isOpen_) Begin(log, log.Greatest(kExposures, SealedFields()[0]));
  if (history_ == nullptr) history_ = std::make_unique<HistoryRows>(log);
  const ChangeKind kind = KindOf(field, before);
  onlyLocks_ = onlyLocks_ && kind == ChangeKind::kLock;
  history_->rows->AddNew();
  history_->exposure.SetNumber(rowId);
  history_->field.SetText(field.name);
  SetValue(history_->before, before);
  SetValue(history_->after, after);
  history_->kind.SetText(NameOf(kind));
  history_->seal.SetNumber(head_.number + 1);
  history_->rows->Update();
}

SealKind Ledger::KindOfSeal() const {
  if (purpose_) return *purpose_;
  if (rows_.Count() > 0) return SealKind::kIntake;
  return onlyLocks_ ? SealKind::kLock : SealKind::kEntry;
}

void Ledger::Committing(dao::Database& log) {
  if (!isOpen_) return;
  isOpen_ = false;
  Seal seal = NewSeal(KindOfSeal());
  seal.number = head_.number + 1;
  seal.exchange = exchange_;
  AddRows(seal, rows_);
  AddHistory(seal, log, lastHistory_);
  // What was refused left nothing to seal.
  if (seal.rows == 0 && seal.lastHistory == lastHistory_) return;
  WriteSeal(log, head_.digest, seal);
}

void Ledger::Ended() noexcept {
  isOpen_ = false;
  onlyLocks_ = true;
  rows_ = LineSeal();
  history_.reset();
  exchange_.clear();
}

Purpose::Purpose(Ledger* ledger, SealKind kind) : ledger_(ledger) {
  if (ledger_ != nullptr) before_ = std::exchange(ledger_->purpose_, kind);
}

Purpose::~Purpose() {
  if (ledger_ != nullptr) ledger_->purpose_ = before_;
}

}  // namespace varnlog::seals
