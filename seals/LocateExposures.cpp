#include <algorithm>
#include <string>
#include <utility>

#include "seals/Canonical.h"
#include "seals/SealedFields.h"
#include "seals/VerifyRows.h"

namespace varnlog::seals {

namespace {

std::string_view MarkAt(std::string_view marks, std::size_t line) {
  return marks.substr(std::min(marks.size(), line * kMarkLength), kMarkLength);
}

/// A range of exposures beside the marks that were sealed.
class Location {
 public:
  Location(dao::Database& log, const RowRange& range, const Findings& findings)
      : log_(log), range_(range), findings_(findings) {}

  void Run() {
    ReadMarks();
    ReadRows();
    // Without gaps in the numbers each exposure has its place.
    if (range_.rows == range_.last - range_.first + 1) {
      CompareByNumber();
    } else {
      Align();
    }
    ReportChanged();
    if (!isFound_) findings_.Add({Fault::kSealRows, range_.seal, 0, {}});
  }

 private:
  struct Changed {
    std::int64_t id = 0;
    std::string mark;     // that was sealed
    std::string content;  // the line behind the number
    bool isTold = false;
  };

  void Report(Fault fault, std::int64_t exposure, std::int64_t other = 0) {
    isFound_ = true;
    findings_.Add({fault, exposure, other, {}});
  }

  void UndoTo(std::vector<dao::CellView>& values, const std::vector<Change>& changes) const {
    Undo(values, Behind(changes, range_.undoneTo), Findings([](const Finding&) {}));
  }

  void ReadMarks() {
    const std::vector<std::string> fields = {"tSealSMarks"};
    const auto scan = log_.Scan(kSeals, fields, {.first = range_.seal, .last = range_.seal});
    if (!scan->Next()) return;
    marks_ = TextOf(scan->Values()[0]);
    count_ = std::min(static_cast<std::size_t>(std::max<std::int64_t>(range_.rows, 0)),
                      marks_.size() / kMarkLength);
  }

  void ReadRows() {
    const auto scan = log_.Scan(kExposures, SealedFields(), {.first = range_.first, .last = range_.last});
    ChangeWalk changes(log_, range_.first);
    std::string line;
    while (scan->Next()) {
      std::vector<dao::CellView> values = scan->Values();
      const std::int64_t id = NumberOf(values[0]);
      UndoTo(values, changes.Of(id, [](std::int64_t) {}));
      line.clear();
      AppendLine(line, values);
      AppendMark(rowMarks_, line);
      ids_.push_back(id);
    }
  }

  void AddChanged(std::size_t row, std::size_t place) {
    isFound_ = true;
    if (changed_.size() < Verification::kMostFindings)
      changed_.push_back({ids_[row], std::string(MarkAt(marks_, place)), {}});
  }

  void CompareByNumber() {
    std::int64_t expected = range_.first;
    for (std::size_t row = 0; row < ids_.size(); ++row) {
      for (; expected < ids_[row]; ++expected) Report(Fault::kExposureDeleted, expected);
      const auto place = static_cast<std::size_t>(expected++ - range_.first);
      if (MarkAt(rowMarks_, row) != MarkAt(marks_, place)) AddChanged(row, place);
    }
    const auto most = static_cast<std::int64_t>(Verification::kMostFindings);
    const std::int64_t end = std::min(range_.last, expected + most);
    for (; expected <= end; ++expected) Report(Fault::kExposureDeleted, expected);
  }

  [[nodiscard]] bool IsSame(std::size_t row, std::size_t place) const {
    return row < ids_.size() && place < count_ && MarkAt(rowMarks_, row) == MarkAt(marks_, place);
  }

  // The number of an exposure that is gone is not known; the first that it can have had is named.
  void ReportGone(std::size_t nextRow) {
    Report(Fault::kExposureDeleted, nextRow == 0 ? range_.first : ids_[nextRow - 1] + 1);
  }

  void Align() {
    std::size_t row = 0;
    std::size_t place = 0;
    while (row < ids_.size() && place < count_) {
      if (IsSame(row, place)) {
        ++row;
        ++place;
      } else if (IsSame(row, place + 1)) {
        ReportGone(row);
        ++place;
      } else if (IsSame(row + 1, place)) {
        Report(Fault::kExposureInserted, ids_[row++]);
      } else {
        AddChanged(row++, place++);
      }
    }
    for (; row < ids_.size(); ++row) Report(Fault::kExposureInserted, ids_[row]);
    for (; place < count_; ++place) ReportGone(ids_.size());
  }

  void ReadContent(Changed& changed) {
    const auto scan = log_.Scan(kExposures, SealedFields(), {.first = changed.id, .last = changed.id});
    if (!scan->Next()) return;
    std::vector<dao::CellView> values = scan->Values();
    ChangeWalk changes(log_, changed.id);
    UndoTo(values, changes.Of(changed.id, [](std::int64_t) {}));
    values.erase(values.begin());
    AppendLine(changed.content, values);
  }

  // Whether the first one's content was sealed under the number of the second.
  [[nodiscard]] static bool WasUnder(const Changed& content, const Changed& number) {
    std::string line;
    AppendNumber(line, number.id);
    std::string mark;
    AppendMark(mark, line + content.content);
    return mark == number.mark;
  }

  void ReportChanged() {
    for (Changed& each : changed_) ReadContent(each);
    for (auto first = changed_.begin(); first != changed_.end(); ++first) {
      if (first->isTold) continue;
      const auto other = std::find_if(first + 1, changed_.end(), [&](const Changed& second) {
        return !second.isTold && WasUnder(*first, second) && WasUnder(second, *first);
      });
      if (other == changed_.end()) {
        Report(Fault::kExposureChanged, first->id);
      } else {
        other->isTold = true;
        Report(Fault::kExposuresSwapped, first->id, other->id);
      }
    }
  }

  dao::Database& log_;
  const RowRange& range_;
  const Findings& findings_;
  std::string marks_;
  std::size_t count_ = 0;  // of marks
  std::vector<std::int64_t> ids_;
  std::string rowMarks_;
  std::vector<Changed> changed_;
  bool isFound_ = false;
};

}  // namespace

void LocateExposures(dao::Database& log, const RowRange& range, const Findings& findings) {
  Location(log, range, findings).Run();
}

}  // namespace varnlog::seals
