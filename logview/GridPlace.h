#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "db/dao/Recordset.h"
#include "ui/TDBGrid.h"

namespace varnlog::logview {

/// Where the user is: an exposure, wherever it stands among others.
struct Place {
  std::string id;
  std::int64_t row;
  int column;
  std::int64_t rows;
};

/// The place of the current cell; nothing when there is none, or when its exposure was deleted meanwhile.
[[nodiscard]] std::optional<Place> PlaceIn(dao::Recordset& rows, const ui::TDBGrid& grid);
/// To the same exposure, which as many rows as were added may have pushed down. When it is not found there,
/// the first row stays the current one.
void ReturnTo(const Place& place, dao::Recordset& rows, ui::TDBGrid& grid);

}  // namespace varnlog::logview
