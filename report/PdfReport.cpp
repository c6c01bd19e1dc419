#include "report/PdfReport.h"

#include <array>
#include <cstdio>

#include <QGuiApplication>

#include "report/PaintedReport.h"
#include "report/PdfFile.h"

namespace varnlog::report {

namespace {

// Standard error belongs to the program; Qt's remarks about the environment are nothing to its user.
void KeepSilent(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtFatalMsg) std::fprintf(stderr, "%s\n", message.toUtf8().constData());
}

}  // namespace

struct DrawingWithoutDisplay::Application {
  int argc = 1;
  std::array<char, 8> name{"varnlog"};
  std::array<char*, 2> argv{name.data(), nullptr};
  QGuiApplication application{argc, argv.data()};
};

DrawingWithoutDisplay::DrawingWithoutDisplay() {
  // Whatever display there may be is not needed, and one that cannot be reached would end the program.
  // Windows has one always, and its fonts are found with it only.
#ifndef Q_OS_WIN
  qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
  qInstallMessageHandler(KeepSilent);
  application_ = std::make_unique<Application>();
}

DrawingWithoutDisplay::~DrawingWithoutDisplay() {
  application_.reset();
  qInstallMessageHandler(nullptr);
}

bool SaveReportAsPdf(const ReportJob& job, const PdfTarget& target, ReportProgress& progress) {
  return SavePdf(job, DefaultPageLayout(job.design), target, progress);
}

}  // namespace varnlog::report
