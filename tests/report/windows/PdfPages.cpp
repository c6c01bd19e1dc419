#include "tests/report/windows/PdfPages.h"

#include <QFile>
#include <QProcess>
#include <QtCore/qtestsupport_core.h>

namespace varnlog::report {

#ifdef _WIN32

namespace {

QString HostPath(const QString& path) {
  QProcess names;
  names.start("winepath", {"-u", path});
  names.waitForFinished();
  return QString::fromUtf8(names.readAllStandardOutput()).trimmed();
}

}  // namespace

// Wine starts programs of the system around it, but tells neither when they end nor what they say.
std::string PdfText(const std::string& file) {
  constexpr int kPatience = 30'000;
  const QString pdf = QString::fromStdString(file);
  QFile text(pdf + ".txt");
  const QString host = HostPath(pdf);
  QProcess::startDetached(
      "Z:\\bin\\sh", {"-c", R"(/usr/bin/pdftotext -layout "$0" - >"$0.part"; mv "$0.part" "$0.txt")", host});
  if (!QTest::qWaitFor([&text] { return text.exists(); }, kPatience) || !text.open(QIODevice::ReadOnly))
    return {};
  const std::string found = text.readAll().toStdString();
  text.close();
  text.remove();
  return found;
}

#else

std::string PdfText(const std::string& file) {
  QProcess reader;
  reader.start("pdftotext", {"-layout", QString::fromStdString(file), "-"});
  reader.waitForFinished();
  return reader.readAllStandardOutput().toStdString();
}

#endif

std::vector<int> FooterNumbers(const std::string& file, const std::string& word) {
  const std::string text = PdfText(file);
  std::vector<int> numbers;
  for (std::size_t at = text.find(word + " "); at != std::string::npos; at = text.find(word + " ", at + 1))
    numbers.push_back(std::stoi(text.substr(at + word.size() + 1)));
  return numbers;
}

}  // namespace varnlog::report
