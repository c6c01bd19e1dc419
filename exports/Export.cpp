#include "exports/Export.h"

#include <array>
#include <exception>
#include <limits>

#include "core/EngineMessages.h"
#include "exports/RowWriter.h"
#include "exports/XlsxWriter.h"
#include "platform/Ascii.h"
#include "platform/Files.h"

namespace varnlog::exports {

using namespace core::literals;

namespace {

constexpr std::int64_t kRowsBetweenReports = 512;

constexpr std::array<std::pair<std::string_view, Format>, 3> kEndings = {{
    {".xlsx", Format::kXlsx},
    {".csv", Format::kCsv},
    {".json", Format::kJson},
}};

void RequireDone(const ExportTarget& target, const std::error_code& error) {
  if (error) throw ExportError(target.file, error.message());
}

/// Text on its way into the new file.
class FileSink final : public TextSink {
 public:
  FileSink(platform::File& file, const ExportTarget& target) : file_(file), target_(target) {}

  void Write(std::string_view text) override {
    constexpr std::size_t kPortion = std::size_t{1} << 18U;
    pending_.append(text);
    if (pending_.size() >= kPortion) Drain();
  }

  void Drain() {
    std::error_code error;
    file_.WriteAt(written_, pending_, error);
    RequireDone(target_, error);
    written_ += pending_.size();
    pending_.clear();
  }

 private:
  platform::File& file_;
  const ExportTarget& target_;
  std::string pending_;
  std::uint64_t written_ = 0;
};

/// The rows written; nothing when it was stopped.
std::optional<std::int64_t> WriteRows(const ExportJob& job, RowWriter& writer, ExportProgress& progress) {
  writer.Begin(job.source.Headings());
  while (!job.rows.Populate(std::numeric_limits<std::int32_t>::max())) {
  }
  const std::int64_t all = job.rows.RecordCount();
  if (all > 0) job.rows.MoveFirst();
  Row row;
  std::int64_t written = 0;
  for (std::int64_t seen = 0; seen < all; ++seen, job.rows.MoveNext()) {
    if (seen % kRowsBetweenReports == 0 && !progress.Exported(seen, all)) return std::nullopt;
    if (!ReadRow(job.source, row)) continue;
    writer.Add(row);
    ++written;
  }
  if (!progress.Exported(all, all)) return std::nullopt;
  writer.End();
  return written;
}

WorkbookForm FormOf(const ExportJob& job) {
  const auto text = [&job](core::TextKey key) { return job.texts.GetText(key); };
  return {.sheetName = text("EX_SHEET"_key),
          .widths = job.source.Widths(),
          .infoName = text("EX_INFO"_key),
          .facts = {{text("EX_SITE"_key), job.site},
                    {text("EX_SELECTION"_key), job.selection},
                    {text("EX_DAY"_key), job.day}},
          .rowsLabel = text("EX_ROWS"_key)};
}

std::optional<std::int64_t> WriteText(const ExportJob& job, const ExportTarget& target, platform::File& file,
                                      ExportProgress& progress) {
  FileSink sink(file, target);
  const auto writer = target.format == Format::kCsv
                          ? MakeCsvWriter(sink, {.separator = target.listSeparator, .byteOrderMark = true})
                          : MakeJsonWriter(sink);
  const auto written = WriteRows(job, *writer, progress);
  if (written) sink.Drain();
  return written;
}

}  // namespace

std::optional<Format> FormatOf(std::string_view file) {
  for (const auto& [ending, format] : kEndings) {
    if (file.size() < ending.size()) continue;
    if (platform::ascii::SameLetters(file.substr(file.size() - ending.size()), ending)) return format;
  }
  return std::nullopt;
}

std::string ExportErrorText(const core::TextLookup& texts, const std::exception& error) {
  if (const auto* failed = dynamic_cast<const ExportError*>(&error)) {
    return core::FilledText(texts, "EX_ERR_WRITE"_key,
                            {{"strFile", failed->file()}, {"strError", failed->what()}});
  }
  if (const auto* engine = dynamic_cast<const dao::EngineError*>(&error)) {
    return core::EngineErrorText(texts, *engine);
  }
  return error.what();
}

std::optional<std::int64_t> Export(const ExportJob& job, const ExportTarget& target,
                                   ExportProgress& progress) {
  const auto path = platform::ToPath(target.file);
  std::error_code error;
  if (target.ifTaken == platform::IfTaken::kFail && std::filesystem::exists(path, error)) {
    RequireDone(target, std::make_error_code(std::errc::file_exists));
  }
  platform::NewFile made(path, error, platform::ToPath(target.log));
  RequireDone(target, error);
  std::optional<std::int64_t> written;
  try {
    if (target.format == Format::kXlsx) {
      XlsxWriter writer(made.path(), FormOf(job));
      written = WriteRows(job, writer, progress);
    } else {
      written = WriteText(job, target, made.file(), progress);
    }
  } catch (const WorkbookError& failed) {
    throw ExportError(target.file, failed.what());
  }
  if (written) RequireDone(target, made.TakePlace(target.ifTaken));
  return written;
}

}  // namespace varnlog::exports
