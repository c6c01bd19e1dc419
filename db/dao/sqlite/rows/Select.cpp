#include "db/dao/sqlite/rows/Select.h"

#include <algorithm>
#include <utility>

#include "db/dao/sql/SelectShape.h"
#include "db/dao/sqlite/FileDialect.h"
#include "db/dao/sqlite/FileStorage.h"

namespace varnlog::dao {

namespace {

constexpr std::size_t kKeptStatements = 64;

std::shared_ptr<Select> Resolve(FileStorage& storage, SelectStatement parsed) {
  auto table = storage.Table(parsed.table);
  return std::make_shared<Select>(std::move(parsed), std::move(table));
}

// Nothing when a mark did not come through the translation as a text of its own, or the statement is wrong
// (its own text then gives the better message).
std::shared_ptr<Select> ResolveShape(FileStorage& storage, const std::string& shape, std::size_t texts) {
  SelectStatement parsed;
  try {
    parsed = ParseSelect(shape);
  } catch (const EngineError&) {
    return nullptr;
  }
  if (!MarksToParameters(parsed.where, texts)) return nullptr;
  auto select = Resolve(storage, std::move(parsed));
  select->parameterCount = texts;
  return select;
}

}  // namespace

Statement& Select::Prepared(Connection& connection, const std::string& storageSql) {
  Statement& statement = statements_[storageSql];
  if (statement.IsPrepared()) return statement;
  statement = Statement(connection, storageSql);
  if (!statement.IsReadOnly())
    throw EngineError(ErrorNumber::kSyntaxError, "Only a SELECT statement can be opened.");
  return statement;
}

void BindParameters(Statement& statement, const Parameters& parameters) {
  for (std::size_t i = 0; i < parameters.size(); ++i)
    statement.Bind(static_cast<int>(i) + 1, std::string_view(parameters[i]));
}

std::shared_ptr<Select> SelectCache::WholeTable(FileStorage& storage, std::string_view table) {
  return Resolve(storage, {.distinct = false,
                           .allFields = true,
                           .columns = {},
                           .table = std::string(table),
                           .where = {},
                           .orderBy = {},
                           .fields = {}});
}

std::shared_ptr<Select> SelectCache::Find(FileStorage& storage, std::string_view jetSql,
                                          Parameters& parameters) {
  const bool hasShape = LiftTexts(jetSql, shape_, parameters);
  if (hasShape) {
    const auto known = byShape_.find(shape_);
    if (known != byShape_.end()) {
      entries_.splice(entries_.begin(), entries_, known->second);
      if (entries_.front().select->parameterCount == 0) parameters.clear();
      return entries_.front().select;
    }
    if (auto select = ResolveShape(storage, shape_, parameters.size())) {
      Keep(shape_, select);
      return select;
    }
  }
  parameters.clear();
  return Resolve(storage, ParseSelect(jetSql));
}

void SelectCache::Keep(std::string shape, std::shared_ptr<Select> select) {
  entries_.push_front({std::move(shape), std::move(select)});
  byShape_.emplace(entries_.front().shape, entries_.begin());
  if (entries_.size() <= kKeptStatements) return;
  byShape_.erase(entries_.back().shape);
  entries_.pop_back();
}

}  // namespace varnlog::dao
