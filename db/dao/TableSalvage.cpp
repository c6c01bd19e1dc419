#include "db/dao/TableSalvage.h"

#include <algorithm>
#include <limits>

#include <sqlite3.h>

#include "db/dao/Connection.h"
#include "db/dao/JetSql.h"
#include "db/dao/Schema.h"

namespace varnlog::dao {

namespace {

constexpr int kStepsBetweenReports = 4096;
// Without any sign of how far the numbers go, this many missing ones in a row count as the end.
constexpr std::int64_t kFarthestGap = 1'000'000;

// Runs `read`, leaving out what a damaged page hides.
template <typename Read>
void Tolerantly(const Read& read) {
  try {
    read();
  } catch (const EngineError& error) {
    if (!IsDamage(error)) throw;
  }
}

std::int64_t OneNumber(Connection& connection, const std::string& sql) {
  std::int64_t number = 0;
  Tolerantly([&] {
    Statement statement(connection, sql);
    ResetAtEnd reset(statement);
    if (statement.Step()) number = statement.Number(0);
  });
  return number;
}

class Salvage {
 public:
  Salvage(Connection& damaged, Connection& mended, const std::string& table,
          const std::function<bool(double)>& progress)
      : damaged_(damaged), mended_(mended), table_(ReadTableSchema(mended, table)), progress_(progress) {}

  void Run() {
    highest_ = HighestKnownId();
    Prepare();
    Walk();
    KeepSequence();
  }

 private:
  [[nodiscard]] std::string Quoted() const { return QuoteIdentifier(table_.name); }

  // The highest row id that the table itself, an index or the counter knows of.
  [[nodiscard]] std::int64_t HighestKnownId() const {
    std::int64_t highest = OneNumber(damaged_, "SELECT max(rowid) FROM " + Quoted() + " NOT INDEXED");
    for (const Index& index : table_.indexes)
      if (!index.isPrimary)
        highest = std::max(highest, OneNumber(damaged_, "SELECT max(rowid) FROM " + Quoted() +
                                                            " INDEXED BY " + QuoteIdentifier(index.name)));
    return std::max(highest, Sequence());
  }

  [[nodiscard]] std::int64_t Sequence() const {
    if (OneNumber(damaged_, "SELECT count(*) FROM sqlite_schema WHERE name = 'sqlite_sequence'") == 0)
      return 0;
    std::string name = table_.name;
    for (std::size_t at = 0; (at = name.find('\'', at)) != std::string::npos; at += 2)
      name.insert(at, 1, '\'');
    return OneNumber(damaged_, "SELECT seq FROM sqlite_sequence WHERE name = '" + name + "'");
  }

  void Prepare() {
    std::string fields = "rowid";
    std::string values = "?";
    for (const FieldDef& field : table_.fields) {
      if (field.isCounter) continue;  // the row id itself
      fields += ", " + QuoteIdentifier(field.name);
      values += ", ?";
    }
    // What the damaged file calls the same table may have fewer fields only if its declaration was read
    // wrong.
    read_ = Statement(
        damaged_, "SELECT " + fields + " FROM " + Quoted() + " NOT INDEXED WHERE rowid >= ?1 ORDER BY rowid");
    write_ =
        Statement(mended_, "INSERT OR IGNORE INTO " + Quoted() + " (" + fields + ") VALUES (" + values + ")");
  }

  void Walk() {
    std::int64_t next = std::numeric_limits<std::int64_t>::min();
    std::int64_t lastRead = 0;
    while (!ReadFrom(next)) {
      Report(next);
      // Behind a damaged page the next readable row is found by asking for one number after the other.
      next = std::max<std::int64_t>(next, 0) + 1;
      if (copied_ > 0) lastRead = lastId_;
      const std::int64_t farthest = highest_ > 0 ? highest_ : lastRead + kFarthestGap;
      if (next > farthest) return;
    }
  }

  // True at the end of the table; `next` is behind the last row that could be read.
  bool ReadFrom(std::int64_t& next) {
    try {
      read_.Reset();
      read_.Bind(1, next);
      while (read_.Step()) {
        CopyRow();
        next = lastId_ == std::numeric_limits<std::int64_t>::max() ? lastId_ : lastId_ + 1;
        if (++steps_ % kStepsBetweenReports == 0) Report(next);
      }
      return true;
    } catch (const EngineError& error) {
      if (!IsDamage(error)) throw;
      return false;
    }
  }

  void CopyRow() {
    for (int column = 0; column < read_.ColumnCount(); ++column)
      sqlite3_bind_value(write_.Handle(), column + 1, sqlite3_column_value(read_.Handle(), column));
    lastId_ = read_.Number(0);
    write_.Run();
    ++copied_;
  }

  void Report(std::int64_t next) {
    const double part =
        highest_ > 0 ? std::clamp(static_cast<double>(next) / static_cast<double>(highest_), 0.0, 1.0) : 0;
    if (!progress_(part)) throw EngineError(ErrorNumber::kCancelled, "The operation was cancelled.");
  }

  // The number of a row that was lost is never given out again.
  void KeepSequence() {
    const bool hasCounter =
        OneNumber(mended_, "SELECT count(*) FROM sqlite_schema WHERE name = 'sqlite_sequence'") > 0;
    const std::int64_t highest = std::max(highest_, lastId_);
    if (!hasCounter || highest == 0) return;
    Statement forget(mended_, "DELETE FROM sqlite_sequence WHERE name = ?1");
    forget.Bind(1, std::string_view(table_.name));
    forget.Run();
    Statement keep(mended_, "INSERT INTO sqlite_sequence (name, seq) VALUES (?1, ?2)");
    keep.Bind(1, std::string_view(table_.name));
    keep.Bind(2, highest);
    keep.Run();
  }

  Connection& damaged_;
  Connection& mended_;
  TableSchema table_;
  const std::function<bool(double)>& progress_;
  Statement read_;
  Statement write_;
  std::int64_t highest_ = 0;
  std::int64_t lastId_ = 0;
  std::int64_t copied_ = 0;
  std::int64_t steps_ = 0;
};

}  // namespace

bool IsDamage(const EngineError& error) {
  return error.number() == ErrorNumber::kDamaged || error.number() == ErrorNumber::kDiskError;
}

void SalvageTable(Connection& damaged, Connection& mended, const std::string& table,
                  const std::function<bool(double)>& progress) {
  Salvage(damaged, mended, table, progress).Run();
}

}  // namespace varnlog::dao
