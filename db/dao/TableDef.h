#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/Field.h"

namespace varnlog::dao {

/// An index as callers see it: its fields in the order in which Seek takes their values. The order in which
/// it is stored can be another one (see Schema notes in docs/architecture.md).
struct Index {
  std::string name;
  std::vector<std::string> fields;
  bool isPrimary = false;
  bool isUnique = false;
};

class Storage;

/// The definition of one table of an open database, read when it is asked for.
class TableDef {
 public:
  TableDef(std::shared_ptr<Storage> storage, std::string name, std::vector<FieldDef> fields,
           std::vector<Index> indexes);

  [[nodiscard]] const std::string& Name() const { return name_; }
  [[nodiscard]] const std::vector<FieldDef>& Fields() const { return fields_; }
  [[nodiscard]] const std::vector<Index>& Indexes() const { return indexes_; }
  /// The field of that name, letter case ignored; throws kItemNotFound.
  [[nodiscard]] const FieldDef& FieldNamed(std::string_view name) const;
  [[nodiscard]] const Index& IndexNamed(std::string_view name) const;

  /// Adds a field to the table on disk; existing rows hold NULL (text) or false (yes/no) in it. Throws
  /// kObjectInvalid when there is a field of that name already, kNotSupported for a counter or a text without
  /// a size.
  void Append(const FieldDef& field);
  /// Adds an index to the table. Throws kDuplicateValue when rows are equal in a unique one, kObjectInvalid
  /// when there is an index of that name, kNotSupported on a server, which gets its indexes with its tables.
  void Append(const Index& index);

 private:
  std::shared_ptr<Storage> storage_;
  std::string name_;
  std::vector<FieldDef> fields_;
  std::vector<Index> indexes_;
};

}  // namespace varnlog::dao
