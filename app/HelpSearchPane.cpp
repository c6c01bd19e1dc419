#include "app/HelpSearchPane.h"

#include <QVBoxLayout>

#include "app/HelpCollection.h"
#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;
using ui::Caption;

HelpSearchPane::HelpSearchPane(QHelpSearchEngine& engine, const core::TextLookup& texts, Open open)
    : engine_(engine),
      texts_(texts),
      open_(std::move(open)),
      words_(new QLineEdit),
      found_(new QLabel),
      results_(new QListWidget) {
  words_->setObjectName("txtWords");
  words_->setClearButtonEnabled(true);
  words_->setAccessibleName(ui::PlainCaption(texts, "HP_WORDS"_key));
  found_->setObjectName("lblFound");
  results_->setObjectName("lvwResults");
  results_->setWordWrap(true);
  results_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  results_->setAccessibleName(ui::PlainCaption(texts, "HP_RESULTS"_key));
  auto* label = new QLabel(Caption(texts, "HP_WORDS"_key));
  label->setBuddy(words_);
  setFocusProxy(words_);

  auto* layout = new QVBoxLayout(this);
  for (QWidget* widget : {static_cast<QWidget*>(label), static_cast<QWidget*>(words_),
                          static_cast<QWidget*>(found_), static_cast<QWidget*>(results_)}) {
    layout->addWidget(widget);
  }

  connect(words_, &QLineEdit::textChanged, this, [this] { Search(); });
  connect(words_, &QLineEdit::returnPressed, this, [this] {
    if (results_->count() > 0) results_->setCurrentRow(0);
    OpenPage(results_->currentItem());
  });
  connect(results_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) { OpenPage(item); });
  connect(results_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) { OpenPage(item); });
  connect(&engine_, &QHelpSearchEngine::indexingFinished, this, [this] {
    indexed_ = true;
    Search();
  });
  connect(&engine_, &QHelpSearchEngine::searchingFinished, this, [this](int count) { ShowResults(count); });
  engine_.reindexDocumentation();
}

void HelpSearchPane::Search() {
  const QStringList words = SearchWords(words_->text());
  if (words.isEmpty()) {
    results_->clear();
    found_->clear();
  } else if (indexed_) {
    engine_.search(SearchQuery(words));
  }
}

void HelpSearchPane::ShowResults(int count) {
  results_->clear();
  // The box may have been emptied while the search ran.
  if (SearchWords(words_->text()).isEmpty()) return;
  for (const QHelpSearchResult& result : engine_.searchResults(0, count)) {
    auto* item = new QListWidgetItem(result.title(), results_);
    item->setData(Qt::UserRole, result.url());
  }
  found_->setText(ui::Caption(texts_, "HP_FOUND"_key, {{"lngCount", std::to_string(count)}}));
}

void HelpSearchPane::OpenPage(const QListWidgetItem* item) {
  if (item != nullptr) open_(item->data(Qt::UserRole).toUrl(), SearchWords(words_->text()));
}

}  // namespace varnlog::app
