#include "logview/HistoryPane.h"

#include <QHeaderView>

#include "core/EngineMessages.h"
#include "core/LogLayout.h"
#include "ui/QtText.h"

namespace varnlog::logview {

using namespace core::literals;

namespace {

constexpr core::TextKey kHeadings[] = {"HI_WHEN"_key, "HI_WHO"_key, "HI_WHERE"_key,
                                       "HI_WHAT"_key, "HI_OLD"_key, "HI_NEW"_key};
// In digits of the font, in the order of the headings; the last takes what is left.
constexpr int kWidths[] = {20, 28, 18, 34, 24, 24};

std::string TypeOf(dao::Database& log, std::int64_t exposure) {
  const auto row = log.OpenRecordset(std::string(core::kExposureTable), dao::RecordsetType::kTable);
  row->SetIndex("PrimaryKey");
  row->Seek("=", {exposure});
  return row->NoMatch() ? std::string() : std::string(row->Fields("tXraySType").Text());
}

}  // namespace

HistoryPane::HistoryPane(const core::TextLookup& texts, const intake::ToothScheme& scheme,
                         const platform::ShortDate& shortDate)
    : texts_(texts),
      text_(texts, scheme, shortDate),
      content_(new QStackedWidget),
      lvwHistory_(new QTreeWidget),
      lblNote_(new QLabel) {
  setObjectName("pneHistory");
  setWindowTitle(ui::Caption(texts, "HI_CAPTION"_key));
  setAllowedAreas(Qt::BottomDockWidgetArea | Qt::TopDockWidgetArea);
  lvwHistory_->setObjectName("lvwHistory");
  lvwHistory_->setAccessibleName(windowTitle());
  QStringList headings;
  for (const core::TextKey key : kHeadings) headings << ui::Caption(texts, key);
  lvwHistory_->setHeaderLabels(headings);
  lvwHistory_->setRootIsDecorated(false);
  lvwHistory_->setUniformRowHeights(true);
  lvwHistory_->setAllColumnsShowFocus(true);
  for (int i = 0; i < lvwHistory_->columnCount(); ++i)
    lvwHistory_->setColumnWidth(i, fontMetrics().horizontalAdvance(QLatin1Char('0')) * kWidths[i]);
  lblNote_->setObjectName("lblHistoryNote");
  lblNote_->setTextFormat(Qt::PlainText);
  lblNote_->setAlignment(Qt::AlignCenter);
  lblNote_->setWordWrap(true);
  content_->addWidget(lvwHistory_);
  content_->addWidget(lblNote_);
  content_->setFocusProxy(lvwHistory_);
  setWidget(content_);
  Clear();
}

void HistoryPane::Clear() {
  setWindowTitle(ui::Caption(texts_, "HI_CAPTION"_key));
  ShowNote(ui::Caption(texts_, "HI_NONE"_key));
}

void HistoryPane::ShowNote(const QString& note) {
  lvwHistory_->clear();
  lblNote_->setText(note);
  content_->setCurrentWidget(lblNote_);
}

void HistoryPane::Show(dao::Database& log, std::optional<std::int64_t> exposure) {
  if (!exposure) return Clear();
  setWindowTitle(ui::Caption(texts_, "HI_CAPTIONOF"_key, {{"lngNumber", std::to_string(*exposure)}}));
  try {
    const auto entries = seals::ReadHistory(log, *exposure);
    if (entries.empty()) return ShowNote(ui::Caption(texts_, "HI_UNKNOWN"_key));
    AddEntries(entries, TypeOf(log, *exposure));
  } catch (const dao::EngineError& error) {
    ShowNote(ui::ToQString(core::EngineErrorText(texts_, error)));
  }
}

void HistoryPane::AddEntries(const std::vector<seals::HistoryEntry>& entries, const std::string& type) {
  QList<QTreeWidgetItem*> rows;
  for (const seals::HistoryEntry& entry : entries) {
    const HistoryLine line = text_.Line(entry, type);
    QStringList cells;
    for (const std::string& cell : {line.when, line.who, line.where, line.what, line.before, line.after})
      cells << ui::ToQString(cell).simplified();
    auto* row = new QTreeWidgetItem(cells);
    for (int i = 0; i < cells.size(); ++i) row->setToolTip(i, ui::PlainToolTip(cells[i]));
    rows << row;
  }
  lvwHistory_->clear();
  lvwHistory_->addTopLevelItems(rows);
  lvwHistory_->setCurrentItem(rows.first());
  content_->setCurrentWidget(lvwHistory_);
}

}  // namespace varnlog::logview
