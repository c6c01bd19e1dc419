#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "db/dao/EngineError.h"
#include "db/dao/Field.h"

namespace varnlog::dao {

enum class RecordsetType { kTable = 1, kDynaset = 2, kSnapshot = 4 };

/// Marks a row of a record set and of all its clones, until the record set is opened anew.
struct Bookmark {
  std::int64_t position = -1;
  friend bool operator==(const Bookmark&, const Bookmark&) = default;
};

/// One value of a Seek.
using SeekKey = std::variant<std::int64_t, std::string_view, platform::DateTime>;

/// Rows of a table or query. Three kinds:
/// - table: one table through an index: Index, Seek, AddNew, Edit, Update;
/// - dynaset: keeps the identity of each row and reads a row's values when it is visited, so it sees what
///   others changed; a row that was deleted meanwhile throws kRecordDeleted when its values are asked for;
/// - snapshot: a copy of the rows, for DISTINCT and computed columns; read only.
/// An operation that a kind does not have throws kNotSupported. After opening, the first row is current, or
/// both IsBOF() and IsEOF() hold.
class Recordset {
 public:
  virtual ~Recordset() = default;

  [[nodiscard]] virtual RecordsetType Type() const = 0;

  [[nodiscard]] virtual std::size_t FieldCount() const = 0;
  [[nodiscard]] virtual Field& Fields(std::size_t ordinal) = 0;
  /// By name, letter case ignored; throws kItemNotFound.
  [[nodiscard]] Field& Fields(std::string_view name);

  // Moving. Not for table-type record sets beyond MoveFirst and MoveNext (in primary key order). Moving in an
  // empty record set, before its beginning or beyond its end throws kNoCurrentRecord, as in the engine that
  // this stands for: check RecordCount() or IsEOF() first. An edit that was not finished is given up.
  [[nodiscard]] virtual bool IsBOF() const = 0;
  [[nodiscard]] virtual bool IsEOF() const = 0;
  virtual void MoveFirst();
  virtual void MoveLast();
  virtual void MoveNext();
  virtual void MovePrevious();
  /// From the current row, or from the edge if beyond one.
  virtual void Move(std::int64_t rows);

  /// 0-based position of the current row, -1 when there is none. Setting it reads no row; a position outside
  /// the record set throws kNoCurrentRecord.
  [[nodiscard]] virtual std::int64_t AbsolutePosition() const;
  virtual void SetAbsolutePosition(std::int64_t position);

  /// The rows known so far: all of them once MoveLast or Populate has reached the end.
  [[nodiscard]] virtual std::int64_t RecordCount() const = 0;
  /// Finds out the identity of up to `rows` further rows without reading them, so that a window can do it in
  /// slices between events. True when the end is reached. Snapshots and tables are always populated.
  virtual bool Populate(std::int64_t rows);

  [[nodiscard]] virtual dao::Bookmark Bookmark() const;
  virtual void SetBookmark(dao::Bookmark bookmark);
  /// Shares the rows, has its own current row (none until moved or bookmarked).
  [[nodiscard]] virtual std::unique_ptr<Recordset> Clone();

  /// A dynaset's rows known so far, by their numbers, in its order; until more are known.
  [[nodiscard]] virtual std::span<const std::int64_t> Ids() const;
  /// A dynaset of these rows in this order, whatever rows this one has.
  [[nodiscard]] virtual std::unique_ptr<Recordset> Only(std::vector<std::int64_t> ids) const;

  // Writing. Update without AddNew or Edit throws kUpdateWithoutEdit; a database open for reading
  // kReadOnlyDatabase. Update writes the changed fields only; kDataChanged when another user changed one of
  // them since it was shown, kRecordDeleted when the row is gone. After AddNew and Update the current row is
  // the one from before.
  virtual void AddNew();
  virtual void Edit();
  virtual void Update();
  virtual void CancelUpdate();

  // Table-type only.
  virtual void SetIndex(std::string_view name);
  /// `comparison` must be "=". `keys` are values for the index's fields in their order; fewer than it has
  /// match on the first ones. NoMatch() tells whether a row was found and made current.
  virtual void Seek(std::string_view comparison, std::initializer_list<SeekKey> keys);
  [[nodiscard]] virtual bool NoMatch() const;
};

}  // namespace varnlog::dao
