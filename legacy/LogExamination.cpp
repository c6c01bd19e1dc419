#include "legacy/LogExamination.h"

#include <algorithm>

#include "platform/CodePage.h"

namespace varnlog::legacy {
namespace {

using platform::DateTime;

// X-rays were found on this day, and no log reaches into the next century but one.
const DateTime kFirstExposure = DateTime::FromSerial(1895, 11, 8);
const DateTime kEndOfExposures = DateTime::FromSerial(2200, 1, 1);

class RowJudge {
 public:
  explicit RowJudge(LogExamination& result) : result_(result) {}

  void Judge(const JetRow& row) {
    const auto columns = core::ExposureFields();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (const auto* text = std::get_if<std::string>(&row.values[i])) JudgeLength(row, columns[i], *text);
    }
    if (const auto* id = std::get_if<std::int64_t>(&row.values[kId])) {
      ids_.push_back(static_cast<std::int32_t>(*id));
    } else {
      Report(FaultKind::kIdMissing, row, {});
    }
    if (const auto* taken = std::get_if<DateTime>(&row.values[kTimestamp])) JudgeDate(row, *taken);
  }

  void JudgeIds() {
    std::sort(ids_.begin(), ids_.end());
    for (auto id = std::adjacent_find(ids_.begin(), ids_.end()); id != ids_.end();
         id = std::adjacent_find(id + 1, ids_.end())) {
      result_.faults.Add({FaultKind::kDoubledId, 0, -1, std::to_string(*id)});
    }
  }

 private:
  static constexpr std::size_t kId = 0;
  static constexpr std::size_t kTimestamp = 7;

  void JudgeLength(const JetRow& row, const core::LogField& column, const std::string& text) {
    const auto most = static_cast<std::size_t>(column.size);
    if (text.size() > most && platform::CharacterCount(text) > most) {
      Report(FaultKind::kTooLong, row, column.name);
    }
  }

  void JudgeDate(const JetRow& row, DateTime taken) {
    const std::int64_t second = taken.SecondsSinceEpoch();
    if (second < kFirstExposure.SecondsSinceEpoch() || second >= kEndOfExposures.SecondsSinceEpoch()) {
      return Report(FaultKind::kImplausibleDate, row, core::ExposureFields()[kTimestamp].name);
    }
    if (!result_.first.IsSet() || second < result_.first.SecondsSinceEpoch()) result_.first = taken;
    if (!result_.last.IsSet() || second > result_.last.SecondsSinceEpoch()) result_.last = taken;
  }

  void Report(FaultKind kind, const JetRow& row, std::string_view name) {
    result_.faults.Add({kind, row.place.page, row.place.row, std::string(name)});
  }

  LogExamination& result_;
  std::vector<std::int32_t> ids_;
};

LogExamination WithoutLog(const Fault& why) {
  LogExamination result;
  const bool isForeign = why.kind == FaultKind::kTableMissing || why.kind == FaultKind::kTableLinked;
  result.verdict = isForeign ? LogExamination::Verdict::kForeign : LogExamination::Verdict::kUnreadable;
  result.faults.Add(why);
  return result;
}

}  // namespace

LogExamination Examine(Bytes file) {
  return *Examine(file, [](std::int64_t) { return true; });
}

std::optional<LogExamination> Examine(Bytes file, const RowProgress& progress) {
  const auto log = OldLog::Open(file);
  if (!log) return WithoutLog(log.Why());
  LogExamination result;
  result.faults = log->Faults();
  result.version = log->Version();
  result.lastId = log->LastId();
  result.linkedTables = log->Database().LinkedTables();
  result.hasPassword = log->Database().Header().hasPassword;
  result.isEncoded = log->Database().Header().IsEncoded();
  RowJudge judge(result);
  std::int64_t judged = 0;
  bool isWanted = true;
  const auto judgeRow = [&](const JetRow& row) {
    judge.Judge(row);
    isWanted = ++judged % kRowsPerReport != 0 || progress(judged);
    return isWanted;
  };
  result.exposures = log->ReadExposures(judgeRow, result.faults);
  if (!isWanted) return std::nullopt;
  judge.JudgeIds();
  result.verdict =
      result.faults.IsEmpty() ? LogExamination::Verdict::kSound : LogExamination::Verdict::kDamaged;
  return result;
}

}  // namespace varnlog::legacy
