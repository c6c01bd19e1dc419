#include <array>
#include <utility>

#include "db/dao/ServerLink.h"
#include "db/dao/postgres/ServerSession.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

namespace {

void ReplaceAll(std::string& text, std::string_view mark, const std::string& with) {
  for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + with.size()))
    text.replace(at, mark.size(), with);
}

}  // namespace

void DeclareOnServer(const std::string& link, std::string_view declarations, bool byYear) {
  const LinkFile file = ReadLinkFile(link);
  std::string script(declarations);
  const std::array<std::pair<std::string, std::string>, 3> names = {
      {{"schema", file.schema}, {"owner", file.schema + "_owner"}, {"program", file.schema + "_program"}}};
  for (const auto& [mark, name] : names) {
    ReplaceAll(script, "{" + mark + "}", QuoteIdentifier(name));
    ReplaceAll(script, "{" + mark + ":text}", QuoteText(name));
  }
  ReplaceAll(script, "{years:text}", byYear ? "'true'" : "'false'");
  ServerSession session(file, link, {});
  static_cast<void>(session.RunScript("BEGIN; " + script + "; COMMIT"));
}

}  // namespace varnlog::dao
