#include "db/dao/postgres/LinkFile.h"

#include <algorithm>
#include <array>
#include <functional>
#include <set>

#include "db/dao/EngineError.h"
#include "db/dao/storage/TableSchema.h"
#include "platform/Ascii.h"
#include "platform/CodePage.h"
#include "platform/Files.h"

namespace varnlog::dao {

namespace {

constexpr std::size_t kLongest = 64 * 1024;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
/// What the client library takes for the protection of a connection.
constexpr std::array<std::string_view, 6> kSslModes = {"disable", "allow",     "prefer",
                                                       "require", "verify-ca", "verify-full"};

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw EngineError(ErrorNumber::kUnrecognisedFormat, "The link file '" + path + "' " + why + ".");
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && platform::ascii::IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && platform::ascii::IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::vector<std::string> List(std::string_view text) {
  std::vector<std::string> items;
  for (;;) {
    const std::size_t comma = std::min(text.find(','), text.size());
    items.emplace_back(Trimmed(text.substr(0, comma)));
    if (comma == text.size()) return items;
    text.remove_prefix(comma + 1);
  }
}

bool IsThisMachine(std::string_view host) {
  return host.empty() || host.front() == '/' || SameName(host, "localhost") || host == "::1" ||
         (host.starts_with("127.") && host.find_first_not_of("0123456789.") == std::string_view::npos);
}

bool IsPort(std::string_view port) {
  return port.size() <= 5 && std::all_of(port.begin(), port.end(), platform::ascii::IsDigit);
}

// The settings one by one; what depends on several of them is looked at in Complete().
class Reader {
 public:
  Reader(std::string_view content, const std::string& path) : path_(path) {
    if (content.starts_with(kUtf8Mark)) content.remove_prefix(kUtf8Mark.size());
    while (!content.empty()) {
      const std::size_t end = std::min(content.find('\n'), content.size());
      ++line_;
      TakeLine(Trimmed(content.substr(0, end)));
      content.remove_prefix(std::min(end + 1, content.size()));
    }
    Complete();
  }

  [[nodiscard]] LinkFile Result() { return std::move(link_); }

 private:
  [[noreturn]] void RefuseLine(const std::string& why) {
    Refuse(path_, "cannot be used: line " + std::to_string(line_) + " " + why);
  }

  void TakeLine(std::string_view line) {
    if (line_ == 1) return;  // the mark
    if (line.empty() || line.front() == ';' || line.front() == '#') return;
    if (std::any_of(line.begin(), line.end(), [](char c) { return c >= 0 && c < ' ' && c != '\t'; }))
      RefuseLine("holds characters that are no text");
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) RefuseLine("is no setting");
    Set(std::string(Trimmed(line.substr(0, equals))), std::string(Trimmed(line.substr(equals + 1))));
  }

  void Set(const std::string& key, std::string value) {
    if (!given_.insert(LowerName(key)).second) RefuseLine("sets '" + key + "' a second time");
    const std::array<std::pair<std::string_view, std::string*>, 6> texts = {
        {{"Database", &link_.database},
         {"Schema", &link_.schema},
         {"User", &link_.user},
         {"Service", &link_.service},
         {"SslMode", &link_.sslMode},
         {"ApplicationName", &link_.applicationName}}};
    for (const auto& [name, text] : texts)
      if (SameName(key, name)) {
        *text = std::move(value);
        return;
      }
    if (SameName(key, "Host")) {
      link_.hosts = List(value);
    } else if (SameName(key, "Port")) {
      link_.ports = List(value);
    } else if (SameName(key, "Password")) {
      RefuseLine("holds a password, which does not belong there");
    } else {
      RefuseLine("names the unknown setting '" + key + "'");
    }
  }

  void Complete() {
    if (link_.hosts.empty()) link_.hosts.emplace_back();
    if (link_.ports.empty()) link_.ports.emplace_back();
    if (link_.ports.size() == 1) link_.ports.resize(link_.hosts.size(), link_.ports.front());
    if (link_.ports.size() != link_.hosts.size() || !std::ranges::all_of(link_.ports, IsPort))
      Refuse(path_, "cannot be used: its ports do not fit its hosts");
    if (link_.schema.empty() || link_.schema.size() > kLongestName)
      Refuse(path_, "cannot be used: its schema has no usable name");
    const bool isHere = link_.service.empty() || given_.contains("host")
                            ? std::ranges::all_of(link_.hosts, IsThisMachine)
                            : false;
    if (link_.sslMode.empty()) link_.sslMode = isHere ? "prefer" : "verify-full";
    if (std::ranges::find(kSslModes, link_.sslMode) == kSslModes.end())
      Refuse(path_, "cannot be used: '" + link_.sslMode + "' is no protection of a connection");
    if (!isHere && link_.sslMode != "verify-full")
      Refuse(path_, "cannot be used: another machine is reached with SslMode=verify-full only");
  }

  /// Of the server's names; two bytes a character are kept for the roles that are named after the schema.
  static constexpr std::size_t kLongestName = 50;

  const std::string& path_;
  LinkFile link_;
  std::set<std::string> given_;
  int line_ = 0;
};

}  // namespace

bool IsLinkStart(std::string_view start) {
  if (start.starts_with(kUtf8Mark)) start.remove_prefix(kUtf8Mark.size());
  if (!start.starts_with(kLinkMark)) return false;
  start.remove_prefix(kLinkMark.size());
  return Trimmed(start.substr(0, start.find('\n'))).empty();
}

LinkFile ParseLinkFile(std::string_view content, const std::string& path) {
  if (content.size() > kLongest) Refuse(path, "is too long");
  if (!platform::IsUtf8(content)) Refuse(path, "is no UTF-8 text");
  return Reader(content, path).Result();
}

LinkFile ReadLinkFile(const std::string& path) {
  std::error_code error;
  const auto file = platform::File::Open(platform::ToPath(path), platform::File::Mode::kRead, error);
  std::string content(kLongest + 1, '\0');
  if (!error) content.resize(file.ReadAt(0, content, error));
  if (error) throw EngineError(ErrorNumber::kNoPermission, "The file '" + path + "' cannot be read.");
  return ParseLinkFile(content, path);
}

}  // namespace varnlog::dao
