#include <algorithm>

#include <QLocale>

#include "logview/frmResults.h"
#include "ui/QtText.h"

// The line below the list: what the marked exposures, or all that are shown, add up to.

namespace varnlog::logview {

using core::literals::operator""_key;

namespace {

constexpr std::int64_t kRowsPerSlice = 20'000;

// Behind what somebody is waiting for.
constexpr int kMillisecondsUntilBegin = 60;

// Another workstation is writing.
constexpr int kMillisecondsUntilRetry = 1'000;

std::string NumberText(double number, int decimals) {
  return ui::FromQString(QLocale().toString(number, 'f', decimals));
}

}  // namespace

void frmResults::BuildSums() {
  sums_->setObjectName("lblSums");
  sums_->setTextFormat(Qt::PlainText);
  sums_->setMargin(sums_->fontMetrics().averageCharWidth() / 2);
  sums_->setToolTip(ui::Caption(context_.texts, "RS_SUMS_TIP"_key));
  // A narrow window cuts it off rather than keeping its width.
  sums_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  sumTimer_.setSingleShot(true);
  connect(&sumTimer_, &QTimer::timeout, this, &frmResults::ReadForSums);
  connect(grid_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    // One row more or less of all that are shown says nothing new.
    if (sumsOfMarked_ || MarkedRows() > 1) BeginSums();
  });
}

std::int64_t frmResults::MarkedRows() const {
  std::int64_t rows = 0;
  for (const QItemSelectionRange& range : grid_->selectionModel()->selection()) rows += range.height();
  return rows;
}

void frmResults::BeginSums() {
  tally_.reset();
  // What stood there was of other rows.
  sums_->clear();
  if (data1_) sumTimer_.start(kMillisecondsUntilBegin);
}

std::vector<std::int64_t> frmResults::ExposuresToSum() const {
  const auto ids = data1_->Ids();
  if (!sumsOfMarked_) return {ids.begin(), ids.end()};
  std::vector<std::int64_t> marked;
  for (const QItemSelectionRange& range : grid_->selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom() && row < std::ssize(ids); ++row)
      marked.push_back(ids[static_cast<std::size_t>(row)]);
  }
  // Cells of a row may be marked one by one.
  std::ranges::sort(marked);
  marked.erase(std::ranges::unique(marked).begin(), marked.end());
  return marked;
}

void frmResults::ReadForSums() {
  if (!data1_ || !populated_ || filterTimer_.isActive()) return;
  try {
    if (!tally_) {
      sumsOfMarked_ = MarkedRows() > 1;
      tally_.emplace(Log(), ExposuresToSum());
    }
    if (!tally_->Read(kRowsPerSlice)) return sumTimer_.start(0);
    ShowSums();
  } catch (const dao::EngineError& error) {
    // Whoever needs the rows says what is wrong with them.
    if (error.number() == dao::ErrorNumber::kFileInUse) return sumTimer_.start(kMillisecondsUntilRetry);
    sums_->clear();
  }
}

void frmResults::ShowSums() {
  const Retakes& counted = tally_->Counted();
  const Doses& doses = tally_->OfDose();
  std::string text = core::FilledText(context_.texts, sumsOfMarked_ ? "RS_SUMS_MARKED"_key : "RS_SUMS"_key,
                                      {{"lngCount", std::to_string(counted.exposures)},
                                       {"lngRepeats", std::to_string(counted.repeats)},
                                       {"lngNotDiag", std::to_string(counted.notDiagnostic)}});
  if (const auto spread = doses.Spread()) {
    text += core::FilledText(context_.texts, "RS_SUMS_DOSE"_key,
                             {{"strSum", NumberText(doses.Sum(), doses.Decimals())},
                              {"strMedian", NumberText(spread->median, doses.Decimals())}});
  }
  if (doses.Unread() > 0) {
    text += core::FilledText(context_.texts, "RS_SUMS_UNREAD"_key,
                             {{"lngUnread", std::to_string(doses.Unread())}});
  }
  sums_->setText(ui::ToQString(text));
  tally_.reset();
}

}  // namespace varnlog::logview
