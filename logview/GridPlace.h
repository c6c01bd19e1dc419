#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

/// What is seen and marked of a grid, by exposures.
struct View {
  struct Range {
    std::int64_t first;  // exposures
    std::int64_t last;
    int left;  // columns
    int right;
  };
  std::vector<Range> marked;
  std::optional<std::int64_t> top;  // the first row in sight
  std::optional<std::int64_t> current;
  int column = 0;
};

[[nodiscard]] View ViewOf(const dao::Recordset& rows, const ui::TDBGrid& grid);
/// Exposures that are not there any more are left out. Reads on in `rows` as far as is needed.
void Restore(const View& view, dao::Recordset& rows, ui::TDBGrid& grid);

/// The place of the current cell; nothing when there is none, or when its exposure was deleted meanwhile.
[[nodiscard]] std::optional<Place> PlaceIn(dao::Recordset& rows, const ui::TDBGrid& grid);
/// To the same exposure, which as many rows as were added may have pushed down. When it is not found there,
/// the first row stays the current one.
void ReturnTo(const Place& place, dao::Recordset& rows, ui::TDBGrid& grid);

}  // namespace varnlog::logview
