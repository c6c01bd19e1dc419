#include "dialogs/frmBegEnd.h"

#include <QCalendarWidget>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidgetAction>

#include "core/Messages.h"
#include "ui/QtText.h"
#include "ui/Theme.h"

namespace varnlog::dialogs {

using core::TextKey;
using core::literals::operator""_key;
using ui::Caption;

frmBegEnd::frmBegEnd(QWidget* parent, Period period, const core::TextLookup& texts, core::UserDialog& user)
    : QDialog(parent), period_(period), texts_(texts), user_(user), lblHint_(new QLabel) {
  setObjectName("frmBegEnd");
  setWindowTitle(Caption(texts, "BE_CAPTION"_key));

  auto* grid = new QGridLayout;
  QString what = ui::PlainCaption(texts, period_.Command());
  if (const std::string patient = period_.Patient(); !patient.empty()) what += ": " + ui::ToQString(patient);
  auto* lblWhat = new QLabel(what);
  lblWhat->setObjectName("lblWhat");
  lblWhat->setTextFormat(Qt::PlainText);
  const QString hint = Caption(texts, "BE_DATEHINT"_key, {{"strExample", period_.Example()}});
  std::array<QToolButton*, 2> calendars{};
  constexpr TextKey kLabels[] = {"BE_FROM"_key, "BE_TO"_key};
  for (int i = 0; i < 2; ++i) {
    auto* label = new QLabel(Caption(texts, kLabels[i]));
    auto* box = new QLineEdit;
    label->setObjectName(QStringLiteral("lblDate%1").arg(i));
    label->setBuddy(box);
    box->setObjectName(QStringLiteral("txtDate%1").arg(i));
    box->setAccessibleName(ui::PlainCaption(texts, kLabels[i]));
    box->setAccessibleDescription(hint);
    // Room for the longest form, 31.12.2001 00:00:00, in any font.
    box->setMinimumWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("00.00.0000 00:00:00")) + 24);
    grid->addWidget(label, i, 0);
    grid->addWidget(box, i, 1);
    calendars.at(static_cast<std::size_t>(i)) = CalendarFor(box);
    grid->addWidget(calendars.at(static_cast<std::size_t>(i)), i, 2);
    connect(box, &QLineEdit::textChanged, this, &frmBegEnd::ShowHint);
    txtDate_.at(static_cast<std::size_t>(i)) = box;
  }

  auto* cmdCurYear = new QPushButton(Caption(texts, "BE_CURYEAR"_key));
  cmdCurYear->setObjectName("cmdCurYear");
  cmdCurYear->setAutoDefault(false);
  connect(cmdCurYear, &QPushButton::clicked, this, [this] { Fill(period_.CurrentYear()); });
  grid->addWidget(cmdCurYear, 0, 3);
  QComboBox* const usual = UsualPeriods();
  grid->addWidget(usual, 1, 3);
  lblHint_->setText(hint);
  lblHint_->setObjectName("lblHint");
  grid->addWidget(lblHint_, 2, 1, 1, 3);
  grid->setColumnStretch(1, 1);

  auto* buttons = new QDialogButtonBox;
  auto* cmdOK = buttons->addButton(Caption(texts, "GL_OK"_key), QDialogButtonBox::AcceptRole);
  auto* cmdCancel = buttons->addButton(Caption(texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole);
  cmdOK->setObjectName("cmdOK");
  cmdOK->setDefault(true);
  cmdCancel->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmBegEnd::Ok);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(lblWhat);
  layout->addSpacing(6);
  layout->addLayout(grid);
  layout->addSpacing(12);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  // From one date to the other as ever.
  QWidget* const order[] = {txtDate_[0], txtDate_[1], cmdCurYear, usual, calendars[0], calendars[1]};
  for (std::size_t i = 0; i + 1 < std::size(order); ++i) setTabOrder(order[i], order[i + 1]);
}

void frmBegEnd::Fill(const PeriodBoxes& boxes) {
  for (std::size_t i = 0; i < boxes.size(); ++i) txtDate_.at(i)->setText(ui::ToQString(boxes.at(i)));
}

QComboBox* frmBegEnd::UsualPeriods() {
  constexpr TextKey kUsual[] = {"BE_TODAY"_key,   "BE_WEEK"_key, "BE_MONTH"_key,
                                "BE_QUARTER"_key, "BE_YEAR"_key, "BE_LASTYEAR"_key};
  auto* usual = new QComboBox;
  usual->setObjectName("cboUsual");
  usual->setAccessibleName(ui::PlainCaption(texts_, "BE_USUAL"_key));
  usual->setPlaceholderText(Caption(texts_, "BE_USUAL"_key));
  for (const TextKey key : kUsual) usual->addItem(Caption(texts_, key));
  usual->setCurrentIndex(-1);
  connect(usual, &QComboBox::activated, this,
          [this](int chosen) { Fill(period_.Boxes(static_cast<Period::Usual>(chosen))); });
  return usual;
}

QToolButton* frmBegEnd::CalendarFor(QLineEdit* box) {
  auto* calendar = new QCalendarWidget;
  auto* menu = new QMenu(this);
  auto* action = new QWidgetAction(menu);
  action->setDefaultWidget(calendar);
  menu->addAction(action);
  auto* button = new QToolButton;
  button->setObjectName(box->objectName() + QStringLiteral("Calendar"));
  button->setIcon(ui::ThemedIcon(QStringLiteral("DateAll")));
  button->setToolTip(Caption(texts_, "BE_CALENDAR"_key));
  button->setAccessibleName(box->accessibleName() + QStringLiteral(" ") + button->toolTip());
  button->setMenu(menu);
  button->setPopupMode(QToolButton::InstantPopup);
  connect(menu, &QMenu::aboutToShow, this, [this, box, calendar] {
    const auto day = period_.Read(ui::FromQString(box->text().trimmed()));
    calendar->setSelectedDate(day ? QDate(day->Year(), day->Month(), day->Day()) : QDate::currentDate());
    calendar->setFocus();
  });
  const auto take = [this, box, menu](const QDate& day) {
    box->setText(
        ui::ToQString(period_.Text(platform::DateTime::FromSerial(day.year(), day.month(), day.day()))));
    menu->close();
    box->setFocus();
  };
  connect(calendar, &QCalendarWidget::clicked, this, take);
  connect(calendar, &QCalendarWidget::activated, this, take);
  return button;
}

PeriodBoxes frmBegEnd::Boxes() const {
  PeriodBoxes boxes;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    boxes.at(i) = ui::FromQString(txtDate_.at(i)->text().trimmed());
  }
  return boxes;
}

/// A reversed period is taken as it is entered, but nobody shall wonder afterwards where the exposures are.
void frmBegEnd::ShowHint() {
  lblHint_->setText(period_.IsReversed(Boxes())
                        ? Caption(texts_, "BE_REVERSED"_key)
                        : Caption(texts_, "BE_DATEHINT"_key, {{"strExample", period_.Example()}}));
}

void frmBegEnd::Ok() {
  PeriodBoxes boxes = Boxes();
  const auto problem = period_.Confirm(boxes);
  for (std::size_t i = 0; i < boxes.size(); ++i) txtDate_.at(i)->setText(ui::ToQString(boxes.at(i)));
  if (!problem) {
    accept();
    return;
  }
  core::Messages(user_, texts_).Inform(problem->message, {{"dData", problem->dData}});
  QLineEdit* box = txtDate_.at(static_cast<std::size_t>(problem->focus));
  box->setFocus();
  box->selectAll();
}

}  // namespace varnlog::dialogs
