#include "ui/frmAbout.h"

#include <algorithm>

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "ui/QtText.h"
#include "ui/Theme.h"

namespace varnlog::ui {

using core::literals::operator""_key;

namespace {

constexpr int kIconSize = 64;
constexpr int kFewestRows = 4;

QLabel* PlainLabel(const QString& text, const char* name) {
  auto* label = new QLabel(text);
  label->setObjectName(name);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

QHBoxLayout* ProgramPart(const core::TextLookup& texts, const std::string& version) {
  auto* icon = new QLabel;
  icon->setPixmap(ProgramIcon().pixmap(QSize(kIconSize, kIconSize), icon->devicePixelRatioF()));
  QLabel* title = PlainLabel(Caption(texts, "GL_TITLE"_key), "lblTitle");
  QFont font = title->font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.4);
  title->setFont(font);

  auto* words = new QVBoxLayout;
  words->addWidget(title);
  words->addWidget(PlainLabel(Caption(texts, "AB_VERSION"_key, {{"strVersion", version}}), "lblVersion"));
  words->addWidget(PlainLabel(Caption(texts, "AB_TEXT"_key), "lblText"));
  auto* part = new QHBoxLayout;
  part->addWidget(icon, 0, Qt::AlignTop);
  part->addLayout(words, 1);
  return part;
}

QTreeWidget* LibraryList(const core::TextLookup& texts, const std::vector<UsedLibrary>& libraries) {
  auto* list = new QTreeWidget;
  list->setObjectName("lvwLibraries");
  list->setAccessibleName(PlainCaption(texts, "AB_LICENCES"_key));
  list->setRootIsDecorated(false);
  list->setHeaderLabels({Caption(texts, "AB_LIBRARY"_key), Caption(texts, "AB_LICENCE"_key)});
  for (const UsedLibrary& library : libraries) {
    list->addTopLevelItem(new QTreeWidgetItem(
        {ToQString(library.name + ' ' + library.version).trimmed(), ToQString(library.licence)}));
  }
  list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  // Nothing in it can be chosen.
  list->setSelectionMode(QAbstractItemView::NoSelection);
  list->setFocusPolicy(Qt::NoFocus);
  list->setFixedHeight(list->header()->sizeHint().height() + 2 * list->frameWidth() +
                       list->sizeHintForRow(0) * std::max(list->topLevelItemCount() + 1, kFewestRows));
  return list;
}

}  // namespace

UsedLibrary QtLibrary() {
  return {"Qt", qVersion(), "LGPL 3"};
}

frmAbout::frmAbout(const core::TextLookup& texts, const std::string& version,
                   const std::vector<UsedLibrary>& libraries, QWidget* parent)
    : QDialog(parent) {
  setObjectName("frmAbout");
  setWindowTitle(Caption(texts, "AB_CAPTION"_key));
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(ProgramPart(texts, version));
  layout->addSpacing(8);
  QTreeWidget* list = LibraryList(texts, libraries);
  auto* heading = new QLabel(Caption(texts, "AB_LICENCES"_key));
  heading->setBuddy(list);
  layout->addWidget(heading);
  layout->addWidget(list);
  layout->addStretch(1);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  QPushButton* ok = buttons->button(QDialogButtonBox::Ok);
  if (const QString text = Caption(texts, "GL_OK"_key); !text.isEmpty()) ok->setText(text);
  ok->setIcon(QIcon());
  ok->setObjectName("cmdOK");
  ok->setDefault(true);
  ok->setFocus();
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  layout->addWidget(buttons);
  const int width = fontMetrics().averageCharWidth() * 72;
  resize(width, layout->totalHeightForWidth(width));
}

}  // namespace varnlog::ui
