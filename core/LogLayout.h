#pragma once

#include <span>
#include <string>
#include <string_view>

#include "db/dao/DBEngine.h"

namespace varnlog::core {

inline constexpr std::string_view kExposureTable = "TXray";
inline constexpr std::string_view kConfigTable = "TConfig";

/// The layouts that a log can have, as its "DBVersion" names them.
inline constexpr std::string_view kFirstVersion = "1.0";
inline constexpr std::string_view kLogVersion = "1.1";

/// A field that every log has.
struct LogField {
  std::string_view name;
  dao::FieldType type;
  int size = 0;                            // kText: most characters
  std::string_view since = kFirstVersion;  // the layout that brought it

  [[nodiscard]] dao::FieldDef Definition() const;
};

/// TXray, in the order of the current layout; the id comes first.
[[nodiscard]] std::span<const LogField> ExposureFields();
/// TConfig: key, value.
[[nodiscard]] std::span<const LogField> ConfigFields();

/// An index of TXray.
struct LogIndex {
  std::string_view name;
  std::size_t fields;            // how many it has
  std::string_view declaration;  // as in the empty log
};
[[nodiscard]] std::span<const LogIndex> ExposureIndexes();

/// How the empty log declares TConfig.
[[nodiscard]] std::string_view ConfigDeclaration();

/// Whether a database has the tables of a log.
[[nodiscard]] bool IsLog(const dao::Database& database);

}  // namespace varnlog::core
