#include "db/dao/rows/DynasetRecordset.h"

#include <limits>
#include <utility>

namespace varnlog::dao {

namespace {

// The first page of a window; rows beyond it are looked up in larger slices as they are reached.
constexpr std::size_t kFirstSlice = 64;
constexpr std::size_t kFurtherSlice = 4096;

}  // namespace

DynasetRecordset::DynasetRecordset(std::shared_ptr<RowStore> store)
    : ScrollRecordset(store->Fields()),
      store_(std::move(store)),
      keys_(std::make_shared<KeySet>(store_, store_->MakeIds())) {
  keys_->Fetch(kFirstSlice);
  GoToFirst();
}

DynasetRecordset::DynasetRecordset(const DynasetRecordset& origin)
    : ScrollRecordset(origin.store_->Fields()), store_(origin.store_), keys_(origin.keys_) {}

DynasetRecordset::DynasetRecordset(const DynasetRecordset& origin, std::unique_ptr<IdSource> ids)
    : ScrollRecordset(origin.store_->Fields()),
      store_(origin.store_),
      keys_(std::make_shared<KeySet>(store_, std::move(ids))) {
  (void)ReachEnd();
  GoToFirst();
}

std::unique_ptr<Recordset> DynasetRecordset::Only(std::vector<std::int64_t> ids) const {
  return std::unique_ptr<Recordset>(
      new DynasetRecordset(*this, std::make_unique<ComputedIds>(std::move(ids))));
}

std::unique_ptr<Recordset> DynasetRecordset::Clone() {
  return std::unique_ptr<Recordset>(new DynasetRecordset(*this));
}

bool DynasetRecordset::Populate(std::int64_t rows) {
  return keys_->Fetch(static_cast<std::size_t>(std::max<std::int64_t>(rows, 1)));
}

bool DynasetRecordset::Reach(std::int64_t position) {
  while (position >= keys_->Count() && !keys_->IsComplete())
    keys_->Fetch(std::max(kFurtherSlice, static_cast<std::size_t>(position + 1 - keys_->Count())));
  return position < keys_->Count();
}

std::int64_t DynasetRecordset::ReachEnd() {
  while (!keys_->Fetch(std::numeric_limits<std::size_t>::max() - 1)) {
  }
  return keys_->Count();
}

void DynasetRecordset::Leave() {
  row_ = {};
  Buffer().Close();
}

CellView DynasetRecordset::CurrentCell(std::size_t ordinal) {
  const std::int64_t position = RequirePosition();
  if (!row_) row_ = keys_->At(position, MovesBackward());
  const CellView cell = row_.At(ordinal);
  if (cell.kind == CellKind::kDeleted)
    throw EngineError(ErrorNumber::kRecordDeleted, "The record has been deleted.");
  return cell;
}

RowWriter& DynasetRecordset::Writer() {
  if (writer_ == nullptr) writer_ = store_->MakeWriter();
  return *writer_;
}

void DynasetRecordset::AddNew() {
  Writer().BeginAdd(Buffer());
}

void DynasetRecordset::Edit() {
  const std::int64_t position = RequirePosition();
  Writer().BeginEdit(Buffer(), keys_->IdAt(position), keys_->SeenBeforeOthersChanged(position));
}

void DynasetRecordset::Update() {
  const CopyBuffer::State state = Buffer().state();
  if (state == CopyBuffer::State::kAdding) {
    keys_->Append(Writer().Add(Buffer()));
  } else if (state == CopyBuffer::State::kEditing) {
    const std::int64_t position = RequirePosition();
    // Whether the change is kept or refused, the next look at the row is at the file.
    row_ = {};
    keys_->Forget(position);
    Writer().Change(Buffer());
  } else {
    throw EngineError(ErrorNumber::kUpdateWithoutEdit, "Update comes after AddNew or Edit only.");
  }
}

}  // namespace varnlog::dao
