#include "dialogs/frmPatSearch.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "core/EngineMessages.h"
#include "ui/ListView.h"
#include "ui/QtText.h"

namespace varnlog::dialogs {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kMillisecondsAfterTyping = 200;

}  // namespace

frmPatSearch::frmPatSearch(QWidget* parent, PatientSearch search, const core::TextLookup& texts,
                           core::UserDialog& user, const std::string& first)
    : QDialog(parent),
      search_(search),
      texts_(texts),
      user_(user),
      messages_(user, texts),
      txtSearch_(new QLineEdit),
      cmdSearch_(new QPushButton(Caption(texts, "PS_SEARCH"_key))),
      lvwPat_(new QTreeWidget),
      lblCount_(new QLabel) {
  setObjectName("frmPatSearch");
  setWindowTitle(Caption(texts, "PS_CAPTION"_key));
  auto* lblInfo = new QLabel(Caption(texts, "PS_TEXT"_key));
  lblInfo->setObjectName("lblInfo");
  lblInfo->setWordWrap(true);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(lblInfo);
  BuildSearchRow();
  BuildList();
  layout->addWidget(lvwPat_, 1);

  auto* buttons = new QDialogButtonBox;
  lblCount_->setObjectName("lblCount");
  cmdOK_ = buttons->addButton(Caption(texts, "GL_OK"_key), QDialogButtonBox::AcceptRole);
  cmdOK_->setObjectName("cmdOK");
  buttons->addButton(Caption(texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole)
      ->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmPatSearch::Ok);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* bottom = new QHBoxLayout;
  bottom->addWidget(lblCount_);
  bottom->addWidget(buttons, 1);
  layout->addLayout(bottom);

  typed_.setSingleShot(true);
  typed_.setInterval(kMillisecondsAfterTyping);
  connect(&typed_, &QTimer::timeout, this, &frmPatSearch::SearchWhileTyping);
  Propose(first);
  cmdSearch_->setDefault(true);
  txtSearch_->setFocus();
  resize(fontMetrics().averageCharWidth() * 76, fontMetrics().height() * 26);
}

void frmPatSearch::BuildSearchRow() {
  auto* lblName = new QLabel(Caption(texts_, "PS_NAME"_key));
  lblName->setObjectName("lblName");
  lblName->setBuddy(txtSearch_);
  txtSearch_->setObjectName("txtSearch");
  txtSearch_->setAccessibleName(ui::PlainCaption(texts_, "PS_NAME"_key));
  cmdSearch_->setObjectName("cmdSearch");
  connect(txtSearch_, &QLineEdit::textEdited, this, &frmPatSearch::TextEdited);
  connect(cmdSearch_, &QPushButton::clicked, this, &frmPatSearch::Search);

  auto* row = new QHBoxLayout;
  row->addWidget(lblName);
  row->addWidget(txtSearch_, 1);
  row->addWidget(cmdSearch_);
  static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

void frmPatSearch::BuildList() {
  lvwPat_->setObjectName("lvwPat");
  ui::MakeOneColumnList(*lvwPat_, Caption(texts_, "PS_CHOOSEPATIENT"_key));
  connect(lvwPat_, &QTreeWidget::currentItemChanged, this,
          [this](const QTreeWidgetItem* item) { Choose(item); });
  connect(lvwPat_, &QTreeWidget::itemClicked, this, [this](const QTreeWidgetItem* item) { Choose(item); });
  connect(lvwPat_, &QTreeWidget::itemDoubleClicked, this, &frmPatSearch::Ok);
}

void frmPatSearch::TextEdited() {
  cmdSearch_->setDefault(true);
  selected_.clear();
  typed_.start();
}

void frmPatSearch::List(const std::vector<std::string>& entries) {
  const QSignalBlocker quiet(lvwPat_);
  lvwPat_->clear();
  QList<QTreeWidgetItem*> items;
  items.reserve(static_cast<qsizetype>(entries.size()));
  for (const std::string& entry : entries)
    items.append(new QTreeWidgetItem(QStringList(ui::ToQString(entry))));
  lvwPat_->addTopLevelItems(items);
  lblCount_->setText(Caption(texts_, "PS_COUNT"_key, {{"lngCount", std::to_string(items.size())}}));
}

/// None of them is chosen until the user goes there.
void frmPatSearch::Propose(const std::string& first) {
  try {
    List(search_.Proposals(first));
    lblCount_->clear();
    if (lvwPat_->topLevelItemCount() == 0) return;
    const QSignalBlocker quiet(lvwPat_);
    lvwPat_->setCurrentItem(lvwPat_->topLevelItem(0));
  } catch (const dao::EngineError&) {
    lvwPat_->clear();  // who searches is told what is wrong
  }
}

void frmPatSearch::SearchWhileTyping() {
  const std::string text = ui::FromQString(txtSearch_->text().trimmed());
  if (text.empty()) return;
  try {
    List(search_.Search(text).entries);
    const QSignalBlocker quiet(lvwPat_);
    if (lvwPat_->topLevelItemCount() > 0) lvwPat_->setCurrentItem(lvwPat_->topLevelItem(0));
  } catch (const dao::EngineError&) {
    lvwPat_->clear();  // the search button says why
  }
}

void frmPatSearch::keyPressEvent(QKeyEvent* event) {
  // The box has no use for it, and the list is what lies below.
  if (event->key() == Qt::Key_Down && txtSearch_->hasFocus() && lvwPat_->currentItem() != nullptr) {
    lvwPat_->setFocus();
    Choose(lvwPat_->currentItem());
    return;
  }
  QDialog::keyPressEvent(event);
}

void frmPatSearch::Choose(const QTreeWidgetItem* item) {
  if (item == nullptr) return;
  selected_ = item->text(0);
  cmdOK_->setDefault(true);
}

void frmPatSearch::ReportError(const dao::EngineError& error) {
  // What is listed is not what was looked for.
  lvwPat_->clear();
  lblCount_->clear();
  // The query cannot hold such a name; what the engine makes of the rest tells the user nothing.
  const bool apostrophe = error.number() == dao::ErrorNumber::kSyntaxError &&
                          (txtSearch_->text() + selected_).contains(QLatin1Char('\''));
  if (apostrophe) {
    messages_.Inform("PS_ERR_APOSTROPHE"_key);
  } else {
    messages_.ShowText(core::EngineErrorText(texts_, error));
  }
  txtSearch_->setFocus();
}

void frmPatSearch::Search() {
  typed_.stop();
  const QString text = txtSearch_->text();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  try {
    const SearchResult result = search_.Search(ui::FromQString(text));
    QApplication::restoreOverrideCursor();
    Show(result, text.trimmed());
  } catch (const dao::EngineError& error) {
    QApplication::restoreOverrideCursor();
    ReportError(error);
  }
}

void frmPatSearch::Show(const SearchResult& result, const QString& searchText) {
  selected_.clear();
  lvwPat_->clear();
  QList<QTreeWidgetItem*> items;
  items.reserve(static_cast<qsizetype>(result.entries.size()));
  for (const std::string& entry : result.entries) {
    items.append(new QTreeWidgetItem(QStringList(ui::ToQString(entry))));
  }
  lvwPat_->addTopLevelItems(items);
  lblCount_->setText(Caption(texts_, "PS_COUNT"_key, {{"lngCount", std::to_string(items.size())}}));
  if (!items.isEmpty()) {
    txtSearch_->setText(ui::ToQString(result.searchBox));
    lvwPat_->setCurrentItem(items.front());
    return;
  }
  if (result.message) messages_.Inform(*result.message, {{"txtSearch", ui::FromQString(searchText)}});
  txtSearch_->setFocus();
  txtSearch_->selectAll();
}

void frmPatSearch::Ok() {
  try {
    switch (search_.Confirm(ui::FromQString(selected_), ui::FromQString(txtSearch_->text()))) {
      case Confirmation::kDone:
        accept();
        break;
      case Confirmation::kBeep:
        user_.Beep();
        break;
      case Confirmation::kSearchAgain:
        Search();
        break;
      case Confirmation::kNotUnique:
        messages_.Inform("PS_ERR_NOTUNIQUE"_key);
        break;
      case Confirmation::kNotFound:
        messages_.Inform("PS_ERR_NOPATIENT"_key, {{"txtSearch", ui::FromQString(selected_)}});
        break;
    }
  } catch (const dao::EngineError& error) {
    ReportError(error);
  }
}

}  // namespace varnlog::dialogs
