#include "db/dao/sql/SelectShape.h"

namespace varnlog::dao {

namespace {

// Must be a text that no translation rewrites: no wildcard, no letter whose case is folded away.
std::string Mark(std::size_t number) {
  return "'\x01" + std::to_string(number) + "\x01'";
}

// The place behind the closing quote, or npos. A doubled quote stands for itself.
std::size_t EndOfQuoted(std::string_view text, std::size_t begin) {
  const char quote = text[begin];
  std::size_t i = begin + 1;
  while (true) {
    i = text.find(quote, i);
    if (i == std::string_view::npos) return i;
    if (i + 1 == text.size() || text[i + 1] != quote) return i + 1;
    i += 2;
  }
}

std::string Unquoted(std::string_view quoted) {
  const char quote = quoted.front();
  std::string text;
  for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
    text += quoted[i];
    if (quoted[i] == quote) ++i;
  }
  return text;
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

}  // namespace

bool LiftTexts(std::string_view jetSql, std::string& shape, std::vector<std::string>& texts) {
  shape.clear();
  texts.clear();
  if (jetSql.find('\x01') != std::string_view::npos) return false;  // no mark may be in it already
  char before = '\0';                                               // the last character that is no blank
  for (std::size_t i = 0; i < jetSql.size();) {
    const char c = jetSql[i];
    std::size_t end = i + 1;
    if (c == '\'' || c == '"') end = EndOfQuoted(jetSql, i);
    if (c == '[') end = jetSql.find(']', i);
    if (c == '#') end = jetSql.find('#', i + 1);
    if (end == std::string_view::npos) return false;
    if (c == '[' || c == '#') ++end;
    if ((c == '\'' || c == '"') && before == '=') {
      texts.push_back(Unquoted(jetSql.substr(i, end - i)));
      shape += Mark(texts.size());
    } else {
      shape.append(jetSql, i, end - i);
    }
    if (!IsBlank(c)) before = c;
    i = end;
  }
  return true;
}

bool MarksToParameters(std::string& storageSql, std::size_t count) {
  for (std::size_t number = 1; number <= count; ++number) {
    const std::string mark = Mark(number);
    std::size_t at = storageSql.find(mark);
    if (at == std::string::npos) return false;
    for (; at != std::string::npos; at = storageSql.find(mark, at))
      storageSql.replace(at, mark.size(), "?" + std::to_string(number));
  }
  return storageSql.find('\x01') == std::string::npos;
}

}  // namespace varnlog::dao
