#include "report/DesignLine.h"

#include <charconv>

#include "report/ReportDesign.h"

namespace varnlog::report {

namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr double kMostPoints = 10'000;

void SkipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::string TakeWord(std::string_view& text, std::string_view ends) {
  std::string word(text.substr(0, text.find_first_of(ends)));
  text.remove_prefix(word.size());
  return word;
}

}  // namespace

DesignLine::DesignLine(std::string_view text, int number) : number_(number) {
  SkipBlanks(text);
  if (text.empty() || text.front() == '#') return;
  what_ = TakeWord(text, kBlanks);
  SkipBlanks(text);
  name_ = TakeWord(text, kBlanks);
  if (name_.empty()) Fail("a name was expected");
  SkipBlanks(text);
  if (text.starts_with('=')) {
    text.remove_prefix(1);
    SkipBlanks(text);
    rest_ = text.substr(0, text.find_last_not_of(kBlanks) + 1);
  } else {
    ReadSettings(text);
  }
}

void DesignLine::ReadSettings(std::string_view text) {
  constexpr std::string_view kQuote = "\"";
  for (SkipBlanks(text); !text.empty(); SkipBlanks(text)) {
    const std::string setting = TakeWord(text, " \t\r=");
    if (!text.starts_with('=')) Fail("'" + setting + "' has no value");
    text.remove_prefix(1);
    const bool quoted = text.starts_with('"');
    if (quoted) text.remove_prefix(1);
    settings_[setting] = TakeWord(text, quoted ? kQuote : kBlanks);
    if (!quoted) continue;
    if (text.empty()) Fail("the value of '" + setting + "' is not closed");
    text.remove_prefix(1);
  }
}

std::string DesignLine::Text(std::string_view setting) const {
  used_.emplace(setting);
  const auto found = settings_.find(setting);
  return found == settings_.end() ? std::string() : found->second;
}

double DesignLine::Number(std::string_view setting, double missing) const {
  const std::string text = Text(setting);
  if (text.empty()) return missing;
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  if (!isWhole || !(value >= 0 && value <= kMostPoints))
    Fail("'" + text + "' is no length for " + std::string(setting));
  return value;
}

void DesignLine::RequireAllUsed() const {
  for (const auto& [setting, value] : settings_) {
    if (!used_.contains(setting)) Fail("'" + setting + "' is no setting of " + what_);
  }
}

void DesignLine::Fail(const std::string& what) const {
  throw DesignError("line " + std::to_string(number_) + ": " + what);
}

}  // namespace varnlog::report
