#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QApplication>
#include <QStyleFactory>

#include "tools/screenshots/Album.h"
#include "tools/screenshots/WindowTour.h"

// Makes a picture of every window and dialog of the program.

namespace {

using namespace varnlog;
namespace fs = std::filesystem;

struct Options {
  std::string output;
  std::string language = "D";
  std::string scale = "1";
  std::string theme = "light";
  std::string folder = (fs::temp_directory_path() / ("varnlog-" + std::to_string(getpid()))).string();
};

void Describe(CLI::App& app, Options& options) {
  app.add_option("--output", options.output, "folder for the pictures; made when it is missing")->required();
  app.add_option("--language", options.language, "language of the program")
      ->check(CLI::IsMember({"D", "GB", "E", "I", "F", "NL", "CYR"}))
      ->capture_default_str();
  app.add_option("--scale", options.scale, "size of the screen's pixels, 2 for 200 %")
      ->check(CLI::Range(1.0, 4.0))
      ->capture_default_str();
  app.add_option("--theme", options.theme, "colours of the desktop")
      ->check(CLI::IsMember({"light", "dark"}))
      ->capture_default_str();
  app.add_option("--folder", options.folder, "where the made-up practice is set up; the status bar shows it");
}

QPalette DarkPalette() {
  const QColor window(0x2b, 0x2b, 0x2e);
  const QColor text(0xe8, 0xe8, 0xe8);
  const QColor faded(0x80, 0x80, 0x84);
  QPalette palette(QColor(0x38, 0x38, 0x3c), window);
  for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, faded);
  }
  palette.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x20));
  palette.setColor(QPalette::AlternateBase, window);
  palette.setColor(QPalette::PlaceholderText, faded);
  palette.setColor(QPalette::ToolTipBase, window);
  palette.setColor(QPalette::ToolTipText, text);
  palette.setColor(QPalette::Highlight, QColor(0x2f, 0x65, 0xa8));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0x62, 0xb0, 0xf5));
  return palette;
}

/// One wide screen on which nothing has to move to be seen.
void SetUpScreen(const Options& options, const fs::path& configuration) {
  std::ofstream(configuration)
      << R"({"screens": [{"name": "wide", "x": 0, "y": 0, "width": 7680, "height": 4800,)"
      << R"( "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})";
  setenv("QT_QPA_PLATFORM", ("offscreen:configfile=" + configuration.string()).c_str(), 1);
  setenv("QT_SCALE_FACTOR", options.scale.c_str(), 1);
}

/// The offscreen platform tells with every window what it cannot do.
void PassOn(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtWarningMsg && message.startsWith(QLatin1String("This plugin does not support"))) return;
  std::fprintf(stderr, "%s\n", qPrintable(message));
}

void TakePictures(const Options& options) {
  const tools::DemoPractice practice(
      options.folder, {VARNLOG_PROGRAM_DIR, VARNLOG_SUITE_DIR, VARNLOG_OLD_LOG}, options.language);
  const tools::Album album(options.output);
  tools::WindowTour tour(practice, options.language,
                         [&album](const QString& name, QWidget& window) { album.Add(name, window); });
  tour.Run();
}

int Run(int argc, char** argv) {
  CLI::App app("Makes a picture of every window and dialog of the program.", "screenshots");
  Options options;
  Describe(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  fs::create_directories(options.output);
  const fs::path configuration = fs::path(options.output) / "screen.json";
  SetUpScreen(options, configuration);
  qInstallMessageHandler(PassOn);
  const QApplication application(argc, argv);
  fs::remove(configuration);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  if (options.theme == "dark") QApplication::setPalette(DarkPalette());
  TakePictures(options);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "screenshots: %s\n", error.what());
    return 1;
  }
}
