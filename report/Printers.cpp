#include "report/Printers.h"

#include <algorithm>

#include <QPrinterInfo>

namespace varnlog::report {

std::vector<QString> SystemPrinters::Names() const {
  const QStringList names = QPrinterInfo::availablePrinterNames();
  return {names.begin(), names.end()};
}

QString SystemPrinters::DefaultName() const {
  return QPrinterInfo::defaultPrinterName();
}

std::vector<QPageSize> SystemPrinters::Papers(const QString& name) const {
  const QList<QPageSize> papers = QPrinterInfo::printerInfo(name).supportedPageSizes();
  return {papers.begin(), papers.end()};
}

std::unique_ptr<QPrinter> SystemPrinters::Open(const QString& name) const {
  const QPrinterInfo info = QPrinterInfo::printerInfo(name);
  return info.isNull() ? std::make_unique<QPrinter>(QPrinter::HighResolution)
                       : std::make_unique<QPrinter>(info, QPrinter::HighResolution);
}

QString ChoosePrinter(const Printers& printers, const QString& wanted) {
  const std::vector<QString> names = printers.Names();
  for (const QString& name : {wanted, printers.DefaultName()}) {
    if (std::ranges::find(names, name) != names.end()) return name;
  }
  return names.empty() ? QString() : names.front();
}

}  // namespace varnlog::report
