#include "db/dao/Recordset.h"

#include <string>

#include "db/dao/storage/TableSchema.h"

namespace varnlog::dao {

namespace {

[[noreturn]] void ThrowNotSupported(const char* operation) {
  throw EngineError(ErrorNumber::kNotSupported, std::string("The operation ") + operation +
                                                    " is not supported for this type of record set.");
}

}  // namespace

Field& Recordset::Fields(std::string_view name) {
  const std::size_t count = FieldCount();
  for (std::size_t i = 0; i < count; ++i) {
    Field& field = Fields(i);
    if (SameName(field.Name(), name)) return field;
  }
  throw EngineError(ErrorNumber::kItemNotFound,
                    "There is no field '" + std::string(name) + "' in the record set.");
}

void Recordset::MoveFirst() {
  ThrowNotSupported("MoveFirst");
}
void Recordset::MoveLast() {
  ThrowNotSupported("MoveLast");
}
void Recordset::MoveNext() {
  ThrowNotSupported("MoveNext");
}
void Recordset::MovePrevious() {
  ThrowNotSupported("MovePrevious");
}
void Recordset::Move(std::int64_t /*rows*/) {
  ThrowNotSupported("Move");
}
std::int64_t Recordset::AbsolutePosition() const {
  ThrowNotSupported("AbsolutePosition");
}
void Recordset::SetAbsolutePosition(std::int64_t /*position*/) {
  ThrowNotSupported("AbsolutePosition");
}
bool Recordset::Populate(std::int64_t /*rows*/) {
  return true;
}
dao::Bookmark Recordset::Bookmark() const {
  ThrowNotSupported("Bookmark");
}
void Recordset::SetBookmark(dao::Bookmark /*bookmark*/) {
  ThrowNotSupported("Bookmark");
}
std::unique_ptr<Recordset> Recordset::Clone() {
  ThrowNotSupported("Clone");
}
std::span<const std::int64_t> Recordset::Ids() const {
  ThrowNotSupported("Ids");
}
std::unique_ptr<Recordset> Recordset::Only(std::vector<std::int64_t> /*ids*/) const {
  ThrowNotSupported("Only");
}
void Recordset::AddNew() {
  ThrowNotSupported("AddNew");
}
void Recordset::Edit() {
  ThrowNotSupported("Edit");
}
void Recordset::Update() {
  ThrowNotSupported("Update");
}
void Recordset::CancelUpdate() {
  ThrowNotSupported("CancelUpdate");
}
void Recordset::SetIndex(std::string_view /*name*/) {
  ThrowNotSupported("Index");
}
void Recordset::Seek(std::string_view /*comparison*/, std::initializer_list<SeekKey> /*keys*/) {
  ThrowNotSupported("Seek");
}
bool Recordset::NoMatch() const {
  ThrowNotSupported("NoMatch");
}

}  // namespace varnlog::dao
