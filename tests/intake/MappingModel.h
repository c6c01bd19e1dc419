#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace varnlog::intake::test {

using Row = std::map<std::string, std::string>;

/// What a record says, as plain texts.
struct Report {
  char kind = 'T';
  std::string lastName, firstName, birthday, sex, pregnancy, extra, type, takeDate, takeTime, responsible;
  std::string duration, volt, current, dose;
  // The dates as the log stores them; the generator knows them, the model need not compute them.
  std::string storedBirthday, storedTaken;
};

/// The rules of the update run, told once more in the plainest way.
class MappingModel {
 public:
  void Take(Report report) {
    if (report.type.empty() || report.type[0] != 'X') return;
    const auto key = std::tuple(report.lastName, report.firstName, report.storedBirthday, report.storedTaken);
    const bool known = places_.contains(key);
    const bool information = report.kind == 'I';
    if (information != known) return;
    if (!known) {
      places_[key] = rows_.size();
      rows_.push_back({{"tXrayCulIntIDPk", std::to_string(rows_.size() + 1)}});
      for (const char* flag : {"Preg", "Dr", "Type", "DiagRetry", "Regio", "RadDur", "Volt", "Cur", "Dose"})
        rows_.back()[std::string("tXrayBEd") + flag] = "0";
    }
    Write(rows_[places_[key]], report, !known);
  }

  [[nodiscard]] const std::vector<Row>& Rows() const { return rows_; }

 private:
  static void Write(Row& row, Report& r, bool isNew) {
    row["tXraySName"] = r.lastName;
    row["tXraySFirstname"] = r.firstName;
    row["tXrayDBirthday"] = r.storedBirthday;
    if (r.kind == 'T' && !r.sex.empty()) row["tXraySSex"] = r.sex == "M" ? "m" : r.sex == "F" ? "f" : "-";
    if (!r.pregnancy.empty()) row["tXraySPreg"] = r.pregnancy == "P" ? "J" : r.pregnancy == "N" ? "N" : "-";
    row["tXrayBEdPreg"] = r.sex == "M" ? "0" : "1";
    row["tXrayTs"] = r.storedTaken;
    row["tXraySDr"] = r.responsible;
    row["tXrayBEdDr"] = r.responsible.empty() || r.responsible == "-" ? "1" : "0";
    row["tXraySType"] = r.type;
    row["tXrayBEdType"] = "0";
    const bool bad = r.extra == "~~";
    if (r.kind == 'T' && bad) row["tXraySDiagRetry"] = "N.d.";
    if (r.kind == 'I' && row["tXraySDiagRetry"] != "Wdh.") row["tXraySDiagRetry"] = bad ? "N.d." : "";
    row["tXrayBEdDiagRetry"] = bad ? "0" : "1";
    if (bad) r.extra = "";
    row["tXraySRegio"] = r.extra;
    Flag(row["tXrayBEdRegio"], r.extra, r.kind);
    row["tXraySRadDur"] = r.duration;
    Flag(row["tXrayBEdRadDur"], r.duration, r.kind);
    Flag(row["tXrayBEdVolt"], r.volt, r.kind);
    if (r.volt.empty() && isNew && r.type == "XI") r.volt = "60";
    if (!r.volt.empty()) row["tXraySVolt"] = r.volt;
    Flag(row["tXrayBEdCur"], r.current, r.kind);
    if (r.current.empty() && isNew && r.type == "XI") r.current = "8";
    if (!r.current.empty()) row["tXraySCur"] = r.current;
    if (!r.dose.empty()) row["tXraySDose"] = r.dose;
    Flag(row["tXrayBEdDose"], r.dose, r.kind);
  }
  static void Flag(std::string& flag, const std::string& value, char kind) {
    if (!value.empty()) flag = "0";
    if (value.empty() && kind == 'T') flag = "1";
  }

  std::map<std::tuple<std::string, std::string, std::string, std::string>, std::size_t> places_;
  std::vector<Row> rows_;
};

}  // namespace varnlog::intake::test
