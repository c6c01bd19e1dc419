#include "ui/ListView.h"

#include <QHeaderView>

namespace varnlog::ui {

void MakeOneColumnList(QTreeWidget& list, const QString& heading) {
  list.setColumnCount(1);
  list.setHeaderLabel(heading);
  list.header()->setStretchLastSection(true);
  list.header()->setSectionsClickable(false);
  list.setRootIsDecorated(false);
  list.setItemsExpandable(false);
  list.setUniformRowHeights(true);
  list.setAllColumnsShowFocus(true);
  list.setSelectionMode(QAbstractItemView::SingleSelection);
  list.setSelectionBehavior(QAbstractItemView::SelectRows);
  list.setEditTriggers(QAbstractItemView::NoEditTriggers);
  // Names are told apart by their ends, the birth dates.
  list.setTextElideMode(Qt::ElideMiddle);
  if (list.accessibleName().isEmpty()) list.setAccessibleName(heading);
}

}  // namespace varnlog::ui
