#include "db/dao/RowKeys.h"

#include <cstdint>
#include <cstring>

#include <sqlite3.h>

#include "db/dao/Collation.h"
#include "db/dao/Statement.h"

namespace varnlog::dao {
namespace {

template <typename T>
void AppendRaw(const T& value, std::string& key) {
  key.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename T>
T TakeRaw(std::string_view& key) {
  T value{};
  std::memcpy(&value, key.data(), sizeof value);
  key.remove_prefix(sizeof value);
  return value;
}

void AppendCell(const Statement& row, int column, std::string& key) {
  switch (row.ColumnType(column)) {
    case SQLITE_NULL:
      return AppendRaw(CellKind::kNull, key);
    case SQLITE_INTEGER:
      AppendRaw(CellKind::kInteger, key);
      return AppendRaw(row.Number(column), key);
    case SQLITE_FLOAT:
      AppendRaw(CellKind::kReal, key);
      return AppendRaw(row.Real(column), key);
    default: {
      const std::string_view text = row.Text(column);
      AppendRaw(CellKind::kText, key);
      AppendRaw(static_cast<std::uint32_t>(text.size()), key);
      key += text;
    }
  }
}

CellView TakeCell(std::string_view& key) {
  CellView cell;
  cell.kind = TakeRaw<CellKind>(key);
  if (cell.kind == CellKind::kInteger) cell.integer = TakeRaw<std::int64_t>(key);
  if (cell.kind == CellKind::kReal) cell.real = TakeRaw<double>(key);
  if (cell.kind == CellKind::kText) {
    const auto size = TakeRaw<std::uint32_t>(key);
    cell.text = key.substr(0, size);
    key.remove_prefix(size);
  }
  return cell;
}

int Order(auto a, auto b) {
  return (a > b) - (a < b);
}

double AsReal(const CellView& cell) {
  return cell.kind == CellKind::kReal ? cell.real : static_cast<double>(cell.integer);
}

/// NULL, numbers, texts.
int Group(const CellView& cell) {
  if (cell.kind == CellKind::kText) return 2;
  return cell.kind == CellKind::kNull ? 0 : 1;
}

}  // namespace

void AppendRowKey(const Statement& row, int columns, std::string& key) {
  for (int column = 0; column < columns; ++column) AppendCell(row, column, key);
}

std::vector<CellView> ReadRowKey(std::string_view key) {
  std::vector<CellView> cells;
  while (!key.empty()) cells.push_back(TakeCell(key));
  return cells;
}

int CompareCells(const CellView& a, const CellView& b, bool collated) {
  if (Group(a) != Group(b)) return Order(Group(a), Group(b));
  if (a.kind == CellKind::kText) {
    return collated ? Collation::Instance().Compare(a.text, b.text) : a.text.compare(b.text);
  }
  if (a.kind == CellKind::kInteger && b.kind == CellKind::kInteger) return Order(a.integer, b.integer);
  return Order(AsReal(a), AsReal(b));
}

}  // namespace varnlog::dao
