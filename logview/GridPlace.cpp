#include "logview/GridPlace.h"

#include <algorithm>

namespace varnlog::logview {

namespace {

// A day has a hundred exposures at most; more are not worth waiting for.
constexpr std::int64_t kMostRowsLookedAt = 2'000;

}  // namespace

std::optional<Place> PlaceIn(dao::Recordset& rows, const ui::TDBGrid& grid) {
  if (grid.Row() < 0) return std::nullopt;
  try {
    rows.SetAbsolutePosition(grid.Row());
    return Place{std::string(rows.Fields("tXrayCulIntIDPk").Text()), grid.Row(), grid.Col(),
                 rows.RecordCount()};
  } catch (const dao::EngineError&) {
    return std::nullopt;  // deleted meanwhile
  }
}

void ReturnTo(const Place& place, dao::Recordset& rows, ui::TDBGrid& grid) {
  const std::int64_t added = std::clamp<std::int64_t>(rows.RecordCount() - place.rows, 0, kMostRowsLookedAt);
  const std::int64_t last = std::min(place.row + added, rows.RecordCount() - 1);
  try {
    for (std::int64_t row = place.row; row <= last; ++row) {
      rows.SetAbsolutePosition(row);
      if (rows.Fields("tXrayCulIntIDPk").Text() != place.id) continue;
      grid.SetCurrentCell(static_cast<int>(row), place.column);
      return;
    }
  } catch (const dao::EngineError&) {
    return;  // deleted meanwhile
  }
}

}  // namespace varnlog::logview
