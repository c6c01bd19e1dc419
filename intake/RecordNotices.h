#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "core/TextLookup.h"
#include "intake/RecordDates.h"

namespace varnlog::intake {

/// What is to be said about single records. Some of it was said before the run began; the rest is said at its
/// end.
class RecordNotices {
 public:
  explicit RecordNotices(const core::TextLookup& texts) : texts_(texts) {}

  /// This text has been shown for one record.
  void Said(const std::string& text) { ++said_[text]; }
  /// The run begins anew and adds everything once more.
  void Restart();

  void AddDefault(const CToken& token, const DefaultTaken& taken);
  /// A value too long for the field of that caption.
  void AddCut(const CToken& token, core::TextKey field);
  /// An exposure that counts as known by a date that nobody could read.
  void AddSkipped(const CToken& token);

  [[nodiscard]] const std::vector<std::string>& Unsaid() const { return unsaid_; }

 private:
  const core::TextLookup& texts_;
  std::unordered_map<std::string, int> said_;
  std::unordered_map<std::string, int> stillSaid_;
  std::vector<std::string> unsaid_;
};

}  // namespace varnlog::intake
