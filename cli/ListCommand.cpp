#include <map>
#include <memory>

#include <CLI/CLI.hpp>

#include "cli/Command.h"
#include "cli/ListFormats.h"
#include "exports/RowSource.h"
#include "logview/Selection.h"
#include "start/StartUp.h"

namespace varnlog::cli {

namespace {

using exports::Row;
using exports::RowSource;
using exports::RowWriter;

void WriteRows(dao::Recordset& rows, const RowSource& source, RowWriter& writer) {
  Row row;
  writer.Begin(source.Headings());
  if (writer.NeedsMeasure() && !rows.IsEOF()) {
    for (; !rows.IsEOF(); rows.MoveNext()) {
      if (ReadRow(source, row)) writer.Measure(row);
    }
    rows.MoveFirst();
  }
  for (; !rows.IsEOF(); rows.MoveNext()) {
    if (ReadRow(source, row)) writer.Add(row);
  }
  writer.End();
}

}  // namespace

void AddHistoryOptions(CLI::App& command, Options& options) {
  static const std::map<std::string, ListFormat> kFormats = {
      {"table", ListFormat::kTable}, {"csv", ListFormat::kCsv}, {"json", ListFormat::kJson}};
  AddSelectionOptions(command, options);
  command.add_option("--format", options.format, "table, csv or json")
      ->transform(CLI::CheckedTransformer(kFormats))
      ->option_text("table|csv|json");
  command.add_flag(
      "--raw", options.raw,
      "table and csv: texts exactly as they are stored, even what a terminal or a spreadsheet obeys");
}

void AddListOptions(CLI::App& command, Options& options) {
  AddHistoryOptions(command, options);
  command.add_flag("--display", options.display,
                   "the columns of the program's log view instead of the stored fields");
}

void RunListCommand(Session& session, const Options& options, Output& output) {
  SetSelection(session.globals(), options, session.shortDate());
  session.OpenLog(Session::Access::kRead);
  const auto selection = logview::BuildSelection(session.globals(), session.texts(), session.shortDate());
  const auto rows = session.Log().OpenRecordset(selection.sql);
  const start::HostToothScheme scheme(session.globals(), session.ini());
  const auto source = options.display
                          ? exports::MakeDisplayedRows(*rows, {session.texts(), scheme, session.shortDate()},
                                                       exports::AllColumns())
                          : exports::MakeStoredRows(*rows);
  const exports::Values values = options.raw ? exports::Values::kRaw : exports::Values::kHarmless;
  WriteRows(*rows, *source, *MakeRowWriter(options.format, values, output));
}

}  // namespace varnlog::cli
