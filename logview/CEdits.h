#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "logview/CEdit.h"

namespace varnlog::logview {

/// The pending edits in the order in which they were made, each field of each row once however often it is
/// corrected. The log view adds, the main window flushes.
class CEdits {
 public:
  /// False when the field of that row is pending already; the entry there is kept.
  bool Add(CEdit edit);
  [[nodiscard]] const CEdit& Item(std::size_t index) const { return edits_.at(index); }
  [[nodiscard]] bool Contains(std::string_view key) const { return keys_.contains(std::string(key)); }
  /// nullptr when there is no entry of that key; valid until the collection is changed.
  [[nodiscard]] const CEdit* Find(std::string_view key) const;
  [[nodiscard]] std::size_t Count() const { return edits_.size(); }
  /// False when there is no entry of that key.
  bool Remove(std::string_view key);
  /// The oldest `count` entries.
  void RemoveFirst(std::size_t count);
  void Clear();

  [[nodiscard]] auto begin() const { return edits_.begin(); }
  [[nodiscard]] auto end() const { return edits_.end(); }

 private:
  std::vector<CEdit> edits_;
  std::unordered_set<std::string> keys_;
};

}  // namespace varnlog::logview
