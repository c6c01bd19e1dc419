#include "cli/TerminalDialog.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

#include "platform/Terminal.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;
using core::MessageAnswer;
using core::MessageButtons;

/// Noise taken for exposures could bring a new text with every record; this many are held at a time.
constexpr std::size_t kMostHeld = 1'000;
constexpr auto kRedraw = std::chrono::milliseconds(100);

void WriteLine(const std::string& line) {
  std::fputs((line + "\n").c_str(), stderr);
}

std::string WithoutAccelerator(std::string text) {
  std::erase(text, '&');
  return text;
}

}  // namespace

std::string OneLine(std::string_view text) {
  std::string line;
  for (const char c : platform::PrintableText(text)) {
    if (c != ' ' || (!line.empty() && line.back() != ' ')) line += c;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

TerminalDialog::TerminalDialog(const core::TextLookup& texts)
    : texts_(texts), isTerminal_(platform::StandardErrorIsTerminal()) {}

TerminalDialog::~TerminalDialog() {
  Flush();
}

MessageAnswer TerminalDialog::Show(const core::Message& message) {
  const std::string line = OneLine(message.text);
  // A message with choices of its own is no question here: the first is what goes on.
  if (!message.choices.empty() || message.buttons == MessageButtons::kOk) {
    Count(line);
    return message.choices.empty() ? MessageAnswer::kOk : message.choices.front().answer;
  }
  Flush();
  WriteLine(line);
  return message.buttons == MessageButtons::kRetryCancel ? AskRetry() : MessageAnswer::kNo;
}

void TerminalDialog::Beep() {
  if (isTerminal_) std::fputc('\a', stderr);
}

void TerminalDialog::SetRecordCount(std::int64_t records) {
  records_ = records;
  done_ = 0;
}

void TerminalDialog::Advance(std::int64_t recordsDone) {
  done_ = recordsDone;
  if (!isTerminal_ || recordsDone % 64 != 0) return;
  const auto now = std::chrono::steady_clock::now();
  if (now - lastDrawn_ < kRedraw) return;
  lastDrawn_ = now;
  DrawBar();
}

void TerminalDialog::ShowNotices(const std::vector<std::string>& notices) {
  for (const std::string& notice : notices) Count(OneLine(notice));
}

void TerminalDialog::Flush() {
  ClearBar();
  for (const std::string& line : lines_) {
    const std::int64_t count = counts_[line];
    WriteLine(count == 1 ? line : line + " (" + std::to_string(count) + "x)");
  }
  lines_.clear();
  counts_.clear();
}

void TerminalDialog::Count(const std::string& line) {
  if (++counts_[line] > 1) return;
  lines_.push_back(line);
  if (lines_.size() >= kMostHeld) Flush();
}

MessageAnswer TerminalDialog::AskRetry() {
  if (!isTerminal_) return MessageAnswer::kCancel;
  const std::string retry = WithoutAccelerator(texts_.GetText("GL_RETRY"_key));
  const std::string cancel = WithoutAccelerator(texts_.GetText("GL_CANCEL"_key));
  std::fputs(("1 = " + retry + ", 2 = " + cancel + ": ").c_str(), stderr);
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "1" ? MessageAnswer::kRetry : MessageAnswer::kCancel;
}

void TerminalDialog::DrawBar() {
  if (records_ <= 0) return;
  const int width = std::clamp(platform::TerminalWidth() - 8, 10, 60);
  const double part = static_cast<double>(std::min(done_, records_)) / static_cast<double>(records_);
  const auto filled = static_cast<std::size_t>(part * width);
  const std::string bar =
      std::string(filled, '#') + std::string(static_cast<std::size_t>(width) - filled, '.');
  std::fprintf(stderr, "\r[%s] %3d%%", bar.c_str(), static_cast<int>(part * 100));
  std::fflush(stderr);
  barShown_ = true;
}

void TerminalDialog::ClearBar() {
  if (!barShown_) return;
  std::fputs("\r\x1b[K", stderr);
  barShown_ = false;
}

}  // namespace varnlog::cli
