#include <deque>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QPointer>
#include <QPrintPreviewWidget>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report/PrintCommands.h"
#include "report/frmPreview.h"
#include "tests/logview/LogviewFakes.h"
#include "tests/report/ReportFixture.h"
#include "tests/report/windows/PdfPages.h"
#include "tests/support/Table.h"
#include "ui/FileDialog.h"

namespace varnlog::report {
namespace {

using platform::DateTime;
using testing::ElementsAre;
using testing::HasSubstr;

/// Two printers that print into files.
class FilePrinters final : public Printers {
 public:
  explicit FilePrinters(std::filesystem::path folder, int count = 2)
      : folder_(std::move(folder)), count_(count) {}

  [[nodiscard]] std::vector<QString> Names() const override {
    std::vector<QString> names = {"Empfang", "Keller"};
    names.resize(static_cast<std::size_t>(count_));
    return names;
  }
  [[nodiscard]] QString DefaultName() const override { return "Keller"; }
  [[nodiscard]] std::vector<QPageSize> Papers(const QString& name) const override {
    if (name == "Keller") return {};
    return {QPageSize(QPageSize::A3), QPageSize(QPageSize::A4), QPageSize(QPageSize::A5)};
  }
  [[nodiscard]] std::unique_ptr<QPrinter> Open(const QString& name) const override {
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setOutputFileName(
        QString::fromStdString((folder_ / platform::ToPath(name.toStdString())).string()) + ".pdf");
    return printer;
  }

 private:
  std::filesystem::path folder_;
  int count_;
};

class ListeningUser final : public test::FakeUser {
 public:
  core::MessageAnswer Show(const core::Message& message) override {
    for (const QWidget* window : QApplication::topLevelWidgets()) {
      EXPECT_NE(window->objectName(), "frmReportProgress") << "would come up over " << message.text;
    }
    texts.push_back(message.text);
    return FakeUser::Show(message);
  }

  std::vector<std::string> texts;
};

class PrintTest : public testing::Test {
 protected:
  PrintTest() {
    printers_ = std::make_unique<FilePrinters>(log.Folder());
    MakeCommands();
  }

  void MakeCommands() {
    commands.emplace(
        PrintContext{texts, user, clock, shortDate, ini, iniFile, [] { return std::string("Praxis"); },
                     [] { return std::string(); }, [] { return std::string("D"); },
                     [this] {
                       return PrintSource{log.Rows(), "Aufnahmen: 2024"};
                     }},
        std::move(printers_));
  }

  /// Each modal dialog that opens is given to the next of these, which ends it.
  using Answer = std::function<void(QDialog&)>;
  void Answers(std::deque<Answer> answers) {
    answers_ = std::move(answers);
    AwaitDialog();
  }

  void AwaitDialog() {
    QTimer::singleShot(0, &life_, [this] {
      if (answers_.empty()) return;
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (dialog == nullptr || !dialog->objectName().startsWith("frmPrinter")) {
        AwaitDialog();
        return;
      }
      const Answer answer = std::move(answers_.front());
      answers_.pop_front();
      AwaitDialog();
      answer(*dialog);
    });
  }

  static void Press(QDialog& dialog, const char* button) {
    dialog.findChild<QAbstractButton*>(button)->click();
  }
  static void Choose(QDialog& dialog, const char* printer, int from, int to) {
    dialog.findChild<QComboBox*>("cmbPrinter")->setCurrentText(printer);
    dialog.findChild<QAbstractButton*>("optRange")->click();
    dialog.findChild<QSpinBox*>("numFrom")->setValue(from);
    dialog.findChild<QSpinBox*>("numTo")->setValue(to);
    Press(dialog, "cmdOK");
  }

  [[nodiscard]] std::string Printed(const char* printer) const {
    return (log.Folder() / printer).string() + ".pdf";
  }

  LogFile log;
  GivenTexts texts{{{"DRS_ERR_RANGE", "1 bis $lngPages$"},
                    {"DRS_PAGEOF", "Seite $lngPage$ von $lngPages$"},
                    {"DRS_SAVED", "gespeichert: $strFile$"},
                    {"DRS_ERR_SAVE", "nicht gespeichert: $strFile$"}}};
  ListeningUser user;
  platform::FixedClock clock{*DateTime::FromCivil(2024, 2, 9)};
  platform::ShortDate shortDate;
  logview::FakeSettings ini;
  std::string iniFile;
  std::optional<PrintCommands> commands;
  std::deque<Answer> answers_;
  QObject life_;  // timers end with it
  std::unique_ptr<Printers> printers_;
};

TEST_F(PrintTest, ARangeIsPrintedOnTheChosenPrinterAndTheChoicesAreKept) {
  log.Add({}, 200);
  Answers({[](QDialog& dialog) {
             EXPECT_EQ(dialog.findChild<QComboBox*>("cmbPrinter")->currentText(), "Keller");  // the default
             EXPECT_FALSE(dialog.findChild<QSpinBox*>("numFrom")->isEnabled());
             EXPECT_FALSE(dialog.findChild<QCheckBox*>("chkCollate")->isEnabled());
             dialog.findChild<QSpinBox*>("numCopies")->setValue(2);
             EXPECT_TRUE(dialog.findChild<QCheckBox*>("chkCollate")->isEnabled());
             Choose(dialog, "Empfang", 2, 3);
           },
           [](QDialog& dialog) {
             EXPECT_EQ(dialog.findChild<QComboBox*>("cmbPrinter")->currentText(), "Empfang");
             EXPECT_EQ(dialog.findChild<QSpinBox*>("numCopies")->value(), 2);
             EXPECT_TRUE(dialog.findChild<QAbstractButton*>("optRange")->isChecked());
             EXPECT_EQ(dialog.findChild<QSpinBox*>("numTo")->value(), 3);
             Press(dialog, "cmdCancel");
           }});
  commands->Print(nullptr);
  EXPECT_THAT(FooterNumbers(Printed("Empfang"), "DRS_PAGE"), ElementsAre(2, 3));
  commands->Print(nullptr);
  EXPECT_TRUE(answers_.empty());
  EXPECT_FALSE(std::filesystem::exists(platform::ToPath(Printed("Keller"))));
  EXPECT_THAT(user.texts, ElementsAre());
}

TEST_F(PrintTest, PagesThatDoNotExistAreAskedForAgain) {
  log.Add({}, 10);
  Answers({[](QDialog& dialog) { Choose(dialog, "Keller", 2, 2); },
           [](QDialog& dialog) { Choose(dialog, "Keller", 1, 7); }});
  commands->Print(nullptr);
  EXPECT_THAT(user.texts, ElementsAre("1 bis 1"));
  EXPECT_THAT(FooterNumbers(Printed("Keller"), "DRS_PAGE"), ElementsAre(1));
}

TEST_F(PrintTest, WithoutAPrinterNothingButAPreviewIsPossible) {
  printers_ = std::make_unique<FilePrinters>(log.Folder(), 0);
  MakeCommands();
  commands->Print(nullptr);
  commands->PageSetup(nullptr);
  EXPECT_THAT(user.texts, ElementsAre("MN_ERR_NOPRINTER", "MN_ERR_NOPRINTER"));
  const std::unique_ptr<frmPreview> preview(commands->Preview(nullptr));
  EXPECT_NE(preview, nullptr);
}

TEST_F(PrintTest, PaperIsChosenInTheSetupAndUsedAfterwards) {
  Answers({[](QDialog& dialog) {
             dialog.findChild<QComboBox*>("cmbPrinter")->setCurrentText("Empfang");
             auto* paper = dialog.findChild<QComboBox*>("cmbPaper");
             EXPECT_EQ(paper->count(), 3);
             paper->setCurrentText(QPageSize::name(QPageSize::A5));
             Press(dialog, "cmdOK");
           },
           [](QDialog& dialog) { Choose(dialog, "Empfang", 1, 1); }});
  commands->PageSetup(nullptr);
  EXPECT_EQ(commands->Page().pageSize().id(), QPageSize::A5);
  EXPECT_EQ(commands->Page().orientation(), QPageLayout::Landscape);
  commands->Print(nullptr);
  EXPECT_THAT(PdfText(Printed("Empfang")), HasSubstr("DRS_EMPTY"));

  printers_ = std::make_unique<FilePrinters>(log.Folder());
  MakeCommands();
  Answers({[](QDialog& dialog) {
    EXPECT_EQ(dialog.findChild<QComboBox*>("cmbPrinter")->currentText(), "Empfang");
    EXPECT_TRUE(dialog.findChild<QAbstractButton*>("optAll")->isChecked()) << "no pages are left out unasked";
    Press(dialog, "cmdCancel");
  }});
  commands->Print(nullptr);
  EXPECT_EQ(commands->Page().pageSize().id(), QPageSize::A5) << "the next start";
}

TEST_F(PrintTest, AFailedSelectionIsReported) {
  commands.emplace(PrintContext{texts, user, clock, shortDate, ini, iniFile, [] { return std::string(); },
                                [] { return std::string(); }, [] { return std::string("D"); },
                                []() -> PrintSource {
                                  throw dao::EngineError(dao::ErrorNumber::kSyntaxError, "bad apostrophe");
                                }},
                   std::make_unique<FilePrinters>(log.Folder()));
  EXPECT_EQ(commands->Preview(nullptr), nullptr);
  commands->Print(nullptr);
  EXPECT_THAT(user.texts, ElementsAre("3075: GL_ERR_3075", "3075: GL_ERR_3075"));
}

class PreviewTest : public PrintTest {
 protected:
  void Open(int rows) {
    log.Add({}, rows);
    preview.reset(commands->Preview(nullptr));
    ASSERT_NE(preview, nullptr);
    preview->resize(900, 700);
    preview->show();
    QApplication::processEvents();
  }
  [[nodiscard]] QAction* Command(const char* name) const { return preview->findChild<QAction*>(name); }

  std::unique_ptr<frmPreview> preview;
};

TEST_F(PreviewTest, TurnsItsPages) {
  Open(200);
  const int pages = preview->PageCount();
  ASSERT_GE(pages, 4);
  auto* number = preview->findChild<QSpinBox*>("numPage");
  EXPECT_EQ(number->text(), QString("Seite 1 von %1").arg(pages));
  EXPECT_FALSE(Command("cmdPreviousPage")->isEnabled());
  const Table<const char*, int> steps = {{"cmdNextPage", 2},
                                         {"cmdNextPage", 3},
                                         {"cmdPreviousPage", 2},
                                         {"cmdLastPage", pages},
                                         {"cmdFirstPage", 1}};
  for (const auto& [command, page] : steps) {
    Command(command)->trigger();
    EXPECT_EQ(preview->CurrentPage(), page) << command;
    EXPECT_EQ(number->value(), page);
    EXPECT_EQ(Command("cmdNextPage")->isEnabled(), page < pages);
    EXPECT_EQ(Command("cmdFirstPage")->isEnabled(), page > 1);
  }
  number->setValue(3);
  EXPECT_EQ(preview->CurrentPage(), 3);
  preview->GoToPage(999);
  EXPECT_EQ(preview->CurrentPage(), pages);
  // Whatever its length, only the page that is shown has been drawn.
  EXPECT_EQ(preview->findChild<QPrintPreviewWidget*>()->pageCount(), 1);
}

TEST_F(PreviewTest, Zooms) {
  Open(5);
  const auto* view = preview->findChild<QPrintPreviewWidget*>();
  auto* zoom = preview->findChild<QComboBox*>("cmbZoom");
  zoom->setCurrentIndex(zoom->findData(200));
  emit zoom->activated(zoom->currentIndex());
  EXPECT_NEAR(view->zoomFactor(), 2, 0.01);
  EXPECT_EQ(zoom->placeholderText(), "200 %");
  Command("cmdZoomOut")->trigger();
  EXPECT_NEAR(view->zoomFactor(), 1.6, 0.01);
  Command("cmdZoomIn")->trigger();
  EXPECT_NEAR(view->zoomFactor(), 2, 0.01);
  Command("cmdFitWidth")->trigger();
  EXPECT_EQ(view->zoomMode(), QPrintPreviewWidget::FitToWidth);
}

TEST_F(PreviewTest, PrintsAndSavesWhatItShows) {
  Open(100);
  preview->GoToPage(2);
  Answers({[](QDialog& dialog) { Choose(dialog, "Keller", 1, 2); }});
  Command("cmdPrint")->trigger();
  EXPECT_THAT(FooterNumbers(Printed("Keller"), "DRS_PAGE"), ElementsAre(1, 2));

  std::vector<std::string> folders;
  std::string file = (log.Folder() / "gespeichert.pdf").string();
  ui::CFileDialog::AnswerWith([&](const ui::CFileDialog& dialog) -> std::optional<std::string> {
    EXPECT_EQ(dialog.FileName(), "Aufnahmen 2024.pdf");
    folders.push_back(dialog.InitDir());
    return file;
  });
  Command("cmdSavePdf")->trigger();
  EXPECT_EQ(static_cast<int>(FooterNumbers(file, "DRS_PAGE").size()), preview->PageCount());
  const std::string saved = file;
  file = (log.Folder() / "kein Ordner" / "x.pdf").string();
  Command("cmdSavePdf")->trigger();
  ui::CFileDialog::AnswerWith({});
  EXPECT_THAT(folders,
              ElementsAre(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation).toStdString(),
                          log.Folder().string()))
      << "first the user's documents, then where the last one went";
  EXPECT_THAT(user.texts, ElementsAre("gespeichert: " + saved, "nicht gespeichert: " + file));
  preview->GoToPage(1);
  EXPECT_EQ(preview->CurrentPage(), 1);
}

TEST_F(PreviewTest, ALogThatCannotBeReadAnyMoreIsReportedOnceThePageIsDrawn) {
  Open(200);
  log.Database().Close();
  preview->GoToPage(3);
  EXPECT_THAT(user.texts, ElementsAre());
  QApplication::processEvents();
  ASSERT_FALSE(user.texts.empty());
}

}  // namespace
}  // namespace varnlog::report
