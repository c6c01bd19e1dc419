#include "logview/CEdits.h"

#include <algorithm>
#include <utility>

namespace varnlog::logview {

bool CEdits::Add(CEdit edit) {
  if (!keys_.insert(edit.Key()).second) return false;
  edits_.push_back(std::move(edit));
  return true;
}

const CEdit* CEdits::Find(std::string_view key) const {
  const auto found = std::ranges::find_if(edits_, [key](const CEdit& edit) { return edit.Key() == key; });
  return found == edits_.end() ? nullptr : &*found;
}

bool CEdits::Remove(std::string_view key) {
  if (keys_.erase(std::string(key)) == 0) return false;
  std::erase_if(edits_, [key](const CEdit& edit) { return edit.Key() == key; });
  return true;
}

void CEdits::RemoveFirst(std::size_t count) {
  const auto end = edits_.begin() + static_cast<std::ptrdiff_t>(std::min(count, edits_.size()));
  for (auto edit = edits_.begin(); edit != end; ++edit) keys_.erase(edit->Key());
  edits_.erase(edits_.begin(), end);
}

void CEdits::Clear() {
  edits_.clear();
  keys_.clear();
}

}  // namespace varnlog::logview
