#include "db/dao/postgres/KnownRows.h"

#include <utility>

#include "db/dao/postgres/ServerSchema.h"

namespace varnlog::dao {

namespace {

/// What an exchange record says about an exposure comes soon behind it.
constexpr std::size_t kMostAdded = 4096;
constexpr std::size_t kMostRows = 16384;

}  // namespace

KnownRows::KnownRows(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const TableSchema> table,
                     std::vector<std::size_t> ordinals)
    : storage_(std::move(storage)), table_(std::move(table)), ordinals_(std::move(ordinals)) {}

KnownRows::State KnownRows::Now() const {
  return {storage_->WriteRight(), storage_->OwnChanges(), storage_->UndoneParts()};
}

void KnownRows::ForgetWhatIsOver() {
  const State now = Now();
  if (now == state_ && rows_.size() < kMostRows) return;
  added_.clear();
  rows_.clear();
  state_ = now;
}

std::shared_ptr<const RowSet> KnownRows::Find(std::int64_t id) {
  ForgetWhatIsOver();
  if (state_.writeRight == 0) return nullptr;
  if (const auto row = rows_.find(id); row != rows_.end()) return row->second;
  if (added_.empty()) return nullptr;
  const AddedRow& added = added_[static_cast<std::size_t>(id) % kMostAdded];
  return added.id == id ? FromLine(added.line) : nullptr;
}

void KnownRows::NoteRead(std::int64_t id, std::shared_ptr<const RowSet> row) {
  ForgetWhatIsOver();
  if (state_.writeRight != 0) rows_.try_emplace(id, std::move(row));
}

void KnownRows::NoteAdded(std::int64_t id, std::string_view copyLine) {
  ForgetWhatIsOver();
  added_.resize(kMostAdded);
  AddedRow& added = added_[static_cast<std::size_t>(id) % kMostAdded];
  added.id = id;
  added.line = copyLine;
}

void KnownRows::NoteChanged(std::int64_t id, const RowSet* before, const CopyBuffer& buffer) {
  state_ = Now();
  if (before == nullptr) return;
  auto row = std::make_shared<RowSet>(buffer.size());
  row->Append([&](std::size_t column) {
    return buffer[column].isChanged ? buffer[column].View() : before->At(0, column);
  });
  rows_[id] = std::move(row);
}

std::shared_ptr<const RowSet> KnownRows::FromLine(std::string_view line) const {
  std::vector<CopyField> fields;
  for (const FieldDef& field : table_->fields) fields.push_back(TakeCopyField(line, field.type));
  auto row = std::make_shared<RowSet>(ordinals_.size());
  row->Append([&](std::size_t column) { return fields[ordinals_[column]].View(); });
  return row;
}

}  // namespace varnlog::dao
