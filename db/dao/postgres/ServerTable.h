#pragma once

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "db/dao/SeeksAhead.h"
#include "db/dao/postgres/ServerRowWriter.h"
#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/TableRecordset.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

/// A table of a server. Within a transaction, when nobody else can write, rows are sought for in windows:
/// what stands from the wanted date on is read in one round trip, and the rows that are asked for next are
/// found there. Rows that do not come in the order of time are sought for many at once, where they are
/// announced. Who walks along the rows is given them in blocks.
class ServerTable final : public TableRecordset, public SeeksAhead {
 public:
  ServerTable(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const TableSchema> table);

  [[nodiscard]] std::int64_t RecordCount() const override;
  void Expect(std::span<const platform::DateTime> dates,
              std::span<const platform::DateTime> changed) override;

 private:
  /// One row's values of the index's fields, in their order.
  struct Entry {
    std::int64_t id = 0;
    std::vector<std::optional<std::string>> values;
  };
  using SharedEntry = std::shared_ptr<const Entry>;
  /// Rows by the values of the index's fields that are no texts, of which every sought row has all.
  struct Entries {
    std::unordered_map<std::string, std::vector<SharedEntry>> rows;
    std::size_t count = 0;  // with those that lack one
  };
  /// All rows of some dates.
  struct Expected {
    std::unordered_set<std::string> dates;
    Entries entries;
    std::int64_t epoch = -1;
    std::int64_t changes = -1;
  };
  struct Window {
    std::string first;  // dates, both included
    std::string last;
    Entries entries;
    std::int64_t epoch = -1;
    std::int64_t changes = -1;
  };
  /// Rows that stand one behind the other.
  struct Block {
    std::vector<std::int64_t> ids;
    std::vector<std::shared_ptr<const RowSet>> rows;
    RowStamp stamp;
  };

  [[nodiscard]] std::optional<std::int64_t> FirstId() override;
  [[nodiscard]] std::optional<std::int64_t> IdBehind(std::int64_t id) override;
  [[nodiscard]] std::shared_ptr<const RowSet> ReadRow(std::int64_t id) override;
  void UseIndex(const Index& index) override;
  [[nodiscard]] std::optional<std::int64_t> Find(std::span<const SeekKey> keys) override;
  void NoteAdded(const CopyBuffer& buffer) override;

  /// The block's place of the row; its size when it is not there or may be out of date.
  [[nodiscard]] std::size_t PlaceInBlock(std::int64_t id) const;
  void ReadBlock(std::int64_t behind);

  [[nodiscard]] std::optional<std::int64_t> Ask(std::span<const SeekKey> keys);
  [[nodiscard]] bool CanWait(std::span<const SeekKey> keys) const;
  [[nodiscard]] bool HasWindow(const std::string& date) const;
  [[nodiscard]] bool ReadWindow(const std::string& date);
  [[nodiscard]] bool ReadDate(const std::string& date);
  [[nodiscard]] bool SeesAll() const;
  void ExpectDates(std::span<const platform::DateTime> dates);
  [[nodiscard]] bool IsExpected(const std::string& date) const;
  [[nodiscard]] SharedEntry EntryAt(const ServerResult& rows, int row) const;
  void Add(Entries& entries, const SharedEntry& entry) const;
  [[nodiscard]] std::optional<std::int64_t> Oldest(const Entries& entries,
                                                   std::span<const SeekKey> keys) const;
  [[nodiscard]] bool Fits(const Entry& entry, std::span<const SeekKey> keys) const;
  ServerResult RunForSeek(const std::string& sql, const ServerValues& values);
  [[nodiscard]] std::string RowColumns() const;
  [[nodiscard]] std::string SeekColumns() const;
  [[nodiscard]] std::string DateField() const { return QuoteIdentifier(index_->fields[*dateKey_]); }
  [[nodiscard]] const std::optional<std::string>& DateOf(const SharedEntry& entry) const {
    return entry->values[*dateKey_];
  }
  void AddUnsent(const std::function<bool(const std::string& date)>& isWanted, Entries& entries) const;
  void SettleUnsent();
  void ForgetUnsent();
  [[nodiscard]] bool IsText(std::size_t key) const;

  std::shared_ptr<ServerStorage> storage_;
  std::string key_;
  std::string name_;
  const Index* index_ = nullptr;
  std::vector<std::size_t> fields_;     // the index's, by their places in the table
  std::optional<std::size_t> dateKey_;  // which of them is the date that the index is stored by
  Block block_;
  Window window_;
  Expected expected_;
  // Rows that were added here and are not sent yet: nothing is sent for the sake of a look-up.
  Entries unsent_;
  std::int64_t unsentEpoch_ = -1;
  std::size_t windowRows_ = 0;
  std::size_t hits_ = 0;  // seeks that were answered by the window
  std::string sought_;    // the date sought last outside of it
};

}  // namespace varnlog::dao
