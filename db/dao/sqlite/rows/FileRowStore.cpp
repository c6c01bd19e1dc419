#include "db/dao/sqlite/rows/FileRowStore.h"

#include <utility>

#include "db/dao/rows/RowSet.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/rows/FileRowWriter.h"
#include "db/dao/sqlite/rows/OrderedIds.h"
#include "db/dao/sqlite/rows/StatementIds.h"

namespace varnlog::dao {

namespace {

constexpr std::size_t kUsualRowBytes = 128;

}  // namespace

// The quicker of the two for the statement.
std::unique_ptr<IdSource> FileRowStore::MakeIds() {
  if (auto ids = storage_->Ordered().Find(storage_->File(), *select_, parameters_))
    return std::make_unique<ComputedIds>(*std::move(ids));
  return std::make_unique<StatementIds>(storage_, select_, parameters_);
}

std::unique_ptr<RowWriter> FileRowStore::MakeWriter() {
  return std::make_unique<FileRowWriter>(storage_, select_->table, select_->ordinals);
}

Statement& FileRowStore::RowStatement(const char* condition) {
  return select_->Prepared(storage_->File(), "SELECT " + select_->ColumnList() + ", rowid FROM " +
                                                 QuoteIdentifier(select_->table->name) + " WHERE rowid " +
                                                 condition);
}

void FileRowStore::ReadRange(Ids ids, RowSet& rows) {
  const bool isDescending = ids.back() < ids.front();
  Statement& read = RowStatement(isDescending ? "BETWEEN ?2 AND ?1 ORDER BY rowid DESC"
                                              : "BETWEEN ?1 AND ?2 ORDER BY rowid");
  ResetAtEnd reset(read);
  read.Bind(1, ids.front());
  read.Bind(2, ids.back());
  const int idColumn = static_cast<int>(select_->columns.size());
  std::size_t next = 0;
  const auto isBefore = [&](std::int64_t a, std::int64_t b) { return isDescending ? a > b : a < b; };
  while (next < ids.size() && read.Step()) {
    const std::int64_t id = read.Number(idColumn);
    for (; next < ids.size() && isBefore(ids[next], id); ++next) rows.AppendDeleted();
    if (next == ids.size() || ids[next] != id) continue;  // a row that is not in the record set
    AppendRow(rows, read);
    ++next;
  }
  for (; next < ids.size(); ++next) rows.AppendDeleted();
}

void FileRowStore::ReadSingly(Ids ids, RowSet& rows) {
  Statement& read = RowStatement("= ?1");
  ResetAtEnd reset(read);
  for (const std::int64_t id : ids) {
    read.Reset();
    read.Bind(1, id);
    if (read.Step())
      AppendRow(rows, read);
    else
      rows.AppendDeleted();
  }
}

RowStore::Block FileRowStore::Read(Ids ids) {
  auto rows = std::make_shared<RowSet>(select_->columns.size());
  rows->Reserve(ids.size(), kUsualRowBytes);
  const ReadScope scope(storage_->File());
  if (AreDense(ids))
    ReadRange(ids, *rows);
  else
    ReadSingly(ids, *rows);
  // Inside the read, so that nothing can have changed between the rows and their stamp.
  ChangeWatch& watch = storage_->File().Watch();
  return {std::move(rows), {watch.Current(), watch.OthersVersion()}};
}

}  // namespace varnlog::dao
