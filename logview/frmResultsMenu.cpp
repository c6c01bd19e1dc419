#include <algorithm>
#include <limits>

#include <QMenu>

#include "logview/Selection.h"
#include "logview/frmResults.h"
#include "ui/QtText.h"

// The menus on cells and headings, and which columns are shown.

namespace varnlog::logview {

using core::literals::operator""_key;

namespace {

constexpr std::string_view kColumnsSection = "GridColumns";
constexpr std::string_view kHiddenKey = "Hidden";

}  // namespace

/// A menu that runs one thing for each of its entries.
class frmResults::Entries {
 public:
  Entries(frmResults& view, QMenu& menu) : view_(view), menu_(menu) {}

  template <typename Run>
  QAction* Add(core::TextKey key, const QKeySequence& shortcut, Run run) {
    QAction* const action = menu_.addAction(ui::Caption(view_.context_.texts, key));
    action->setShortcut(shortcut);
    QObject::connect(action, &QAction::triggered, &view_, run);
    return action;
  }

 private:
  frmResults& view_;
  QMenu& menu_;
};

void frmResults::ShowContextMenu(const QPoint& position) {
  QMenu menu(this);
  menu.setObjectName("mnuCell");
  Entries entries(*this, menu);
  entries.Add("RS_CONFIRM"_key, Qt::CTRL | Qt::Key_Return, [this] {
    if (!grid_->ConfirmValue()) context_.user.Beep();
  });
  entries.Add("RS_TAKEBACK"_key, QKeySequence::Undo, [this] { TakeBackEntry(); });
  menu.addSeparator();
  entries.Add("RS_COPY"_key, QKeySequence::Copy, [this] { grid_->CopySelection(); });
  entries.Add("RS_COPYHEADINGS"_key, Qt::CTRL | Qt::SHIFT | Qt::Key_C,
              [this] { grid_->CopySelection(ui::TDBGrid::Copied::kWithHeadings); });
  menu.addSeparator();
  entries.Add("RS_PATIENTROWS"_key, {}, [this] { ShowPatientOfRow(); })->setEnabled(grid_->Row() >= 0);
  entries.Add("RS_PATIENTPDF"_key, {}, [this] { SavePatientRecord(); })->setEnabled(grid_->Row() >= 0);
  entries.Add("RS_WHATISTHIS"_key, {}, [this] { ExplainCell(); })->setEnabled(grid_->Row() >= 0);
  menu.addSeparator();
  AddColumnMenu(menu);
  menu.exec(grid_->viewport()->mapToGlobal(position));
}

void frmResults::ShowHeadingMenu(const QPoint& position) {
  const int column = grid_->columnAt(position.x());
  QMenu menu(this);
  menu.setObjectName("mnuHeading");
  Entries entries(*this, menu);
  if (column > kNumberColumn) {
    entries.Add("RS_SORT"_key, {}, [this, column] { HeadClick(column); });
    menu.addSeparator();
  }
  if (column >= 0) {
    entries.Add("RS_HIDECOLUMN"_key, {}, [this, column] { ShowColumn(column, false); })
        ->setEnabled(ShownColumns().size() > 1);
    entries.Add("RS_WHATISTHIS"_key, {}, [this, column] { ExplainColumn(column); });
    menu.addSeparator();
  }
  AddColumnMenu(menu);
  menu.exec(grid_->viewport()->mapToGlobal(QPoint(position.x(), 0)));
}

void frmResults::AddColumnMenu(QMenu& menu) {
  QMenu* const columns = menu.addMenu(ui::Caption(context_.texts, "RS_COLUMNS"_key));
  const bool isLast = ShownColumns().size() == 1;
  for (int i = 0; i < kColumnCount; ++i) {
    const bool shown = !grid_->isColumnHidden(i);
    QAction* const action = columns->addAction(ui::ToQString(ColumnHeading(i, context_.texts)));
    action->setCheckable(true);
    action->setChecked(shown);
    action->setEnabled(!shown || !isLast);
    connect(action, &QAction::triggered, this, [this, i, shown] { ShowColumn(i, !shown); });
  }
  columns->addSeparator();
  Entries(*this, *columns).Add("RS_ALLCOLUMNS"_key, {}, [this] {
    for (int i = 0; i < kColumnCount; ++i) ShowColumn(i, true);
  });
}

void frmResults::ShowColumn(int column, bool shown) {
  if (!grid_->CommitEdit()) return;
  grid_->SetColumnShown(column, shown);
  std::string hidden;
  for (int i = 0; i < kColumnCount; ++i) {
    if (grid_->isColumnHidden(i)) hidden += "W" + std::to_string(i) + ";";
  }
  context_.ini.WriteString(kColumnsSection, kHiddenKey, hidden, context_.globals.IniFileGl);
}

void frmResults::HideStoredColumns() {
  const std::string hidden = context_.ini.ReadString(kColumnsSection, kHiddenKey, context_.globals.IniFileGl);
  for (int i = 0; i < kColumnCount && ShownColumns().size() > 1; ++i) {
    if (hidden.find("W" + std::to_string(i) + ";") != std::string::npos) grid_->SetColumnShown(i, false);
  }
}

void frmResults::ExplainColumn(int column) {
  const Column& explained = kColumns.at(static_cast<std::size_t>(column));
  context_.Messages().ShowText(
      ColumnHeading(column, context_.texts) + ": " + context_.texts.GetText(core::TextKey(explained.tipKey)),
      core::MessageIcon::kInformation);
}

void frmResults::ExplainCell() {
  const int column = grid_->Col();
  const Column& explained = kColumns.at(static_cast<std::size_t>(column));
  std::string text =
      ColumnHeading(column, context_.texts) + ": " + context_.texts.GetText(core::TextKey(explained.tipKey));
  for (const QString& more :
       {grid_->Model().TipText(grid_->Row(), column), grid_->Model().StateText(grid_->Row(), column)}) {
    if (!more.isEmpty()) text += "\r\r" + ui::FromQString(more);
  }
  context_.Messages().ShowText(text, core::MessageIcon::kInformation);
}

QString frmResults::CellTip(std::int64_t bookmark, int colIndex) {
  if (colIndex != kDateColumn && colIndex != kTypeColumn) return {};
  const auto rows = data1_->Clone();
  rows->SetBookmark(dao::Bookmark{bookmark});
  if (colIndex == kTypeColumn)
    return ui::ToQString(TypeName(rows->Fields("tXraySType").Text(), context_.texts));
  const platform::DateTime taken = rows->Fields("tXrayTs").Date();
  if (!taken.IsSet()) return {};
  constexpr std::size_t kTimeBegins = 11;
  return ui::Caption(context_.texts, "RS_TIP_TIME"_key, {{"strTime", taken.ToIso().substr(kTimeBegins)}});
}

/// Of the whole log, whatever is shown. The names are compared here and not by a query, which could not take
/// each of them.
void frmResults::SavePatientRecord() {
  try {
    if (!LocateRow(grid_->Row())) return;
    core::Selection patient;
    patient.SortSelectionGl = core::SelectionKind::kPatient;
    patient.strPatNameGl = data1_->Fields("tXraySName").Text();
    patient.strPatFirstnameGl = data1_->Fields("tXraySFirstname").Text();
    patient.dPatBirthdayGl = data1_->Fields("tXrayDBirthday").Date();
    const auto all = Log().OpenRecordset("SELECT TXray.* From TXray ORDER BY TXray.tXrayTs;",
                                         dao::RecordsetType::kDynaset);
    while (!all->Populate(std::numeric_limits<std::int32_t>::max())) {
    }
    std::vector<std::int64_t> found;
    ExposureScan scan(Log(), {"tXraySName", "tXraySFirstname", "tXrayDBirthday"}, all->Ids());
    while (!scan.Read(std::numeric_limits<std::int32_t>::max(), [&](const ExposureScan::Row& row) {
      const auto born = platform::DateTime::FromIso(row[2].text).value_or(platform::DateTime());
      if (row[0].text == patient.strPatNameGl && row[1].text == patient.strPatFirstnameGl &&
          born == patient.dPatBirthdayGl)
        found.push_back(row[3].integer);
    })) {
    }
    const dao::IdSet wanted(found);
    std::vector<std::int64_t> inOrder;
    std::ranges::copy_if(all->Ids(), std::back_inserter(inOrder),
                         [&wanted](std::int64_t id) { return wanted.Contains(id); });
    host_.SaveRecord(all->Only(std::move(inOrder)),
                     BuildSelection(patient, context_.texts, context_.shortDate).headline);
  } catch (const dao::EngineError& error) {
    ShowEditError(error);
  }
}

void frmResults::ShowPatientOfRow() {
  try {
    if (!LocateRow(grid_->Row())) return;
    const std::string name(data1_->Fields("tXraySName").Text());
    const std::string firstName(data1_->Fields("tXraySFirstname").Text());
    const platform::DateTime birthday = data1_->Fields("tXrayDBirthday").Date();
    // The selection of a patient cannot take such names, nor one without all three.
    const bool selectable = (name + firstName).find('\'') == std::string::npos && !name.empty() &&
                            !firstName.empty() && birthday.IsSet();
    core::Selection wanted = context_.globals.CurrentSelection();
    wanted.SortSelectionGl = selectable ? core::SelectionKind::kPatient : core::SelectionKind::kAll;
    if (selectable) {
      wanted.strPatNameGl = name;
      wanted.strPatFirstnameGl = firstName;
      wanted.dPatBirthdayGl = birthday;
    }
    EndFind();
    host_.ShowSelection(wanted);
    if (selectable) return;
    find_->Begin();
    find_->SetText(FormatPatient(name, firstName, birthday, context_.shortDate));
  } catch (const dao::EngineError& error) {
    ShowEditError(error);
  }
}

}  // namespace varnlog::logview
