#include <unistd.h>

#include <gmock/gmock.h>

#include "tests/cli/PdfText.h"
#include "tests/desktop/PrintServer.h"
#include "tests/desktop/RealProgram.h"

namespace varnlog::desktop {
namespace {

using core::literals::operator""_key;
using testing::ElementsAre;
using testing::HasSubstr;

class Printing : public RealProgram {
 protected:
  Printing() : RealProgram(200) {}

  void Puts(const char* number, const char* value) {
    desktop_.ClicksOn(ObjectNamed(number), number);
    desktop_.Sees([&](const Part& part) { return ObjectNamed(number)(part) && part.IsFocused(); }, number);
    desktop_.Presses("ctrl+a");
    desktop_.Types(value);
  }
};

TEST_F(Printing, ARangeOfPagesGoesToThePrinterOnceThereIsOne) {
  if (!PrintServer::CanRun()) GTEST_SKIP() << "no cupsd";
  PrintServer printers("/tmp/varnlog-printing-" + std::to_string(getpid()));
  desktop_.SetEnvironment("CUPS_SERVER", printers.Address());
  StartsAndUpdates();
  desktop_.Presses("ctrl+p");
  Answers("MN_ERR_NOPRINTER"_key, "GL_OK"_key);

  printers.AddsPrinter("Empfang");
  desktop_.Presses("ctrl+p");
  desktop_.ClicksOn(ObjectNamed("optRange"), "the choice of pages");
  Puts("numFrom", "2");
  Puts("numTo", "3");
  desktop_.ClicksOn(ObjectNamed("cmdOK"), "OK");
  std::vector<std::string> pages;
  Desktop::WaitFor([&] {
    pages = cli::PdfPages(printers.Printed("Empfang"), installation_);
    return !pages.empty();
  });
  EXPECT_THAT(pages, ElementsAre(HasSubstr("Seite 2 von"), HasSubstr("Seite 3 von")));
  Quits();
}

}  // namespace
}  // namespace varnlog::desktop
