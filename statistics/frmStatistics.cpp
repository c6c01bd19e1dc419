#include "statistics/frmStatistics.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include "charts/ChartFile.h"
#include "charts/ChartWidget.h"
#include "charts/PagePainter.h"
#include "db/modCommon.h"
#include "exports/RowWriter.h"
#include "exports/Separator.h"
#include "platform/SafeFile.h"
#include "statistics/StatisticsRows.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"
#include "ui/SaveFolder.h"

namespace varnlog::statistics {

using charts::ChartFormat;
using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kCharacters = 110;
constexpr int kLines = 26;
constexpr int kMostCharacters = 180;
constexpr int kMostLines = 50;
constexpr double kPartOfWidth = 0.75;  // of the screen
constexpr double kPartOfHeight = 0.6;

class TextOf final : public exports::TextSink {
 public:
  void Write(std::string_view text) override { text_.append(text); }
  [[nodiscard]] const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

QTableWidget* NewTable(const charts::Page& page) {
  auto* table = new QTableWidget(static_cast<int>(page.table.rows.size()),
                                 static_cast<int>(page.table.headings.size()));
  table->setObjectName("tblNumbers");
  table->setAccessibleName(ui::ToQString(page.title));
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setAlternatingRowColors(true);
  table->setTabKeyNavigation(false);
  table->verticalHeader()->hide();
  table->horizontalHeader()->setSectionsClickable(false);
  for (int column = 0; column < table->columnCount(); ++column) {
    const QString heading = ui::ToQString(page.table.headings[static_cast<std::size_t>(column)]);
    table->setHorizontalHeaderItem(column, new QTableWidgetItem(heading));
  }
  for (int row = 0; row < table->rowCount(); ++row) {
    for (int column = 0; column < table->columnCount(); ++column) {
      const auto& value = page.table.rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
      auto* item = new QTableWidgetItem(charts::ValueText(value));
      if (value.number) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
      table->setItem(row, column, item);
    }
  }
  table->resizeColumnsToContents();
  return table;
}

}  // namespace

frmStatistics::frmStatistics(QWidget* parent, const StatisticsContext& context,
                             std::vector<charts::Page> pages, const std::string& headline,
                             const std::string& summary)
    : QDialog(parent),
      context_(context),
      pages_(std::move(pages)),
      title_(core::FilledText(context.texts, "ST_CAPTION"_key, {{"strHeadline", headline}})),
      tabs_(new QTabWidget) {
  setObjectName("frmStatistics");
  setWindowTitle(ui::ToQString(title_));
  auto* facts = new QLabel(ui::ToQString(summary));
  facts->setObjectName("lblSummary");
  facts->setTextFormat(Qt::PlainText);
  facts->setWordWrap(true);
  facts->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  tabs_->setObjectName("tabPages");
  for (const charts::Page& page : pages_) tabs_->addTab(NewTab(page), ui::ToQString(page.name));

  auto* buttons = new QDialogButtonBox;
  const auto button = [&](core::TextKey key, const char* name, QDialogButtonBox::ButtonRole role) {
    auto* added = buttons->addButton(Caption(context_.texts, key), role);
    added->setObjectName(name);
    added->setAutoDefault(false);
    return added;
  };
  connect(button("ST_PRINT"_key, "cmdPrint", QDialogButtonBox::ActionRole), &QPushButton::clicked, this,
          &frmStatistics::Print);
  connect(button("ST_SAVE"_key, "cmdSave", QDialogButtonBox::ActionRole), &QPushButton::clicked, this,
          &frmStatistics::Save);
  button("GL_CLOSE"_key, "cmdClose", QDialogButtonBox::RejectRole)->setDefault(true);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(facts);
  layout->addWidget(tabs_, 1);
  layout->addWidget(buttons);
  const QSizeF room = screen()->availableSize();
  resize(QSizeF(room.width() * kPartOfWidth, room.height() * kPartOfHeight)
             .toSize()
             .boundedTo(
                 {fontMetrics().averageCharWidth() * kMostCharacters, fontMetrics().height() * kMostLines})
             .expandedTo({fontMetrics().averageCharWidth() * kCharacters, fontMetrics().height() * kLines}));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  tabs_->setFocus();
}

QWidget* frmStatistics::NewTab(const charts::Page& page) {
  auto* parts = new QSplitter(Qt::Vertical);
  auto* upper = new QWidget;
  auto* layout = new QVBoxLayout(upper);
  auto* title = new QLabel(ui::ToQString(page.title));
  title->setTextFormat(Qt::PlainText);
  layout->addWidget(title);
  layout->addWidget(new charts::ChartWidget(page), 1);
  auto* note = new QLabel(ui::ToQString(page.note));
  note->setTextFormat(Qt::PlainText);
  note->setVisible(!page.note.empty());
  layout->addWidget(note);
  parts->addWidget(upper);
  parts->addWidget(NewTable(page));
  parts->setStretchFactor(0, 2);
  parts->setStretchFactor(1, 1);
  parts->setChildrenCollapsible(false);
  return parts;
}

const charts::Page& frmStatistics::CurrentPage() const {
  return pages_[static_cast<std::size_t>(tabs_->currentIndex())];
}

void frmStatistics::Print() {
  const QString heading = ui::ToQString(title_);
  context_.print.PrintSheets(
      this,
      {.title = title_,
       .count =
           [&](const QPageLayout& layout) { return charts::PagesOnPaper(pages_, heading).Count(layout); },
       .paint =
           [&](QPagedPaintDevice& device, report::PageRange range) {
             return charts::PagesOnPaper(pages_, heading).Paint(device, {range.first, range.last});
           }});
}

std::string frmStatistics::ContentFor(const std::string& file) const {
  switch (charts::ChartFormatOf(file).value_or(ChartFormat::kPdf)) {
    case ChartFormat::kPng:
      return charts::PngOf(CurrentPage()).toStdString();
    case ChartFormat::kSvg:
      return charts::SvgOf(CurrentPage()).toStdString();
    case ChartFormat::kCsv: {
      TextOf text;
      WriteTable(CurrentPage().table, *exports::MakeCsvWriter(text, {.separator = exports::ListSeparatorOf(
                                                                         context_.ini, context_.iniFile),
                                                                     .byteOrderMark = true}));
      return text.Text();
    }
    case ChartFormat::kPdf:
      break;
  }
  return charts::PdfOf(pages_, title_, context_.print.Page()).toStdString();
}

void frmStatistics::Save() {
  const core::Messages messages(context_.user, context_.texts);
  ui::SaveFolder folder(context_.ini, context_.iniFile, "Export", "Folder");
  ui::CFileDialog dialog;
  dialog.SetDialogTitle(context_.texts.GetText("ST_SAVE_TITLE"_key));
  dialog.SetHelpTopic("ST_SAVE_TITLE");
  dialog.SetFilter(context_.texts.GetText("ST_FILTER"_key));
  dialog.SetDefaultExt("pdf");
  dialog.SetInitDir(folder.Last());
  dialog.SetFileName(ui::FileNameFor(title_, ".pdf"));
  const auto file = dialog.ShowSave(this);
  if (!file) return;
  folder.Keep(db::FolderPart(*file));
  if (!charts::ChartFormatOf(*file)) return messages.Critical("ST_ERR_FORMAT"_key, {{"strFile", *file}});
  const auto error = platform::WriteWholeFile(platform::ToPath(*file), ContentFor(*file),
                                              platform::IfTaken::kReplace, platform::ToPath(context_.log));
  if (error) return messages.Critical("ST_ERR_SAVE"_key, {{"strFile", *file}, {"strError", error.message()}});
  messages.Inform("ST_SAVED"_key, {{"strFile", *file}});
}

}  // namespace varnlog::statistics
