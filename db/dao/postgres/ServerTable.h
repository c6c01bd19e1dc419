#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "db/dao/SeeksAhead.h"
#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/TableRecordset.h"

namespace varnlog::dao {

/// A table of a server. Within a transaction, when nobody else can write, rows are sought for in windows:
/// what stands from the wanted date on is read in one round trip, and the rows that are asked for next are
/// found there. Rows that do not come in the order of time are sought for many at once, where they are
/// announced.
class ServerTable final : public TableRecordset, public SeeksAhead {
 public:
  ServerTable(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const TableSchema> table);

  [[nodiscard]] std::int64_t RecordCount() const override;
  void Expect(std::span<const platform::DateTime> dates) override;

 private:
  /// One row's values of the index's fields, in their order.
  struct Entry {
    std::int64_t id = 0;
    std::vector<std::optional<std::string>> values;
  };
  using SharedEntry = std::shared_ptr<const Entry>;
  /// All rows of some dates.
  struct Expected {
    std::unordered_map<std::string, std::vector<SharedEntry>> rows;  // by their date, which may have none
    std::int64_t epoch = -1;
    std::int64_t changes = -1;
  };
  struct Window {
    std::string first;  // dates, both included
    std::string last;
    std::vector<SharedEntry> entries;  // in the order of their dates and ids
    std::int64_t epoch = -1;
    std::int64_t changes = -1;
  };

  [[nodiscard]] std::optional<std::int64_t> FirstId() override;
  [[nodiscard]] std::optional<std::int64_t> IdBehind(std::int64_t id) override;
  void UseIndex(const Index& index) override;
  [[nodiscard]] std::optional<std::int64_t> Find(std::span<const SeekKey> keys) override;
  void NoteAdded(const CopyBuffer& buffer) override;

  [[nodiscard]] std::optional<std::int64_t> Ask(std::span<const SeekKey> keys);
  [[nodiscard]] bool HasWindow(const std::string& date) const;
  [[nodiscard]] bool ReadWindow(const std::string& date);
  [[nodiscard]] bool SeesAll() const;
  [[nodiscard]] std::vector<SharedEntry>* ExpectedAt(const std::string& date);
  [[nodiscard]] SharedEntry EntryAt(const ServerResult& rows, int row) const;
  [[nodiscard]] std::optional<std::int64_t> Oldest(std::span<const SharedEntry> entries,
                                                   std::span<const SeekKey> keys) const;
  [[nodiscard]] std::optional<std::int64_t> FindInWindow(std::span<const SeekKey> keys,
                                                         const std::string& date) const;
  [[nodiscard]] std::optional<std::int64_t> FindUnsent(std::span<const SeekKey> keys,
                                                       const std::string& date) const;
  [[nodiscard]] bool Fits(const Entry& entry, std::span<const SeekKey> keys) const;
  ServerResult RunForSeek(const std::string& sql, const ServerValues& values);
  void AddToWindow(const SharedEntry& entry);
  [[nodiscard]] const std::string& DateOf(const SharedEntry& entry) const {
    return *entry->values[*dateKey_];
  }
  void SettleUnsent();
  [[nodiscard]] bool IsText(std::size_t key) const;

  std::shared_ptr<ServerStorage> storage_;
  std::string key_;
  std::string name_;
  const Index* index_ = nullptr;
  std::vector<std::size_t> fields_;     // the index's, by their places in the table
  std::optional<std::size_t> dateKey_;  // which of them is the date that the index is stored by
  Window window_;
  Expected expected_;
  // Rows that were added here and are not sent yet, by their date: nothing is sent for the sake of a look-up.
  std::unordered_multimap<std::string, SharedEntry> unsent_;
  std::int64_t unsentEpoch_ = -1;
  std::size_t windowRows_ = 0;
  std::size_t hits_ = 0;  // seeks that were answered by the window
  std::string sought_;    // the date sought last outside of it
};

}  // namespace varnlog::dao
