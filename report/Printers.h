#pragma once

#include <memory>
#include <vector>

#include <QPageSize>
#include <QPrinter>
#include <QString>

namespace varnlog::report {

/// The printers that can be chosen. Windows ask this and no printer directly, so that a test brings its own.
class Printers {
 public:
  virtual ~Printers() = default;
  [[nodiscard]] virtual std::vector<QString> Names() const = 0;
  /// "" when there is none.
  [[nodiscard]] virtual QString DefaultName() const = 0;
  /// The sizes of paper that a printer takes; empty when it does not say.
  [[nodiscard]] virtual std::vector<QPageSize> Papers(const QString& name) const = 0;
  /// Ready to be set up; the default printer for a name that is gone.
  [[nodiscard]] virtual std::unique_ptr<QPrinter> Open(const QString& name) const = 0;
};

/// Those of the system.
class SystemPrinters final : public Printers {
 public:
  [[nodiscard]] std::vector<QString> Names() const override;
  [[nodiscard]] QString DefaultName() const override;
  [[nodiscard]] std::vector<QPageSize> Papers(const QString& name) const override;
  [[nodiscard]] std::unique_ptr<QPrinter> Open(const QString& name) const override;
};

/// `wanted` when it is among the names, otherwise the default printer, otherwise the first.
[[nodiscard]] QString ChoosePrinter(const Printers& printers, const QString& wanted);

}  // namespace varnlog::report
