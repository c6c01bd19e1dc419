#pragma once

#include <QString>
#include <QTreeWidget>

namespace varnlog::ui {

/// Turns a tree widget into a plain list of one column, headed by `heading` and always as wide as the list:
/// whole rows are selected, one at a time, and a long list costs what is seen of it.
void MakeOneColumnList(QTreeWidget& list, const QString& heading);

}  // namespace varnlog::ui
