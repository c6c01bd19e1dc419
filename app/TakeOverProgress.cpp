#include "app/TakeOverProgress.h"

#include <QApplication>
#include <QCloseEvent>

#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr qint64 kMoment = 250;  // milliseconds
constexpr qint64 kMillisecondsBetweenEvents = 30;

}  // namespace

TakeOverProgress::TakeOverProgress(QWidget* parent, const core::TextLookup& texts)
    : QProgressDialog(parent), texts_(texts) {
  setObjectName("dlgTakeOver");
  setWindowTitle(Caption(texts, "GL_TITLE"_key));
  setWindowModality(Qt::ApplicationModal);
  setCancelButton(nullptr);
  setAutoReset(false);
  setMinimumWidth(fontMetrics().averageCharWidth() * 64);
  // Shown by Advance() alone.
  reset();
  sinceBegin_.start();
  sinceEvents_.start();
}

void TakeOverProgress::closeEvent(QCloseEvent* event) {
  event->ignore();
}

void TakeOverProgress::Advance(std::int64_t done, std::int64_t all) {
  if (!isVisible() && sinceBegin_.hasExpired(kMoment)) show();
  if (!isVisible() || !sinceEvents_.hasExpired(kMillisecondsBetweenEvents)) return;
  setRange(0, static_cast<int>(all));
  setValue(static_cast<int>(done));
  setLabelText(Caption(texts_, "SL_TAKEOVER"_key,
                       {{"lngDone", std::to_string(done)}, {"lngCount", std::to_string(all)}}));
  QApplication::processEvents();
  sinceEvents_.restart();
}

}  // namespace varnlog::app
