#include "tests/report/windows/PdfPages.h"

#include <QProcess>

namespace varnlog::report {

std::string PdfText(const std::string& file) {
  QProcess reader;
  reader.start("pdftotext", {"-layout", QString::fromStdString(file), "-"});
  reader.waitForFinished();
  return reader.readAllStandardOutput().toStdString();
}

std::vector<int> FooterNumbers(const std::string& file, const std::string& word) {
  const std::string text = PdfText(file);
  std::vector<int> numbers;
  for (std::size_t at = text.find(word + " "); at != std::string::npos; at = text.find(word + " ", at + 1))
    numbers.push_back(std::stoi(text.substr(at + word.size() + 1)));
  return numbers;
}

}  // namespace varnlog::report
