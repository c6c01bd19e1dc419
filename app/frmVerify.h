#pragma once

#include <functional>

#include <QDialog>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>

#include "core/TextLookup.h"
#include "db/dao/DBEngine.h"

namespace varnlog::app {

/// Recomputes the seals of the open log, and tells whether the log still holds the state of an anchor that
/// the user types or scans. The log is only read.
class frmVerify final : public QDialog {
 public:
  /// `onDone` hears of each verification that came to its end, and whether nothing was found.
  frmVerify(QWidget* parent, dao::Database& log, const core::TextLookup& texts,
            std::function<void(bool isSound)> onDone);

  /// While it runs, cancels it instead.
  void reject() override;

 private:
  void Start();
  void Run();
  [[nodiscard]] bool ShowProgress(std::int64_t done, std::int64_t all);
  void SetRunning(bool running);

  dao::Database& log_;
  const core::TextLookup& texts_;
  const std::function<void(bool isSound)> onDone_;
  QLineEdit* txtAnchor_;
  QProgressBar* prgBar_;
  QPlainTextEdit* txtResult_;
  QPushButton* cmdVerify_;
  QElapsedTimer sinceEvents_;
  bool running_ = false;
  bool cancelled_ = false;
};

}  // namespace varnlog::app
