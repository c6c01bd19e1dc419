#include "app/frmHelp.h"

#include <algorithm>

#include <QHelpContentWidget>
#include <QHelpIndexWidget>
#include <QHelpLink>
#include <QKeyEvent>
#include <QLabel>
#include <QShortcut>
#include <QTabBar>
#include <QTextDocument>
#include <QVBoxLayout>

#include "ui/QtText.h"
#include "ui/Theme.h"

namespace varnlog::app {

using core::TextKey;
using core::literals::operator""_key;
using ui::Caption;

namespace {

enum Tab : int { kContentsTab, kIndexTab, kSearchTab };

constexpr int kMostZoom = 10;

/// Takes its pages out of the help file.
class HelpPage final : public QTextBrowser {
 public:
  explicit HelpPage(const QHelpEngineCore& engine) : engine_(engine) {}

 protected:
  QVariant loadResource(int type, const QUrl& name) override {
    if (name.scheme() == QLatin1String("qthelp")) return engine_.fileData(name);
    return QTextBrowser::loadResource(type, name);
  }

 private:
  const QHelpEngineCore& engine_;
};

/// Down in the filter's box goes on into the list below it.
class DownToList final : public QObject {
 public:
  DownToList(QLineEdit* box, QAbstractItemView* list) : QObject(box), list_(list) {
    box->installEventFilter(this);
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    const bool down =
        event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down;
    if (!down) return QObject::eventFilter(watched, event);
    list_->setFocus();
    return true;
  }

 private:
  QAbstractItemView* list_;
};

}  // namespace

frmHelp::frmHelp(HelpCollection& help, const core::TextLookup& texts)
    : help_(help),
      texts_(texts),
      toolbar_(new QToolBar),
      tabs_(new QTabWidget),
      page_(new HelpPage(help.Engine())),
      splitter_(new QSplitter) {
  setObjectName("frmHelp");
  setWindowTitle(Caption(texts, "HP_CAPTION"_key));
  setWindowIcon(ui::ProgramIcon());
  page_->setObjectName("txtPage");
  page_->setAccessibleName(Caption(texts, "HP_PAGE"_key));
  page_->document()->setDocumentMargin(page_->fontMetrics().height());
  search_ = new HelpSearchPane(*help.Engine().searchEngine(), texts,
                               [this](const QUrl& page, const QStringList& words) {
                                 page_->setSource(page);
                                 Highlight(words);
                               });
  tabs_->setObjectName("tabHelp");
  tabs_->addTab(ContentsPane(), Caption(texts, "HP_CONTENTS"_key));
  tabs_->addTab(IndexPane(), Caption(texts, "HP_INDEX"_key));
  tabs_->addTab(search_, Caption(texts, "HP_SEARCH"_key));

  // No tab hides behind arrows, however long its caption is.
  tabs_->setMinimumWidth(tabs_->tabBar()->sizeHint().width() + tabs_->fontMetrics().averageCharWidth());
  splitter_->setChildrenCollapsible(false);
  splitter_->addWidget(tabs_);
  splitter_->addWidget(page_);
  splitter_->setStretchFactor(1, 1);
  BuildToolbar();
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(toolbar_);
  layout->addWidget(splitter_, 1);

  AddKey(QKeySequence(Qt::Key_Escape), [this] { close(); });
  AddKey(QKeySequence(Qt::Key_F1), [this] { ShowPage(QStringLiteral("help")); });
  AddKey(QKeySequence(Qt::Key_F6), [this] { SwitchPane(); });
  AddKey(QKeySequence::Find, [this] { ShowSearch(); });
  AddKey(QKeySequence(Qt::CTRL | Qt::Key_0), [this] { ResetZoom(); });
  // The signal comes before the browser itself takes the new page for its source.
  connect(page_, &QTextBrowser::sourceChanged, this, &frmHelp::MarkInContents, Qt::QueuedConnection);
  resize(fontMetrics().averageCharWidth() * 130, fontMetrics().height() * 38);
}

QAction* frmHelp::AddCommand(const char* name, const char* icon, TextKey key, const QKeySequence& shortcut) {
  const QString text = ui::PlainCaption(texts_, key);
  QAction* action = toolbar_->addAction(ui::ThemedIcon(QLatin1String(icon)), text);
  action->setObjectName(QLatin1String(name));
  action->setShortcut(shortcut);
  action->setToolTip(QStringLiteral("%1 (%2)").arg(text, shortcut.toString(QKeySequence::NativeText)));
  return action;
}

void frmHelp::AddKey(const QKeySequence& key, std::function<void()> run) {
  connect(new QShortcut(key, this), &QShortcut::activated, this, std::move(run));
}

void frmHelp::BuildToolbar() {
  toolbar_->setObjectName("tlbHelp");
  toolbar_->setWindowTitle(Caption(texts_, "MN_TOOLBAR"_key));
  QAction* back = AddCommand("cmdBack", "Back", "HP_BACK"_key, QKeySequence(Qt::ALT | Qt::Key_Left));
  QAction* forward =
      AddCommand("cmdForward", "Forward", "HP_FORWARD"_key, QKeySequence(Qt::ALT | Qt::Key_Right));
  QAction* home = AddCommand("cmdHome", "Home", "HP_HOME"_key, QKeySequence(Qt::ALT | Qt::Key_Home));
  toolbar_->addSeparator();
  QAction* smaller = AddCommand("cmdZoomOut", "ZoomOut", "DRS_ZOOMOUT"_key, QKeySequence::ZoomOut);
  QAction* larger = AddCommand("cmdZoomIn", "ZoomIn", "DRS_ZOOMIN"_key, QKeySequence::ZoomIn);
  back->setEnabled(false);
  forward->setEnabled(false);
  connect(back, &QAction::triggered, page_, &QTextBrowser::backward);
  connect(forward, &QAction::triggered, page_, &QTextBrowser::forward);
  connect(home, &QAction::triggered, this, [this] { ShowPage(QStringLiteral("overview")); });
  connect(smaller, &QAction::triggered, this, [this] { Zoom(-1); });
  connect(larger, &QAction::triggered, this, [this] { Zoom(1); });
  connect(page_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(page_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
}

QWidget* frmHelp::ContentsPane() {
  QHelpContentWidget* contents = help_.Engine().contentWidget();
  contents->setObjectName("trvContents");
  contents->setAccessibleName(ui::PlainCaption(texts_, "HP_CONTENTS"_key));
  contents->setRootIsDecorated(false);
  const auto open = [this](const QModelIndex& index) {
    const QHelpContentItem* item = help_.Engine().contentModel()->contentItemAt(index);
    if (item != nullptr && item->url() != page_->source()) page_->setSource(item->url());
  };
  // Selecting is enough: a page is shown as the arrows pass it.
  connect(contents->selectionModel(), &QItemSelectionModel::currentChanged, this, open);
  connect(help_.Engine().contentModel(), &QHelpContentModel::contentsCreated, this, [this] {
    MarkInContents();
    FitContents();
  });
  return contents;
}

QWidget* frmHelp::IndexPane() {
  QHelpIndexWidget* index = help_.Engine().indexWidget();
  index->setObjectName("lvwIndex");
  index->setAccessibleName(ui::PlainCaption(texts_, "HP_INDEX"_key));
  keyword_ = new QLineEdit;
  keyword_->setObjectName("txtKeyword");
  keyword_->setClearButtonEnabled(true);
  keyword_->setAccessibleName(ui::PlainCaption(texts_, "HP_KEYWORD"_key));
  auto* label = new QLabel(Caption(texts_, "HP_KEYWORD"_key));
  label->setBuddy(keyword_);
  new DownToList(keyword_, index);
  connect(keyword_, &QLineEdit::textChanged, index,
          [index](const QString& text) { index->filterIndices(text); });
  connect(keyword_, &QLineEdit::returnPressed, index, &QHelpIndexWidget::activateCurrentItem);
  connect(index, &QListView::clicked, index, &QHelpIndexWidget::activateCurrentItem);
  connect(index, &QHelpIndexWidget::documentActivated, this,
          [this](const QHelpLink& document) { page_->setSource(document.url); });

  auto* pane = new QWidget;
  auto* layout = new QVBoxLayout(pane);
  layout->addWidget(label);
  layout->addWidget(keyword_);
  layout->addWidget(index, 1);
  return pane;
}

void frmHelp::ShowContents() {
  tabs_->setCurrentIndex(kContentsTab);
  ShowPage(QStringLiteral("overview"));
  help_.Engine().contentWidget()->setFocus();
}

void frmHelp::ShowIndex() {
  tabs_->setCurrentIndex(kIndexTab);
  if (page_->source().isEmpty()) ShowPage(QStringLiteral("overview"));
  keyword_->setFocus();
  keyword_->selectAll();
}

void frmHelp::ShowSearch() {
  tabs_->setCurrentIndex(kSearchTab);
  if (page_->source().isEmpty()) ShowPage(QStringLiteral("overview"));
  search_->setFocus();
}

void frmHelp::ShowPage(const QString& name) {
  page_->setSource(HelpCollection::Page(name));
}

void frmHelp::MarkInContents() {
  QHelpContentWidget* contents = help_.Engine().contentWidget();
  const QModelIndex index = contents->indexOf(page_->source());
  if (index.isValid()) contents->setCurrentIndex(index);
}

void frmHelp::FitContents() {
  // The base class offers the hint to everybody, the tree to nobody.
  const QAbstractItemView& contents = *help_.Engine().contentWidget();
  const int wanted = contents.sizeHintForColumn(0) + tabs_->width() - contents.viewport()->width();
  const int least = tabs_->minimumWidth();
  const int left = std::clamp(wanted, least, std::max(least, splitter_->width() / 2));
  splitter_->setSizes({left, splitter_->width() - left});
}

void frmHelp::Highlight(const QStringList& words) {
  QList<QTextEdit::ExtraSelection> found;
  for (const QString& word : words) {
    for (QTextCursor at = page_->document()->find(word); !at.isNull();
         at = page_->document()->find(word, at)) {
      QTextEdit::ExtraSelection selection;
      selection.cursor = at;
      selection.format.setBackground(palette().highlight());
      selection.format.setForeground(palette().highlightedText());
      found.append(selection);
    }
  }
  page_->setExtraSelections(found);
}

void frmHelp::Zoom(int steps) {
  const int zoom = std::clamp(zoom_ + steps, -kMostZoom / 2, kMostZoom);
  page_->zoomIn(zoom - zoom_);
  zoom_ = zoom;
}

void frmHelp::ResetZoom() {
  Zoom(-zoom_);
}

void frmHelp::SwitchPane() {
  if (!page_->hasFocus()) {
    page_->setFocus();
  } else if (tabs_->currentIndex() == kIndexTab) {
    keyword_->setFocus();
  } else {
    tabs_->currentWidget()->setFocus();
  }
}

}  // namespace varnlog::app
