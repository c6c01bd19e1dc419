#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "db/dao/ChangeJournal.h"
#include "db/dao/Recordset.h"
#include "platform/Author.h"
#include "platform/Clock.h"
#include "seals/LineSeal.h"
#include "seals/SealTables.h"
#include "seals/SealedFields.h"

namespace varnlog::seals {

/// Writes the history and the seals of an open log. Every transaction in which record sets add exposures or
/// change them gets its rows in THistory and, when it commits, its seal, whoever wrote: installed once by
/// Database::SetJournal(), no writer needs to know of it and none can forget it. Throws dao::EngineError,
/// which undoes the transaction.
class Ledger final : public dao::ChangeJournal {
 public:
  /// `clock` must live as long as the log is open.
  Ledger(platform::Author author, const platform::Clock& clock);
  ~Ledger() override;

  [[nodiscard]] const platform::Author& Who() const { return author_; }
  /// A seal with who, where and when filled in.
  [[nodiscard]] Seal NewSeal(SealKind kind) const;

  /// SHA-256 of the exchange records that the transaction takes in.
  void NoteExchange(std::string digest) { exchange_ = std::move(digest); }

  [[nodiscard]] std::string_view Table() const override { return kExposures; }
  void RowAdded(dao::Database& log, std::span<const dao::FieldDef> fields,
                std::span<const dao::CellView> values) override;
  void FieldChanging(dao::Database& log, std::int64_t rowId, const dao::FieldDef& field,
                     const dao::CellView& before, const dao::CellView& after) override;
  void Committing(dao::Database& log) override;
  void Ended() noexcept override;

 private:
  friend class Purpose;
  struct HistoryRows;

  void Begin(dao::Database& log, std::int64_t lastRowBefore);
  [[nodiscard]] ChangeKind KindOf(const dao::FieldDef& field, const dao::CellView& before) const;
  [[nodiscard]] SealKind KindOfSeal() const;

  platform::Author author_;
  const platform::Clock& clock_;
  std::optional<SealKind> purpose_;

  // Of the open transaction.
  bool isOpen_ = false;
  bool onlyLocks_ = true;
  Head head_;
  std::int64_t lastHistory_ = 0;  // before it
  LineSeal rows_;
  std::array<std::size_t, kFieldCount> places_{};
  bool areInOrder_ = false;  // the table's fields, as in a log that was made by this version
  std::array<dao::CellView, kFieldCount> values_;
  std::unique_ptr<HistoryRows> history_;
  std::string exchange_;
};

/// While it lives the ledger's seals are of that kind: for writers whose changes are not a person's entries.
class Purpose {
 public:
  /// `ledger` may be nullptr.
  Purpose(Ledger* ledger, SealKind kind);
  ~Purpose();
  Purpose(const Purpose&) = delete;
  Purpose& operator=(const Purpose&) = delete;

 private:
  Ledger* ledger_;
  std::optional<SealKind> before_;
};

}  // namespace varnlog::seals
