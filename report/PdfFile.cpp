#include "report/PdfFile.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <QIODevice>
#include <QPdfWriter>

#include "core/Languages.h"
#include "platform/Ascii.h"
#include "platform/SafeFile.h"
#include "report/PaintedReport.h"
#include "report/PdfLanguage.h"

namespace varnlog::report {

namespace {

QString FromUtf8(const std::string& text) {
  return QString::fromStdString(text);
}

/// A new file for the writer, which writes in small pieces.
class FileDevice final : public QIODevice {
 public:
  explicit FileDevice(platform::File& file) : file_(file) { open(QIODevice::WriteOnly); }

  [[nodiscard]] const std::error_code& error() const { return error_; }
  void Drain() {
    if (!error_) file_.WriteAt(written_, pending_, error_);
    written_ += pending_.size();
    pending_.clear();
  }

 protected:
  qint64 readData(char* /*data*/, qint64 /*size*/) override { return -1; }
  qint64 writeData(const char* data, qint64 size) override {
    constexpr std::size_t kPortion = std::size_t{1} << 18U;
    pending_.append(data, static_cast<std::size_t>(size));
    if (pending_.size() >= kPortion) Drain();
    return error_ ? -1 : size;
  }

 private:
  platform::File& file_;
  std::string pending_;
  std::uint64_t written_ = 0;
  std::error_code error_;
};

/// The writer never says that its file is full: asked after each page, a report of a thousand pages need not
/// be drawn to the end first.
class WatchedProgress final : public ReportProgress {
 public:
  WatchedProgress(ReportProgress& progress, const FileDevice& file) : progress_(progress), file_(file) {}

  bool Counting(std::int64_t rowsDone, std::int64_t rows) override {
    return progress_.Counting(rowsDone, rows);
  }
  bool Painting(int page, int pages) override { return !file_.error() && progress_.Painting(page, pages); }

 private:
  ReportProgress& progress_;
  const FileDevice& file_;
};

void SetUp(QPdfWriter& writer, const ReportJob& job, const QPageLayout& page) {
  constexpr int kPointsPerInch = 72;
  writer.setResolution(static_cast<int>(kFontUnitsPerPoint) * kPointsPerInch);
  writer.setPageLayout(page);
  // To be kept for years: all fonts are in the file.
  writer.setPdfVersion(QPagedPaintDevice::PdfVersion_A1b);
  writer.setTitle(FromUtf8(job.report.Title()));
  writer.setCreator(FromUtf8(*job.report.Caption("txtProduct")));
}

/// A rename would put a plain file in the place of a device, a pipe or a link.
void RequirePlainFile(const std::string& file) {
  std::error_code error;
  const auto status = std::filesystem::symlink_status(platform::ToPath(file), error);
  const bool isOther = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
  if (isOther) throw SaveError(file, "not a plain file");
}

bool IsUnfinishedPdf(const platform::File& file) {
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  std::string ends(16, '\0');
  const auto read = [&](std::uint64_t place) {
    return std::string(ends, 0, file.ReadAt(place, ends, error));
  };
  if (error || size == 0) return !error;
  const bool isPdf = read(0).starts_with("%PDF-");
  return !error && isPdf &&
         read(size - std::min<std::uint64_t>(size, ends.size())).find("%%EOF") == std::string::npos && !error;
}

/// Drafts of reports that earlier versions never finished: FILE.pdf and six letters.
void SweepFormerDrafts(const std::filesystem::path& target) {
  constexpr std::size_t kLetters = 6;
  const std::string start = platform::FromPath(target.filename()) + ".";
  std::error_code error;
  std::filesystem::directory_iterator entry(target.has_parent_path() ? target.parent_path() : ".", error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string name = platform::FromPath(entry->path().filename());
    if (name.size() == start.size() + kLetters && name.starts_with(start) &&
        std::all_of(name.end() - kLetters, name.end(), platform::ascii::IsLetter))
      platform::SweepFormer(entry->path(), IsUnfinishedPdf);
  }
}

void RequireDone(const std::string& file, const std::error_code& error) {
  if (error) throw SaveError(file, error.message());
}

}  // namespace

bool SavePdf(const ReportJob& job, const QPageLayout& page, const PdfTarget& target,
             ReportProgress& progress) {
  RequirePlainFile(target.file);
  PaintedReport report(job, page);
  if (!report.Paginate(progress)) return false;
  SweepFormerDrafts(platform::ToPath(target.file));
  std::error_code error;
  platform::NewFile made(platform::ToPath(target.file), error, platform::ToPath(target.log));
  RequireDone(target.file, error);
  FileDevice device(made.file());
  WatchedProgress watched(progress, device);
  bool complete = false;
  {
    QPdfWriter writer(&device);
    SetUp(writer, job, page);
    complete = report.Paint(writer, {}, watched);
  }
  device.Drain();
  RequireDone(target.file, device.error());
  if (!complete) return false;
  AddPdfLanguage(made.file(), core::LanguageTag(target.language), error);
  RequireDone(target.file, error);
  RequireDone(target.file, made.TakePlace(platform::IfTaken::kReplace));
  return true;
}

}  // namespace varnlog::report
