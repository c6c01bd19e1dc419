#include "db/dao/sqlite/rows/HeldInserts.h"

#include <algorithm>
#include <utility>

#include <sqlite3.h>

#include "db/dao/sqlite/Connection.h"

namespace varnlog::dao {

namespace {

std::string Repeated(const std::string& values) {
  std::string all = values;
  for (std::size_t i = 1; i < HeldInserts::kMost; ++i) all += "," + values;
  return all;
}

}  // namespace

// From row to row most parameters stay as they are: flags repeat, and texts are at the same place.
void RowBinding::Bind(Statement& statement, std::size_t first, std::span<const CopyBuffer::Cell> row) {
  bound_.resize(std::max(bound_.size(), first + row.size()));
  for (std::size_t i = 0; i < row.size(); ++i) {
    const CopyBuffer::Cell& cell = row[i];
    Bound wanted;
    wanted.kind = cell.kind;
    if (cell.kind == CellKind::kInteger) wanted.integer = cell.integer;
    if (cell.kind == CellKind::kText) {
      wanted.text = cell.text.data();
      wanted.length = cell.text.size();
    }
    Bound& bound = bound_[first + i];
    if (wanted == bound && cell.kind != CellKind::kReal) continue;
    bound = {};
    statement.Bind(static_cast<int>(first + i), cell.View());
    bound = wanted;
  }
}

HeldInserts::HeldInserts(Connection& file, const std::string& insert, const std::string& values)
    : file_(file), all_(file, insert + Repeated(values)), single_(file, insert + values) {}

void HeldInserts::Add(std::span<const CopyBuffer::Cell> row, std::int64_t id) {
  // Value by value, so that texts keep the memory they have.
  std::vector<CopyBuffer::Cell>& kept = rows_[count_];
  kept.resize(row.size());
  std::ranges::copy(row, kept.begin());
  ++count_;
  lastId_ = id;
}

void HeldInserts::Write() {
  const std::size_t count = std::exchange(count_, 0);
  if (count == 0) return;
  if (count == kMost) {
    for (std::size_t i = 0; i < kMost; ++i) allBound_.Bind(all_, i * rows_[i].size() + 1, rows_[i]);
    all_.Run();
  } else {
    for (std::size_t i = 0; i < count; ++i) {
      singleBound_.Bind(single_, 1, rows_[i]);
      single_.Run();
    }
  }
  // What was said to stand under a number must stand there.
  if (sqlite3_last_insert_rowid(file_.Handle()) != lastId_)
    throw EngineError(ErrorNumber::kUnexpected, "Added rows have other numbers than they were given.");
}

}  // namespace varnlog::dao
