#include "inspection/InspectionFolder.h"

#include <limits>
#include <span>
#include <vector>

#include <QPageLayout>

#include "charts/ChartFile.h"
#include "core/LogConfig.h"
#include "db/modCommon.h"
#include "exports/Export.h"
#include "exports/ZipWriter.h"
#include "inspection/InspectionLists.h"
#include "inspection/StartPage.h"
#include "logview/Columns.h"
#include "logview/Selection.h"
#include "platform/NewFolder.h"
#include "platform/Sha256.h"
#include "report/PaintedReport.h"
#include "report/PdfFile.h"
#include "statistics/StatisticsPages.h"
#include "statistics/StatisticsReader.h"
#include "statistics/StatisticsRows.h"

namespace varnlog::inspection {

using namespace core::literals;

namespace {

constexpr std::string_view kMissingIds = "MissingIds";

class TextOf final : public exports::TextSink {
 public:
  void Write(std::string_view text) override { text_.append(text); }
  [[nodiscard]] const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

class Exporting final : public exports::ExportProgress {
 public:
  explicit Exporting(InspectionProgress& progress) : progress_(progress) {}
  bool Exported(std::int64_t done, std::int64_t all) override {
    return progress_.Working("EX_PROGRESS"_key, done, all);
  }

 private:
  InspectionProgress& progress_;
};

class Reporting final : public report::ReportProgress {
 public:
  explicit Reporting(InspectionProgress& progress) : progress_(progress) {}
  bool Counting(std::int64_t done, std::int64_t all) override {
    return progress_.Working("IN_COUNTING"_key, done, all);
  }
  bool Painting(int page, int pages) override { return progress_.Working("IN_PAINTING"_key, page, pages); }

 private:
  InspectionProgress& progress_;
};

std::string DigestOf(const std::filesystem::path& path) {
  constexpr std::size_t kPortion = std::size_t{1} << 18U;
  std::error_code error;
  const platform::File file = platform::File::Open(path, platform::File::Mode::kRead, error);
  platform::Sha256 digest;
  std::vector<char> buffer(kPortion);
  for (std::uint64_t at = 0; !error;) {
    const std::size_t got = file.ReadAt(at, buffer, error);
    if (got == 0) break;
    digest.Add({buffer.data(), got});
    at += got;
  }
  if (error) throw InspectionError(platform::FromPath(path), error.message());
  return digest.Hex();
}

/// Makes the files of one folder. Each step is false when the user stopped it.
class Maker {
 public:
  Maker(const InspectionContext& context, const InspectionOrder& order, InspectionProgress& progress,
        const std::filesystem::path& folder)
      : context_(context), order_(order), progress_(progress), folder_(folder) {
    core::Selection selection;
    selection.SortSelectionGl = core::SelectionKind::kPeriod;
    selection.dBegGl = order.from;
    selection.dEndGl = order.to;
    const auto view = logview::BuildSelection(selection, context.texts, context.shortDate);
    headline_ = view.headline;
    const std::string sql =
        order.oldestFirst ? db::ReplaceSortClause(view.sql, "ORDER BY TXray.tXrayTs;") : view.sql;
    rows_ = context.log.OpenRecordset(sql, dao::RecordsetType::kDynaset);
    while (!rows_->Populate(std::numeric_limits<std::int32_t>::max())) {
    }
  }

  [[nodiscard]] bool MakeAll() {
    const auto lists = FindLists(context_.log, rows_->Ids(), order_.patients);
    if (!WriteReport() || !Export(*rows_, "exposures.xlsx", "IN_EXPOSURES"_key)) return false;
    if (!WriteStatistics()) return false;
    if (!ExportSome(lists.incomplete, "incomplete.csv", "IN_INCOMPLETE"_key)) return false;
    if (!ExportSome(lists.retakes, "repeats.csv", "IN_REPEATS"_key)) return false;
    if (order_.patients > 0 && !ExportSome(lists.sample, "sample.csv", "IN_SAMPLE"_key)) return false;
    WriteGaps();
    WriteStartPage();
    WriteDigests();
    return true;
  }

  [[nodiscard]] std::int64_t Exposures() const { return rows_->RecordCount(); }
  [[nodiscard]] const std::vector<std::string>& Files() const { return files_; }

 private:
  [[nodiscard]] std::string Text(core::TextKey key) const { return context_.texts.GetText(key); }
  [[nodiscard]] std::string PathOf(const std::string& name) const {
    return platform::FromPath(folder_ / platform::ToPath(name));
  }
  void Note(const std::string& name, const std::string& meaning) {
    files_.push_back(name);
    page_.files.emplace_back(name, meaning);
  }

  void Write(const std::string& name, std::string_view content) {
    const auto error = platform::WriteWholeFile(folder_ / platform::ToPath(name), content,
                                                platform::IfTaken::kFail, platform::ToPath(context_.logFile));
    if (error) throw InspectionError(PathOf(name), error.message());
  }

  [[nodiscard]] bool WriteReport() {
    state_ = report::ReadLogState(context_.log);
    if (Exposures() > 0) rows_->MoveFirst();
    report::ReportJob job = report::BeginReport(context_.texts, context_.site, headline_,
                                                context_.clock.Today(), context_.shortDate, *rows_, state_);
    if (order_.profile == Profile::kAuthority) {
      for (auto& section : job.design.sections)
        for (report::BandDesign& band : section)
          std::erase_if(band.objects, [](const report::ObjectDesign& object) {
            return object.name == "txtComment" || object.name == "fldComment";
          });
    }
    Reporting progress(progress_);
    Note("report.pdf", Text("IN_REPORT"_key));
    return report::SavePdf(
        job, report::DefaultPageLayout(job.design),
        {.file = PathOf("report.pdf"), .log = context_.logFile, .language = context_.language}, progress);
  }

  [[nodiscard]] std::vector<int> Columns() const {
    std::vector<int> columns = exports::AllColumns();
    if (order_.profile == Profile::kAuthority) std::erase(columns, int{logview::kCommentColumn});
    return columns;
  }

  [[nodiscard]] bool Export(dao::Recordset& rows, const std::string& name, core::TextKey meaning) {
    const auto source =
        exports::MakeDisplayedRows(rows, {context_.texts, context_.scheme, context_.shortDate}, Columns());
    Exporting progress(progress_);
    const auto written = exports::Export({.rows = rows,
                                          .source = *source,
                                          .texts = context_.texts,
                                          .site = context_.site,
                                          .selection = headline_,
                                          .day = context_.shortDate.Format(context_.clock.Today())},
                                         {.file = PathOf(name),
                                          .format = *exports::FormatOf(name),
                                          .ifTaken = platform::IfTaken::kFail,
                                          .log = context_.logFile,
                                          .listSeparator = context_.listSeparator},
                                         progress);
    if (!written) return false;
    Note(name, core::FilledText(context_.texts, meaning, {{"lngCount", std::to_string(*written)}}));
    return true;
  }

  [[nodiscard]] bool ExportSome(const std::vector<std::int64_t>& ids, const std::string& name,
                                core::TextKey meaning) {
    const auto rows = rows_->Only(ids);
    return Export(*rows, name, meaning);
  }

  [[nodiscard]] exports::CsvForm Csv() const {
    return {.separator = context_.listSeparator, .byteOrderMark = true};
  }

  [[nodiscard]] bool WriteStatistics() {
    const auto today = context_.clock.Today();
    const auto read = statistics::ReadStatistics(context_.log, rows_->Ids(), today);
    const auto pages = statistics::MakePages(read, statistics::LoadReferenceLevels(context_.levels, today),
                                             context_.texts, context_.shortDate);
    const QByteArray pdf = charts::PdfOf(pages, headline_, report::DefaultPageLayout(report::StoredDesign()));
    Write("statistics.pdf", {pdf.constData(), static_cast<std::size_t>(pdf.size())});
    Note("statistics.pdf", Text("IN_STATISTICS"_key));
    TextOf csv;
    statistics::WriteValues(pages, context_.texts, *exports::MakeCsvWriter(csv, Csv()));
    Write("statistics.csv", csv.Text());
    Note("statistics.csv", Text("IN_STATISTICSCSV"_key));
    return progress_.Working("IN_LISTS"_key, 0, 0);
  }

  /// Of the whole log: a number that is missing belongs to no period.
  void WriteGaps() {
    TextOf csv;
    const auto writer = exports::MakeCsvWriter(csv, Csv());
    writer->Begin({Text("IN_FIRST"_key), Text("IN_LAST"_key)});
    const auto gaps = context_.log.UnusedIds("TXray");
    for (const dao::IdRange& gap : gaps)
      writer->Add({{.text = std::to_string(gap.first), .kind = exports::Cell::Kind::kNumber},
                   {.text = std::to_string(gap.last), .kind = exports::Cell::Kind::kNumber}});
    writer->End();
    Write("gaps.csv", csv.Text());
    const auto noted = core::ReadLogConfig(context_.log, kMissingIds);
    Note("gaps.csv",
         core::FilledText(context_.texts, "IN_GAPS"_key, {{"lngCount", std::to_string(gaps.size())}}) +
             (noted && !noted->empty() ? " " + Text("IN_GAPSNOTED"_key) + " " + *noted : ""));
  }

  void WriteStartPage() {
    page_.language = context_.language;
    page_.title = headline_;
    page_.facts = {{Text("EX_SITE"_key), context_.site},
                   {Text("IN_PROFILE"_key),
                    Text(order_.profile == Profile::kAuthority ? "IN_AUTHORITY"_key : "IN_QUALITYBODY"_key)},
                   {Text("EX_DAY"_key), context_.shortDate.Format(context_.clock.Today())},
                   {Text("EX_ROWS"_key), std::to_string(rows_->RecordCount())}};
    if (state_) page_.facts.emplace_back(Text("IN_STATE"_key), state_->anchor);
    page_.files.emplace_back("SHA256SUMS", Text("IN_DIGESTS"_key));
    Write("index.html", ToHtml(page_));
    files_.emplace_back("index.html");
  }

  void WriteDigests() {
    std::string lines;
    for (const std::string& name : files_)
      lines += DigestOf(folder_ / platform::ToPath(name)) + "  " + name + "\n";
    Write("SHA256SUMS", lines);
    files_.emplace_back("SHA256SUMS");
  }

  const InspectionContext& context_;
  const InspectionOrder& order_;
  InspectionProgress& progress_;
  const std::filesystem::path& folder_;
  std::string headline_;
  std::unique_ptr<dao::Recordset> rows_;
  std::optional<report::LogState> state_;
  std::vector<std::string> files_;
  StartPage page_;
};

std::filesystem::path TargetOf(const InspectionContext& context, const InspectionOrder& order) {
  constexpr std::size_t kDay = 10;
  const std::string name = core::FilledText(
      context.texts, "IN_FOLDER"_key,
      {{"dFrom", order.from.ToIso().substr(0, kDay)}, {"dTo", order.to.ToIso().substr(0, kDay)}});
  return order.parent / platform::ToPath(name);
}

void RequireFree(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::exists(std::filesystem::symlink_status(path, error)))
    throw InspectionError(platform::FromPath(path), std::make_error_code(std::errc::file_exists).message());
}

void RequireDone(const std::filesystem::path& path, const std::error_code& error) {
  if (error) throw InspectionError(platform::FromPath(path), error.message());
}

}  // namespace

std::optional<InspectionMade> MakeInspectionFolder(const InspectionContext& context,
                                                   const InspectionOrder& order,
                                                   InspectionProgress& progress) {
  const std::filesystem::path target = TargetOf(context, order);
  const std::filesystem::path archive = std::filesystem::path(target) += ".zip";
  for (const auto& path : {target, archive}) RequireFree(path);
  std::error_code error;
  platform::NewFolder folder(target, error);
  RequireDone(target, error);
  Maker maker(context, order, progress, folder.path());
  if (!maker.MakeAll()) return std::nullopt;
  if (!progress.Working("IN_PACKING"_key, 0, 0)) return std::nullopt;
  platform::NewFile zip(archive, error, platform::ToPath(context.logFile));
  RequireDone(archive, error);
  std::vector<exports::ZipEntry> entries;
  const std::string inside = platform::FromPath(target.filename()) + "/";
  for (const std::string& name : maker.Files())
    entries.push_back({inside + name, folder.path() / platform::ToPath(name)});
  exports::WriteArchive(zip.path(), entries, context.clock.Now());
  RequireDone(target, folder.TakePlace());
  if (error = zip.TakePlace(platform::IfTaken::kFail); error) {
    folder.GiveUp();
    RequireDone(archive, error);
  }
  return InspectionMade{target, archive, maker.Exposures()};
}

std::string InspectionErrorText(const core::TextLookup& texts, const std::exception& error) {
  if (const auto* failed = dynamic_cast<const InspectionError*>(&error)) {
    return core::FilledText(texts, "ST_ERR_SAVE"_key,
                            {{"strFile", failed->file()}, {"strError", failed->what()}});
  }
  if (dynamic_cast<const report::SaveError*>(&error) != nullptr) return report::ReportErrorText(texts, error);
  return exports::ExportErrorText(texts, error);
}

}  // namespace varnlog::inspection
