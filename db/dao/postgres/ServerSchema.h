#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "db/dao/postgres/ServerSession.h"
#include "db/dao/storage/TableSchema.h"

namespace varnlog::dao {

class ServerStorage;

/// Reads the definition of one table of the log's schema; throws kTableNotFound. Fields are of domains that
/// the schema has for them, and an index says in its comment which fields Seek takes for it. `yearField`
/// becomes the place of the date by whose year the table is divided, if it is.
[[nodiscard]] TableSchema ReadServerTable(ServerStorage& storage, std::string_view name,
                                          std::optional<std::size_t>& yearField);

/// What the log says of itself: the number of its changes, its layout, the counters of its tables, by name.
inline constexpr const char* kStateSql = "SELECT name, value FROM varnlog_state";
[[nodiscard]] std::map<std::string, std::int64_t> StateFrom(const ServerResult& rows);

/// "1234" as a parameter.
class NumberText {
 public:
  explicit NumberText(std::int64_t number) : text_(std::to_string(number)) {}
  [[nodiscard]] std::string_view View() const { return text_; }

 private:
  std::string text_;
};

/// Appends a value as a field of a line of COPY.
void AppendCopyValue(std::string& line, const CellView& value);

/// A field of a line of COPY.
struct CopyField {
  CellView value;
  std::string text;  // where it is one

  [[nodiscard]] CellView View() const;
};
/// Takes the line's first field, of that type, away from it.
[[nodiscard]] CopyField TakeCopyField(std::string_view& line, FieldType type);

}  // namespace varnlog::dao
