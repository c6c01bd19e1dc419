#pragma once

namespace varnlog::ui {

class TDBGrid;

/// From now on every TDBGrid shows itself to screen readers through an interface of its own, whose children
/// are the headings and the cells on the screen. The stock one makes an object for each cell there is. Can be
/// called any number of times.
void InstallGridAccessibility();

/// Tell screen readers, if one runs, where the user is now.
void AnnounceCurrentCell(TDBGrid& grid);
void AnnounceSelection(TDBGrid& grid);

}  // namespace varnlog::ui
