#include <filesystem>
#include <set>
#include <string_view>
#include <vector>

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QScrollBar>
#include <QSpinBox>
#include <QTabBar>
#include <QTableView>
#include <QTreeView>
#include <gtest/gtest.h>

#include "core/Languages.h"
#include "tests/Paths.h"
#include "tools/screenshots/WindowTour.h"

namespace varnlog::app::test {
namespace {

/// A screen of 1920 by 1080 at 200 %, without the desktop's bars.
constexpr QSize kSmallScreen(940, 480);

std::string NameOf(const QWidget& widget) {
  return (widget.objectName().isEmpty() ? QString::fromLatin1(widget.metaObject()->className())
                                        : widget.objectName())
      .toStdString();
}

template <typename Widget>
std::vector<Widget*> Shown(const QWidget& window) {
  std::vector<Widget*> shown;
  for (Widget* widget : window.findChildren<Widget*>()) {
    if (widget->isVisibleTo(&window)) shown.push_back(widget);
  }
  return shown;
}

/// Looks at each window of the tour as a strict user does.
class Inspector {
 public:
  void LookAt(const QString& name, QWidget& window) {
    where_ = name.toStdString();
    Labels(window);
    Buttons(window);
    Headings(window);
    Names(window);
    if (const auto* dialog = qobject_cast<QDialog*>(&window)) {
      // Qt's own dialog has its own rules.
      if (dialog->objectName() == "CFileDialog") return;
      EXPECT_TRUE(dialog->size() == dialog->size().boundedTo(kSmallScreen)) << where_ << " is too large";
      DialogLetters(*dialog);
    } else if (const auto* main = qobject_cast<QMainWindow*>(&window)) {
      MenuLetters(*main->menuBar());
      const QWidget* front = main->findChild<QMdiArea*>()->activeSubWindow();
      for (const auto* grid : Shown<QTableView>(front != nullptr ? *front : window))
        EXPECT_EQ(grid->horizontalScrollBar()->maximum(), 0) << where_ << " has columns out of sight";
    }
  }

 private:
  void Fits(const QWidget& widget, const QSize& needed, const QString& text) {
    const QSize size = widget.size();
    EXPECT_TRUE(needed.width() <= size.width() && needed.height() <= size.height())
        << where_ << ", " << NameOf(widget) << ": \"" << text.toStdString() << "\" needs " << needed.width()
        << "x" << needed.height() << " and has " << size.width() << "x" << size.height();
  }

  void Labels(const QWidget& window) {
    for (const QLabel* label : Shown<QLabel>(window)) {
      // The path in the status bar is cut on purpose and shown in full by its tooltip.
      if (label->text().isEmpty() || label->objectName() == "pnlFile") continue;
      const QSize needed =
          label->wordWrap() ? QSize(0, label->heightForWidth(label->width())) : label->sizeHint();
      Fits(*label, needed, label->text());
    }
  }

  void Buttons(const QWidget& window) {
    for (const QAbstractButton* button : Shown<QAbstractButton>(window)) {
      if (!button->text().isEmpty()) Fits(*button, button->sizeHint(), button->text());
    }
    for (const QTabBar* tabs : Shown<QTabBar>(window)) Fits(*tabs, tabs->sizeHint(), tabs->tabText(0));
    for (const QSpinBox* number : Shown<QSpinBox>(window)) Fits(*number, number->sizeHint(), number->text());
    for (const QComboBox* list : Shown<QComboBox>(window)) {
      if (!list->lineEdit()) Fits(*list, QSize(list->sizeHint().width(), 0), list->currentText());
    }
  }

  void Headings(const QWidget& window) {
    for (const QHeaderView* header : Shown<QHeaderView>(window)) {
      if (header->orientation() != Qt::Horizontal) continue;
      // The mark of the sorted column stands beside the text.
      const QStyle& style = *header->style();
      const int mark = header->sectionsClickable() ? style.pixelMetric(QStyle::PM_HeaderMarkSize) : 0;
      const int extra = 2 * style.pixelMetric(QStyle::PM_HeaderMargin) + mark;
      for (int i = 0; i < header->count(); ++i) {
        const QString text = header->model()->headerData(i, Qt::Horizontal).toString();
        EXPECT_LE(header->fontMetrics().horizontalAdvance(text) + extra, header->sectionSize(i))
            << where_ << ", heading " << text.toStdString();
      }
    }
  }

  /// Whatever takes the focus can be read out.
  void Names(const QWidget& window) {
    for (const QWidget* widget : Shown<QWidget>(window)) {
      const bool isPart = qobject_cast<const QLineEdit*>(widget) != nullptr &&
                          (qobject_cast<const QAbstractSpinBox*>(widget->parent()) != nullptr ||
                           qobject_cast<const QComboBox*>(widget->parent()) != nullptr);
      const bool isInteresting = qobject_cast<const QAbstractButton*>(widget) != nullptr ||
                                 qobject_cast<const QLineEdit*>(widget) != nullptr ||
                                 qobject_cast<const QComboBox*>(widget) != nullptr ||
                                 qobject_cast<const QAbstractSpinBox*>(widget) != nullptr ||
                                 qobject_cast<const QAbstractItemView*>(widget) != nullptr;
      if (isPart || !isInteresting || widget->focusPolicy() == Qt::NoFocus) continue;
      QAccessibleInterface* face = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(widget));
      ASSERT_NE(face, nullptr) << where_;
      EXPECT_FALSE(face->text(QAccessible::Name).isEmpty())
          << where_ << ", " << NameOf(*widget) << " has no name";
    }
  }

  void Letter(std::set<QString>& used, const QString& text, const std::string& place) {
    const QString letter = QKeySequence::mnemonic(text).toString();
    if (letter.isEmpty()) return;
    const QString mark = letter.section('+', -1);
    const bool isEasilyTyped = mark[0].script() == QChar::Script_Cyrillic || mark[0] < QChar(0x80) ||
                               QStringLiteral("ÖÜ").contains(mark);
    EXPECT_TRUE(isEasilyTyped) << place << ": " << text.toStdString();
    EXPECT_TRUE(used.insert(letter).second)
        << place << ": " << letter.toStdString() << " twice, again in " << text.toStdString();
  }

  void DialogLetters(const QDialog& dialog) {
    std::set<QString> used;
    for (const QAbstractButton* button : Shown<QAbstractButton>(dialog)) Letter(used, button->text(), where_);
    for (const QLabel* label : Shown<QLabel>(dialog)) {
      if (label->buddy() != nullptr) Letter(used, label->text(), where_);
    }
    for (const QTabBar* tabs : Shown<QTabBar>(dialog)) {
      for (int i = 0; i < tabs->count(); ++i) Letter(used, tabs->tabText(i), where_);
    }
  }

  void MenuLetters(const QMenuBar& bar) {
    std::set<QString> menus;
    for (const QAction* menu : bar.actions()) {
      Letter(menus, menu->text(), where_);
      if (menu->menu() == nullptr) continue;
      std::set<QString> entries;
      for (const QAction* entry : menu->menu()->actions()) {
        Letter(entries, entry->text(), where_ + ", " + menu->text().toStdString());
      }
    }
  }

  std::string where_;
};

class TextsFit : public testing::TestWithParam<std::string_view> {};

TEST_P(TextsFit, EveryWindowShowsItsTextsInFullAndCanBeReadOutAndReachedByKeys) {
  const std::string language(GetParam());
  const auto folder = std::filesystem::temp_directory_path() /
                      ("varnlog looks " + std::to_string(QCoreApplication::applicationPid()) + language);
  const tools::DemoPractice practice(folder, {VARNLOG_PROGRAM_DIR, VARNLOG_SUITE_DIR, VARNLOG_OLD_LOG},
                                     language);
  Inspector inspector;
  int windows = 0;
  tools::WindowTour tour(practice, language, [&](const QString& name, QWidget& window) {
    ++windows;
    inspector.LookAt(QString::fromStdString(language) + ' ' + name, window);
  });
  ASSERT_NO_THROW(tour.Run());
  EXPECT_GT(windows, 30);
}

std::vector<std::string_view> Codes() {
  std::vector<std::string_view> codes;
  for (const core::LanguageName& language : core::kLanguages) codes.push_back(language.code);
  return codes;
}

INSTANTIATE_TEST_SUITE_P(Languages, TextsFit, testing::ValuesIn(Codes()),
                         [](const auto& language) { return std::string(language.param); });

}  // namespace
}  // namespace varnlog::app::test
