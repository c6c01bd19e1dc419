#include "seals/SealTables.h"

#include <algorithm>

#include "db/dao/TableScan.h"
#include "db/modCommon.h"
#include "platform/Sha256.h"
#include "seals/Canonical.h"
#include "seals/SealSql.h"
#include "seals/SealedFields.h"

namespace varnlog::seals {

namespace {

constexpr std::string_view kRuleBegin = "CREATE TRIGGER";
constexpr std::string_view kRuleEnd = "\nEND;";

std::vector<std::string> ReadRules() {
  std::vector<std::string> rules;
  const std::string_view sql = kSealSql;
  for (std::size_t begin = sql.find(kRuleBegin); begin != std::string_view::npos;) {
    // The end without its semicolon, as the file keeps it.
    const std::size_t end = sql.find(kRuleEnd, begin) + kRuleEnd.size() - 1;
    rules.emplace_back(sql.substr(begin, end - begin));
    begin = sql.find(kRuleBegin, end);
  }
  return rules;
}

}  // namespace

std::string_view NameOf(SealKind kind) {
  constexpr std::array<std::string_view, 6> kNames = {"intake",     "entry",    "lock",
                                                      "conversion", "takeover", "repair"};
  return kNames.at(static_cast<std::size_t>(kind));
}

std::string_view NameOf(ChangeKind kind) {
  constexpr std::array<std::string_view, 6> kNames = {"entry", "correction", "comment",
                                                      "lock",  "suite",      "repair"};
  return kNames.at(static_cast<std::size_t>(kind));
}

const std::vector<std::string>& HistoryFields() {
  static const std::vector<std::string> kFields = {
      "tHistCulNrPk", "tXrayCulIntIDPk", "tHistSField", "tHistSOld", "tHistSNew", "tHistSKind", "tHistNSeal"};
  return kFields;
}

const std::vector<std::string>& SealFields() {
  static const std::vector<std::string> kFields = {
      "tSealCulNrPk",    "tSealSKind",       "tSealDTime",      "tSealNOffset",   "tSealSAccount",
      "tSealSFullName",  "tSealSPlace",      "tSealSProgram",   "tSealSRun",      "tSealNFirstRow",
      "tSealNLastRow",   "tSealNRows",       "tSealNFirstHist", "tSealNLastHist", "tSealSExchange",
      "tSealSRowDigest", "tSealSHistDigest", "tSealSDigest",    "tSealSMarks"};
  return kFields;
}

std::string SealLine(std::string_view previousDigest, const Seal& seal) {
  std::string line;
  AppendText(line, previousDigest);
  AppendNumber(line, seal.number);
  AppendText(line, seal.kind);
  AppendText(line, seal.time.ToIso());
  AppendNumber(line, seal.offsetMinutes);
  for (const std::string* text : {&seal.account, &seal.fullName, &seal.place, &seal.program, &seal.run})
    AppendText(line, *text);
  for (const std::int64_t number :
       {seal.firstRow, seal.lastRow, seal.rows, seal.firstHistory, seal.lastHistory})
    AppendNumber(line, number);
  for (const std::string* text : {&seal.exchange, &seal.rowDigest, &seal.historyDigest, &seal.marks})
    AppendText(line, *text);
  line += '\n';
  return line;
}

bool HasSealTables(const dao::Database& log) {
  return db::TableExists(log, kHistory) && db::TableExists(log, kSeals);
}

bool HasSeals(dao::Database& log) {
  return HasSealTables(log) && ReadHead(log).number > 0;
}

// Rows are counted only where no seal says that there are some: few can be behind it.
bool IsUnused(dao::Database& log) {
  if (log.Greatest(kSeals, "tSealCulNrPk") > 1) return false;
  const std::vector<std::string> fields = {"tSealSKind", "tSealNRows"};
  for (const auto seals = log.Scan(kSeals, fields, {}); seals->Next();)
    if (seals->Values()[0].text != NameOf(SealKind::kTakeover) || NumberOf(seals->Values()[1]) > 0)
      return false;
  return std::ranges::all_of(std::array{kExposures, kHistory}, [&log](const char* table) {
    return log.OpenRecordset(table, dao::RecordsetType::kTable)->RecordCount() == 0;
  });
}

void MakeSealTables(dao::Database& log) {
  const std::string_view sql = kSealSql;
  log.Execute(sql.substr(0, sql.find(kRuleBegin)));
  log.SetRules(LogRules());
}

const std::vector<std::string>& LogRules() {
  static const std::vector<std::string> kRules = ReadRules();
  return kRules;
}

SealedSoFar ReadSealed(dao::Database& log) {
  const std::int64_t last = log.Greatest(kSeals, "tSealCulNrPk");
  const std::vector<std::string> fields = {"tSealSDigest", "tSealNLastHist"};
  const auto scan = log.Scan(kSeals, fields, {.first = last, .last = last});
  if (!scan->Next()) return {.head = {0, std::string(kNoDigest)}, .lastHistory = 0};
  SealedSoFar sealed{.head = {last, TextOf(scan->Values()[0])}, .lastHistory = NumberOf(scan->Values()[1])};
  static_cast<void>(scan->Next());
  return sealed;
}

Head ReadHead(dao::Database& log) {
  return ReadSealed(log).head;
}

Head WriteSeal(dao::Database& log, std::string_view previousDigest, const Seal& seal) {
  Head head{seal.number, platform::Sha256Hex(SealLine(previousDigest, seal))};
  const auto row = log.OpenRecordset(kSeals, dao::RecordsetType::kTable);
  row->AddNew();
  row->Fields("tSealSKind").SetText(seal.kind);
  row->Fields("tSealDTime").SetDate(seal.time);
  row->Fields("tSealNOffset").SetNumber(seal.offsetMinutes);
  row->Fields("tSealSAccount").SetText(seal.account);
  row->Fields("tSealSFullName").SetText(seal.fullName);
  row->Fields("tSealSPlace").SetText(seal.place);
  row->Fields("tSealSProgram").SetText(seal.program);
  row->Fields("tSealSRun").SetText(seal.run);
  row->Fields("tSealNFirstRow").SetNumber(seal.firstRow);
  row->Fields("tSealNLastRow").SetNumber(seal.lastRow);
  row->Fields("tSealNRows").SetNumber(seal.rows);
  row->Fields("tSealNFirstHist").SetNumber(seal.firstHistory);
  row->Fields("tSealNLastHist").SetNumber(seal.lastHistory);
  row->Fields("tSealSExchange").SetText(seal.exchange);
  row->Fields("tSealSRowDigest").SetText(seal.rowDigest);
  row->Fields("tSealSHistDigest").SetText(seal.historyDigest);
  row->Fields("tSealSDigest").SetText(head.digest);
  row->Fields("tSealSMarks").SetText(seal.marks);
  row->Update();
  return head;
}

}  // namespace varnlog::seals
