#pragma once

#include <memory>
#include <string>
#include <string_view>

struct sqlite3;

namespace varnlog::dao {

/// The engine's one rule for text: root order with ß among the ss, letter case ignored, accents kept. "=",
/// Like, DISTINCT, ORDER BY and index seeks agree on it.
class Collation {
 public:
  Collation();
  ~Collation();
  Collation(const Collation&) = delete;
  Collation& operator=(const Collation&) = delete;

  /// One for the process; comparing is safe from one thread at a time.
  [[nodiscard]] static const Collation& Instance();

  /// Negative, 0 or positive, as the order of two UTF-8 texts.
  [[nodiscard]] int Compare(std::string_view a, std::string_view b) const;
  /// Bytes whose plain order is the order of the texts.
  [[nodiscard]] std::string SortKey(std::string_view text) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// The storage name of the collation.
inline constexpr const char* kCollationName = "JET";

/// Folds letter case as Like does: two texts that differ only in case fold to the same, ß folds to ss.
[[nodiscard]] std::string FoldCase(std::string_view text);

/// Like: '*' any text, '?' one character, '#' one digit, [a-z] one of a set, [!a-z] none of it.
/// `foldedPattern` must come from FoldCase. Linear in the text for patterns without several stars and never
/// worse than pattern times text.
[[nodiscard]] bool LikeMatches(std::string_view foldedPattern, std::string_view text);

/// Registers the collation and the functions jet_concat(a, b, ...) (NULL as empty) and jet_like(pattern,
/// text) with a connection. Throws EngineError.
void RegisterText(sqlite3* connection);

}  // namespace varnlog::dao
