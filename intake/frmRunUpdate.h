#pragma once

#include <string>

#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>

#include "intake/UpdateRun.h"

namespace varnlog::intake {

/// Runs the update and shows how far it is. exec() returns when the run is over; Result() tells how it ended.
class frmRunUpdate final : public QDialog, private UpdateView {
 public:
  /// `user` shows the run's messages.
  frmRunUpdate(QWidget* parent, const UpdateContext& context, core::UserDialog& user);

  [[nodiscard]] const UpdateResult& Result() const { return result_; }

 protected:
  void showEvent(QShowEvent* event) override;
  void reject() override;  // the cancel button, Escape and the title bar's cross

 private:
  void Run();
  void HandleEvents();
  void EndWait();
  void SetRecordCount(std::int64_t records) override;
  void Advance(std::int64_t recordsDone) override;
  [[nodiscard]] bool CancelIsWanted() const override { return cancelWanted_; }
  void AskCancel() override;
  void Wait() override;
  [[nodiscard]] std::string NumberText(std::int64_t number) const override;
  void ShowNotices(const std::vector<std::string>& notices) override;
  core::MessageAnswer Show(const core::Message& message) override;
  void Beep() override;

  UpdateContext context_;
  core::UserDialog& user_;
  QProgressBar* prgBar_;
  QLabel* lblProgress_;
  std::int64_t records_ = 0;
  QElapsedTimer sinceEvents_;
  UpdateResult result_;
  bool started_ = false;
  bool running_ = false;
  bool cancelWanted_ = false;
  bool waits_ = false;
};

}  // namespace varnlog::intake
