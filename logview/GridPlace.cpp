#include "logview/GridPlace.h"

#include <algorithm>

namespace varnlog::logview {

namespace {

// A day has a hundred exposures at most; more are not worth waiting for.
constexpr std::int64_t kMostRowsLookedAt = 2'000;

/// The row of an exposure in the grid.
std::optional<int> RowOf(std::int64_t exposure, dao::Recordset& rows) {
  constexpr std::int64_t kRowsPerSlice = 100'000;
  for (std::size_t from = 0;;) {
    const auto ids = rows.Ids().subspan(from);
    const auto found = std::ranges::find(ids, exposure);
    if (found != ids.end()) return static_cast<int>(from + static_cast<std::size_t>(found - ids.begin()));
    from += ids.size();
    if (rows.Populate(kRowsPerSlice) && from == rows.Ids().size()) return std::nullopt;
  }
}

}  // namespace

View ViewOf(const dao::Recordset& rows, const ui::TDBGrid& grid) {
  constexpr int kMostRanges = 100;
  View view;
  const auto ids = rows.Ids();
  const auto at = [&ids](int row) {
    return row >= 0 && row < std::ssize(ids) ? std::optional(ids[static_cast<std::size_t>(row)])
                                             : std::nullopt;
  };
  view.top = at(grid.rowAt(0));
  view.current = at(grid.Row());
  view.column = grid.Col();
  for (const QItemSelectionRange& range : grid.selectionModel()->selection()) {
    const auto first = at(range.top());
    const auto last = at(range.bottom());
    if (first && last && view.marked.size() < kMostRanges)
      view.marked.push_back({*first, *last, range.left(), range.right()});
  }
  return view;
}

void Restore(const View& view, dao::Recordset& rows, ui::TDBGrid& grid) {
  const auto row = [&rows](std::optional<std::int64_t> exposure) {
    return exposure ? RowOf(*exposure, rows) : std::nullopt;
  };
  const auto current = row(view.current);
  const auto top = row(view.top);
  QItemSelection marked;
  for (const View::Range& range : view.marked) {
    const auto first = row(range.first);
    const auto last = row(range.last);
    if (!first || !last) continue;
    marked.select(grid.model()->index(*first, range.left), grid.model()->index(*last, range.right));
  }
  grid.SetApproximateCount(rows.RecordCount());
  if (current) grid.SetCurrentCell(*current, view.column);
  if (!marked.isEmpty()) grid.selectionModel()->select(marked, QItemSelectionModel::ClearAndSelect);
  if (top) grid.scrollTo(grid.model()->index(*top, view.column), QAbstractItemView::PositionAtTop);
}

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
