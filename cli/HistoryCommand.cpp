#include "cli/Command.h"
#include "cli/ListFormats.h"
#include "logview/Selection.h"
#include "seals/History.h"

namespace varnlog::cli {

namespace {

using exports::Cell;
using exports::Row;

const std::vector<std::string>& Headings() {
  static const std::vector<std::string> kHeadings = {
      "tXrayCulIntIDPk", "entry", "kind",   "time",  "offset",  "account", "fullName",
      "workstation",     "field", "before", "after", "program", "seal"};
  return kHeadings;
}

Cell TextCell(const std::string& text) {
  Cell cell;
  cell.text = text;
  return cell;
}

Cell NumberCell(std::int64_t number) {
  Cell cell;
  cell.text = std::to_string(number);
  cell.kind = Cell::Kind::kNumber;
  return cell;
}

Cell ValueCell(const std::optional<std::string>& value) {
  Cell cell;
  if (!value) cell.kind = Cell::Kind::kNull;
  cell.text = value.value_or("");
  return cell;
}

Row ToRow(const seals::HistoryEntry& entry) {
  const seals::Origin& origin = entry.origin;
  return {NumberCell(entry.exposure),
          NumberCell(entry.number),
          TextCell(entry.kind),
          TextCell(origin.time.IsSet() ? origin.time.ToIso() : ""),
          NumberCell(origin.offsetMinutes),
          TextCell(origin.account),
          TextCell(origin.fullName),
          TextCell(origin.place),
          TextCell(entry.field),
          ValueCell(entry.before),
          ValueCell(entry.after),
          TextCell(origin.program),
          NumberCell(origin.seal)};
}

/// Each entry of each exposure of the selection.
template <typename Take>
void ForEachEntry(Session& session, dao::Recordset& rows, const Take& take) {
  const dao::Field& number = rows.Fields("tXrayCulIntIDPk");
  for (; !rows.IsEOF(); rows.MoveNext()) {
    for (const auto& entry : seals::ReadHistory(session.Log(), number.Number())) take(ToRow(entry));
  }
}

}  // namespace

void RunHistoryCommand(Session& session, const Options& options, Output& output) {
  SetSelection(session.globals(), options, session.shortDate());
  session.OpenLog(Session::Access::kRead);
  const auto selection = logview::BuildSelection(session.globals(), session.texts(), session.shortDate());
  const auto rows = session.Log().OpenRecordset(selection.sql);
  const auto writer =
      MakeRowWriter(options.format, options.raw ? exports::Values::kRaw : exports::Values::kHarmless, output);
  writer->Begin(Headings());
  if (writer->NeedsMeasure() && !rows->IsEOF()) {
    ForEachEntry(session, *rows, [&](const Row& row) { writer->Measure(row); });
    rows->MoveFirst();
  }
  ForEachEntry(session, *rows, [&](const Row& row) { writer->Add(row); });
  writer->End();
}

}  // namespace varnlog::cli
