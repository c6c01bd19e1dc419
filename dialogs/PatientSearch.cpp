#include "dialogs/PatientSearch.h"

#include <algorithm>

#include "db/dao/TableScan.h"
#include "db/modCommon.h"

namespace varnlog::dialogs {

using core::literals::operator""_key;

namespace {

constexpr std::string_view kBirthSign = " *";

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string SearchSql(std::string_view text) {
  std::string sql =
      "SELECT DISTINCT TXray.tXraySName, TXray.tXraySFirstname, TXray.tXrayDBirthday, "
      "[tXraySName] & \", \" & [tXraySFirstname] AS FullName "
      "FROM TXray WHERE ((([tXraySName] & \", \" & [tXraySFirstname]) Like '";
  return sql.append(text).append("*'));");
}

/// "Meyer ,J" and "Meyer,J" as names stand in the log: "Meyer, J".
std::string WithOneBlank(std::string_view text) {
  const auto comma = text.find(',');
  if (comma == std::string_view::npos) return std::string(text);
  const std::string_view firstName = Trimmed(text.substr(comma + 1));
  std::string result(Trimmed(text.substr(0, comma)));
  result += firstName.empty() ? "," : ", ";
  return result.append(firstName);
}

/// A list entry taken apart again.
struct EntryParts {
  std::string name;
  std::string firstName;
  std::optional<platform::DateTime> birth;
};

/// The surname ends at the first comma and the birth date begins behind the first birth sign; a surname that
/// holds a comma is not found again.
EntryParts SplitEntry(std::string_view entry, const platform::ShortDate& shortDate) {
  EntryParts parts;
  const auto comma = entry.find(',');
  const auto star = entry.find('*');
  if (comma == std::string_view::npos || star == std::string_view::npos) return parts;
  parts.name = entry.substr(0, comma);
  if (star >= comma + 3) parts.firstName = entry.substr(comma + 2, star - comma - 3);
  parts.birth = shortDate.Parse(entry.substr(star + 1));
  return parts;
}

std::string ConfirmSql(const EntryParts& parts) {
  return "SELECT DISTINCT TXray.tXraySName, TXray.tXraySFirstname, TXray.tXrayDBirthday "
         "FROM TXray WHERE ((TXray.tXraySName='" +
         parts.name + "') AND (TXray.tXraySFirstname='" + parts.firstName +
         "') AND (TXray.tXrayDBirthday=" + db::SqlDateLiteral(*parts.birth) + "))";
}

}  // namespace

std::vector<std::string> PatientSearch::Entries(std::string_view pattern) {
  std::vector<std::string> entries;
  const auto rows = log_.OpenRecordset(SearchSql(pattern));
  const dao::Field& name = rows->Fields("tXraySName");
  const dao::Field& firstName = rows->Fields("tXraySFirstname");
  const dao::Field& birth = rows->Fields("tXrayDBirthday");
  for (; !rows->IsEOF(); rows->MoveNext()) {
    std::string entry(name.Text());
    entry.append(", ").append(firstName.Text()).append(kBirthSign).append(shortDate_.Format(birth.Date()));
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::vector<std::string> PatientSearch::Proposals(const std::string& first) const {
  constexpr std::int64_t kRowsLookedAt = 500;
  constexpr std::size_t kMost = 30;
  const std::vector<std::string> fields = {"tXraySName", "tXraySFirstname", "tXrayDBirthday"};
  const auto scan =
      log_.Scan("TXray", fields, {.first = log_.Greatest("TXray", "tXrayCulIntIDPk") - kRowsLookedAt + 1});
  std::vector<std::string> latest;
  while (scan->Next()) {
    const auto& values = scan->Values();
    std::string entry(values[0].text);
    entry.append(", ").append(values[1].text).append(kBirthSign);
    latest.push_back(entry.append(
        shortDate_.Format(platform::DateTime::FromIso(values[2].text).value_or(platform::DateTime()))));
  }
  std::vector<std::string> proposals;
  if (!first.empty()) proposals.push_back(first);
  for (auto entry = latest.rbegin(); entry != latest.rend() && proposals.size() < kMost; ++entry) {
    if (std::ranges::find(proposals, *entry) == proposals.end()) proposals.push_back(*entry);
  }
  return proposals;
}

SearchResult PatientSearch::Search(std::string_view text) {
  const std::string_view pattern = Trimmed(text);
  SearchResult result;
  result.entries = Entries(pattern);
  // As it was typed first: a surname may hold a comma of its own.
  if (const std::string spaced = WithOneBlank(pattern); result.entries.empty() && spaced != pattern) {
    result.entries = Entries(spaced);
  }
  if (result.entries.empty()) {
    const bool hasWildcard = pattern.find('*') != std::string_view::npos;
    result.message = hasWildcard ? "PS_ERR_NOTFOUND"_key : "PS_ERR_NOPATIENT"_key;
  } else {
    const std::string_view first = result.entries.front();
    result.searchBox = Trimmed(first.substr(0, first.find(kBirthSign)));
  }
  return result;
}

Confirmation PatientSearch::Confirm(std::string_view selected, std::string_view searchText) {
  if (selected.empty()) return searchText.empty() ? Confirmation::kBeep : Confirmation::kSearchAgain;
  const EntryParts parts = SplitEntry(selected, shortDate_);
  if (!parts.birth) return Confirmation::kNotFound;
  const auto rows = log_.OpenRecordset(ConfirmSql(parts));
  if (rows->IsEOF()) return Confirmation::kNotFound;
  rows->MoveLast();
  if (rows->RecordCount() >= 2) return Confirmation::kNotUnique;
  selection_.strPatNameGl = rows->Fields("tXraySName").Text();
  selection_.strPatFirstnameGl = rows->Fields("tXraySFirstname").Text();
  selection_.dPatBirthdayGl = rows->Fields("tXrayDBirthday").Date();
  return Confirmation::kDone;
}

}  // namespace varnlog::dialogs
