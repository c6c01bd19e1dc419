#include "report/PdfFile.h"

#include <QFileInfo>
#include <QPdfWriter>
#include <QSaveFile>

#include "report/PaintedReport.h"

namespace varnlog::report {

namespace {

QString FromUtf8(const std::string& text) {
  return QString::fromStdString(text);
}

/// The writer never says that its file is full: asked after each page, a report of a thousand pages need not
/// be drawn to the end first.
class WatchedProgress final : public ReportProgress {
 public:
  WatchedProgress(ReportProgress& progress, const QFileDevice& file) : progress_(progress), file_(file) {}

  bool Counting(std::int64_t rowsDone, std::int64_t rows) override {
    return progress_.Counting(rowsDone, rows);
  }
  bool Painting(int page, int pages) override {
    return file_.error() == QFileDevice::NoError && progress_.Painting(page, pages);
  }

 private:
  ReportProgress& progress_;
  const QFileDevice& file_;
};

void SetUp(QPdfWriter& writer, const ReportJob& job, const QPageLayout& page) {
  constexpr int kPointsPerInch = 72;
  writer.setResolution(static_cast<int>(kFontUnitsPerPoint) * kPointsPerInch);
  writer.setPageLayout(page);
  writer.setTitle(FromUtf8(job.report.Title()));
  writer.setCreator(FromUtf8(*job.report.Caption("txtProduct")));
}

[[noreturn]] void Fail(const std::string& path, const QFileDevice& file) {
  throw SaveError(path, file.errorString().toStdString());
}

}  // namespace

bool SavePdf(const ReportJob& job, const QPageLayout& page, const std::string& path,
             ReportProgress& progress) {
  const QString name = FromUtf8(path);
  // A rename would put a plain file in the place of a device or a pipe.
  if (const QFileInfo old(name); old.exists() && !old.isFile()) throw SaveError(path, "not a plain file");
  PaintedReport report(job, page);
  if (!report.Paginate(progress)) return false;
  QSaveFile file(name);
  if (!file.open(QIODevice::WriteOnly)) Fail(path, file);
  WatchedProgress watched(progress, file);
  bool complete = false;
  {
    QPdfWriter writer(&file);
    SetUp(writer, job, page);
    complete = report.Paint(writer, {}, watched);
  }
  if (file.error() != QFileDevice::NoError) Fail(path, file);
  if (!complete) return false;
  if (!file.commit()) Fail(path, file);
  return true;
}

}  // namespace varnlog::report
