#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>

#include "legacy/Conversion.h"

namespace varnlog::app {

/// Shows how far the conversion of an old log is, once it takes longer than a moment, and hides behind the
/// conversion's own questions and messages. The cancel button, Escape and the title bar's cross end it.
class frmConvert final : public QDialog, public legacy::ConversionView {
 public:
  /// `user` shows the messages.
  frmConvert(QWidget* parent, const core::TextLookup& texts, core::UserDialog& user);

  // legacy::ConversionView
  void Begin(legacy::ConversionStep step, std::int64_t exposures) override;
  [[nodiscard]] bool Advance(std::int64_t exposuresDone) override;
  core::MessageAnswer Show(const core::Message& message) override;
  void Beep() override;

 protected:
  void reject() override { cancelled_ = true; }

 private:
  void ShowProgress(std::int64_t exposuresDone);

  const core::TextLookup& texts_;
  core::UserDialog& user_;
  QLabel* label_;
  QProgressBar* prgBar_;
  QElapsedTimer sinceBegin_;  // or since the last message
  QElapsedTimer sinceEvents_;
  legacy::ConversionStep step_ = legacy::ConversionStep::kReading;
  std::int64_t exposures_ = 0;
  bool cancelled_ = false;
};

}  // namespace varnlog::app
