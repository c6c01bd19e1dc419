#pragma once

#include <array>
#include <string>
#include <string_view>

#include "core/TextLookup.h"
#include "db/dao/Recordset.h"
#include "intake/CodeMappings.h"
#include "logview/Columns.h"
#include "platform/ShortDate.h"

namespace varnlog::logview {

/// Turns the current row of a record set over TXray into the texts of the grid. Looks the record set's fields
/// up once and keeps references to them and to the texts, so it lives no longer than those. The scheme is
/// asked once, so that the rows that an object shows never mix two.
class RowDisplay {
 public:
  RowDisplay(dao::Recordset& rows, const core::TextLookup& texts, const intake::ToothScheme& scheme,
             const platform::ShortDate& shortDate);

  /// The text of one column; "" outside 0 to 12. Throws dao::EngineError when the row cannot be read.
  [[nodiscard]] std::string Text(int column) const;

 private:
  class RememberedScheme final : public intake::ToothScheme {
   public:
    explicit RememberedScheme(const intake::ToothScheme& scheme) : isUS_(scheme.SchemeUS()) {}
    [[nodiscard]] bool SchemeUS() const override { return isUS_; }

   private:
    bool isUS_;
  };

  [[nodiscard]] std::string Patient() const;
  [[nodiscard]] std::string Region(const dao::Field& region) const;

  dao::Recordset& rows_;
  const core::TextLookup& texts_;
  RememberedScheme scheme_;
  platform::ShortDate shortDate_;
  dao::Field& taken_;
  dao::Field& name_;
  dao::Field& firstName_;
  dao::Field& birthday_;
  dao::Field& type_;
  std::array<dao::Field*, kColumnCount> stored_{};  // nullptr where a column is not one stored text
};

}  // namespace varnlog::logview
