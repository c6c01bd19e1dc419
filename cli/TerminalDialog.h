#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/TextLookup.h"
#include "intake/UpdateRun.h"

namespace varnlog::cli {

/// Speaks to the user through standard error; at a terminal it also asks and shows a progress bar there.
class TerminalDialog final : public intake::UpdateView {
 public:
  explicit TerminalDialog(const core::TextLookup& texts);
  ~TerminalDialog() override;

  /// Retry or Cancel is asked only at a terminal, anywhere else the answer is Cancel; to any other question
  /// it is the one that changes nothing. A message that comes again and again, as the one about a patient
  /// without a valid birth date does with every exposure, is written once with its count.
  core::MessageAnswer Show(const core::Message& message) override;
  void Beep() override;

  void SetRecordCount(std::int64_t records) override;
  void Advance(std::int64_t recordsDone) override;
  void ShowNotices(const std::vector<std::string>& notices) override;

  /// Writes the messages that are still being counted. The destructor does it too.
  void Flush();

 private:
  void Count(const std::string& line);
  [[nodiscard]] core::MessageAnswer AskRetry();
  void DrawBar();
  void ClearBar();

  const core::TextLookup& texts_;
  const bool isTerminal_;
  std::vector<std::string> lines_;  // in the order of their first appearance
  std::unordered_map<std::string, std::int64_t> counts_;
  std::int64_t records_ = 0;
  std::int64_t done_ = 0;
  std::chrono::steady_clock::time_point lastDrawn_;
  bool barShown_ = false;
};

/// A message as one line: its line breaks become blanks.
[[nodiscard]] std::string OneLine(std::string_view text);

}  // namespace varnlog::cli
