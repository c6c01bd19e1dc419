#include "db/dao/sqlite/TableSalvage.h"

#include <algorithm>
#include <limits>

#include <sqlite3.h>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/PageScan.h"
#include "db/dao/sqlite/Schema.h"

namespace varnlog::dao {

namespace {

constexpr int kStepsBetweenReports = 4096;
// Without any sign of how far the numbers go, this many missing ones in a row count as the end.
constexpr std::int64_t kFarthestGap = 1'000'000;
constexpr std::int64_t kMostProbes = 20'000'000;
constexpr const char* kHasSequences = "SELECT count(*) FROM sqlite_schema WHERE name = 'sqlite_sequence'";

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

double Part(std::int64_t done, std::int64_t all) {
  return std::clamp(static_cast<double>(done) / static_cast<double>(all), 0.0, 1.0);
}

class Salvage {
 public:
  Salvage(Connection& damaged, Connection& mended, const std::string& table,
          const std::function<bool(double)>& progress)
      : damaged_(damaged),
        mended_(mended),
        table_(ReadTableSchema(mended, table)),
        progress_(progress),
        highest_(HighestKnownId()) {}

  void Run() {
    PrepareWriting();
    if (!ReadForward()) {
      ReadBackward();
      ReadBetween();
    }
    Renumber();
    KeepSequence();
  }

 private:
  [[nodiscard]] std::string Quoted() const { return QuoteIdentifier(table_.name); }
  [[nodiscard]] std::int64_t HighestKnownId() const;
  [[nodiscard]] std::int64_t Sequence() const;
  void PrepareWriting();
  bool ReadForward();
  void ReadBackward();
  void ReadBetween();
  void ProbeIds();
  bool ReadRows(Statement& rows);
  void Write(std::int64_t rowId, const std::vector<CellView>& values);
  void Renumber();
  void KeepSequence();
  void Report(double part);

  Connection& damaged_;
  Connection& mended_;
  TableSchema table_;
  const std::function<bool(double)>& progress_;
  std::int64_t highest_ = 0;
  std::string fields_;  // the row id and all fields but the counter, which is the same
  Statement write_;
  std::int64_t lowestUnread_ = std::numeric_limits<std::int64_t>::min();
  std::int64_t highestUnread_ = std::numeric_limits<std::int64_t>::max();
  std::int64_t lastId_ = 0;
  std::int64_t steps_ = 0;
};

// The highest row id that the table itself, an index or the counter knows of.
std::int64_t Salvage::HighestKnownId() const {
  const std::string known = " WHERE rowid <= " + std::to_string(kMostCounter);
  std::int64_t highest = OneNumber(damaged_, "SELECT max(rowid) FROM " + Quoted() + " NOT INDEXED" + known);
  for (const Index& index : table_.indexes)
    if (!index.isPrimary)
      highest = std::max(highest, OneNumber(damaged_, "SELECT max(rowid) FROM " + Quoted() + " INDEXED BY " +
                                                          QuoteIdentifier(index.name) + known));
  return std::max(highest, Sequence());
}

std::int64_t Salvage::Sequence() const {
  std::int64_t sequence = 0;
  Tolerantly([&] {
    if (OneNumber(damaged_, kHasSequences) == 0) return;
    Statement find(damaged_, "SELECT seq FROM sqlite_sequence WHERE name = ?1");
    ResetAtEnd reset(find);
    find.Bind(1, std::string_view(table_.name));
    if (find.Step()) sequence = find.Number(0);
  });
  return sequence <= kMostCounter ? sequence : 0;
}

void Salvage::PrepareWriting() {
  fields_ = "rowid";
  std::string values = "?";
  for (const FieldDef& field : table_.fields) {
    if (field.isCounter) continue;
    fields_ += ", " + QuoteIdentifier(field.name);
    values += ", ?";
  }
  write_ =
      Statement(mended_, "INSERT OR IGNORE INTO " + Quoted() + " (" + fields_ + ") VALUES (" + values + ")");
}

// Copies rows until the end (true) or a damaged page (false).
bool Salvage::ReadRows(Statement& rows) {
  try {
    while (rows.Step()) {
      for (int column = 0; column < rows.ColumnCount(); ++column) write_.BindColumn(column + 1, rows, column);
      lastId_ = rows.Number(0);
      write_.Run();
      if (++steps_ % kStepsBetweenReports == 0) Report(highest_ > 0 ? 0.5 * Part(lastId_, highest_) : 0);
    }
    return true;
  } catch (const EngineError& error) {
    if (!IsDamage(error)) throw;
    return false;
  }
}

bool Salvage::ReadForward() {
  Report(0);
  Statement rows(damaged_, "SELECT " + fields_ + " FROM " + Quoted() + " NOT INDEXED ORDER BY rowid");
  const bool isWhole = ReadRows(rows);
  if (steps_ > 0) lowestUnread_ = lastId_ < std::numeric_limits<std::int64_t>::max() ? lastId_ + 1 : lastId_;
  return isWhole;
}

void Salvage::ReadBackward() {
  const std::int64_t before = steps_;
  Statement rows(damaged_, "SELECT " + fields_ + " FROM " + Quoted() + " NOT INDEXED ORDER BY rowid DESC");
  ReadRows(rows);
  if (steps_ > before) highestUnread_ = lastId_ - 1;
}

void Salvage::ReadBetween() {
  PageScan scan(damaged_, table_.fields);
  const bool isComplete =
      scan.CanTellTable() && scan.Run([&](auto id, const auto& values) { Write(id, values); },
                                      [&](double part) { Report(0.5 + 0.4 * part); });
  if (!isComplete) ProbeIds();
}

void Salvage::Write(std::int64_t rowId, const std::vector<CellView>& values) {
  if (rowId < lowestUnread_ || rowId > highestUnread_) return;
  write_.Bind(1, rowId);
  int parameter = 1;
  for (std::size_t i = 0; i < table_.fields.size(); ++i) {
    if (table_.fields[i].isCounter) continue;
    ++parameter;
    const bool isFlag = table_.fields[i].type == FieldType::kBoolean;
    CellView value;
    if (i < values.size())
      value = values[i];
    else if (isFlag)
      value.kind = CellKind::kInteger;
    write_.Bind(parameter, value);
  }
  write_.Run();
}

// Asks for one number after the other, which a page that leads to the row must be there for.
void Salvage::ProbeIds() {
  Statement row(damaged_, "SELECT " + fields_ + " FROM " + Quoted() + " NOT INDEXED WHERE rowid = ?1");
  const std::int64_t first = std::max<std::int64_t>(lowestUnread_, 1);
  const std::int64_t known = highest_ > 0 ? highest_ : first + kFarthestGap;
  const std::int64_t last = std::min({highestUnread_, known, first + kMostProbes});
  for (std::int64_t id = first; id <= last; ++id) {
    row.Bind(1, id);
    ReadRows(row);
    if (id % kStepsBetweenReports == 0) Report(0.9 + 0.1 * Part(id, last));
  }
}

void Salvage::Report(double part) {
  if (!progress_(part)) throw EngineError(ErrorNumber::kCancelled, "The operation was cancelled.");
}

// A row whose number cannot be a counter's is kept under the next free one.
void Salvage::Renumber() {
  const std::string range = " BETWEEN 1 AND " + std::to_string(kMostCounter);
  Statement find(mended_, "SELECT rowid FROM " + Quoted() + " WHERE rowid NOT" + range + " LIMIT 1");
  Statement move(mended_, "UPDATE " + Quoted() +
                              " SET rowid = 1 + max(?1, (SELECT ifnull(max(rowid), 0) FROM " + Quoted() +
                              " WHERE rowid" + range + ")) WHERE rowid = ?2");
  while (find.Step()) {
    const std::int64_t wrong = find.Number(0);
    find.Reset();
    move.Bind(1, highest_);
    move.Bind(2, wrong);
    move.Run();
  }
}

// The number of a row that was lost is never given out again.
void Salvage::KeepSequence() {
  if (highest_ == 0 || OneNumber(mended_, kHasSequences) == 0) return;
  Statement forget(mended_, "DELETE FROM sqlite_sequence WHERE name = ?1");
  forget.Bind(1, std::string_view(table_.name));
  forget.Run();
  Statement keep(
      mended_,
      "INSERT INTO sqlite_sequence (name, seq) VALUES (?1, max(?2, (SELECT ifnull(max(rowid), 0) FROM " +
          Quoted() + ")))");
  keep.Bind(1, std::string_view(table_.name));
  keep.Bind(2, highest_);
  keep.Run();
}

}  // namespace

bool IsDamage(const EngineError& error) {
  return error.number() == ErrorNumber::kDamaged || error.number() == ErrorNumber::kDiskError;
}

void SalvageTable(Connection& damaged, Connection& mended, const std::string& table,
                  const std::function<bool(double)>& progress) {
  Salvage(damaged, mended, table, progress).Run();
}

}  // namespace varnlog::dao
