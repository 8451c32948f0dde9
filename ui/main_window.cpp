#include "ui/main_window.h"

#include <QCloseEvent>
#include <QLineEdit>
#include <QMenuBar>

#include "base/about.h"
#include "ui/about_box.h"
#include "ui/activity_light.h"
#include "ui/bindings.h"
#include "ui/intake_texts.h"
#include "ui/looks.h"
#include "ui/menus.h"
#include "ui/setup_dialog.h"
#include "ui/status_window.h"
#include "ui/twips.h"
#include "ui/value_label.h"

namespace ostrel::ui {
namespace {

constexpr int kClientWidth = 7755;
constexpr int kClientHeight = 5685;
constexpr int kTextHeight = 195;
constexpr int kBoxHeight = 255;
constexpr int kColumnWidth = 3795;
constexpr int kListHeight = 690;
constexpr int kRowsShown = 3;
constexpr int kColumnLeft[] = {60, 3900};
constexpr int kListTop[] = {870, 1875, 2880, 3915, 4965};
// Far below anything a screen shows, however large the window is pulled.
constexpr int kFocusTop = 60000;

QString InLines(QStringList lines) {
  lines.removeAll(QString());
  return lines.join('\n');
}

QColor ColorOf(Shade shade) {
  switch (shade) {
    case Shade::kYellow:
      return kYellow;
    case Shade::kRed:
      return kRed;
    case Shade::kLightGrey:
    case Shade::kNone:
      break;
  }
  return kLightGrey;
}

/// The label's ground follows `shade`.
void Paint(QLabel* label, Field<Shade>& shade) {
  const auto paint = [label](Shade value) {
    if (value != Shade::kNone) return SetBackground(label, ColorOf(value));
    label->setAutoFillBackground(false);
    label->setPalette({});
  };
  paint(shade.Get());
  KeepWith(label, shade.OnChange(paint));
}

}  // namespace

MainWindow::MainWindow(MainFields& state, const TransmitStatus& status,
                       std::function<Figures()> figures, Actions& actions)
    : state_(state),
      status_(status),
      figures_(std::move(figures)),
      actions_(actions),
      client_(new QWidget(this)) {
  setObjectName("frmMain");
  setWindowTitle(kMainCaption);
  setContextMenuPolicy(Qt::NoContextMenu);
  client_->setFont(MainFont());
  setCentralWidget(client_);
  BuildMenus();
  BuildFrames();
  BuildSending();
  BuildLight();
  BuildFigures();
  for (const Priority p : AllPriorities()) BuildQueue(p);
  resize(kClientWidth / kTwipsPerPixel,
         kClientHeight / kTwipsPerPixel + menuBar()->sizeHint().height());
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  // A taskbar closes a window that is not active; the setup dialog has not been left then. What it
  // cannot store does not hold up the end.
  if (auto* const setup = findChild<SetupDialog*>()) setup->Leave();
  actions_.Close();
}

template <typename Label>
Label* MainWindow::AddLabel(const char* name, const QRect& place) {
  auto* const label = new Label(client_);
  label->setObjectName(name);
  label->setGeometry(place);
  return label;
}

void MainWindow::AddCaption(const char* name, const QRect& place, const char* text) {
  auto* const label = AddLabel<QLabel>(name, place);
  label->setText(text);
  label->setAttribute(Qt::WA_TransparentForMouseEvents);
}

template <typename Label>
Label* MainWindow::AddBound(const QRect& place, Field<std::string>& field) {
  auto* const label = AddLabel<Label>(field.name().c_str(), place);
  Bind(label, field);
  return label;
}

ElidedLabel* MainWindow::AddFigure(const QRect& place, Field<std::string>& field) {
  auto* const label = AddBound<ElidedLabel>(place, field);
  SetBackground(label, kLightGrey);
  return label;
}

ElidedLabel* MainWindow::AddBoxedFigure(const QRect& place, Field<std::string>& field) {
  auto* const label = AddBound<ElidedLabel>(place, field);
  SetBoxed(label);
  label->setAlignment(Qt::AlignCenter);
  return label;
}

void MainWindow::BuildMenus() {
  Actions& actions = actions_;
  AddMenu(menuBar(), "&File", "mnuFile",
          {{"&Setup", "mnuSetup", [&actions] { actions.ShowSetup(); }},
           {"Send &Morse ID", "mnuSendCWID", [&actions] { actions.SendMorseId(); }},
           {"&View Logfile", "mnuViewLog", [&actions] { actions.ViewLogfile(); }},
           {"S&how Ingest", "mnuShowIngest", [&actions] { actions.ShowIngest(); }},
           {"&Queue Status", "mnuStatus", [this] { ShowStatus(); }},
           {"-", "mnubar2", {}},
           {"&Export Settings", "mnuRegistryExport", [&actions] { actions.ExportSettings(); }},
           {"&Import Settings", "mnuRegistryImport", [&actions] { actions.ImportSettings(); }},
           {"-", "mnubar1", {}},
           {"E&xit", "mnuExit", [&actions] { actions.Exit(); }}});
  AddMenu(menuBar(), "&Help", "mnuHelp",
          {{"&About", "mnuHelpAbout", [this] { ShowAbout(); }},
           {"-", "mnubar0", {}},
           {"&Pellum on the Web", "mnuHelpWeb", [&actions] { actions.OpenWebSite(); }},
           {"&E-Mail Program Support", "mnuEmail", [&actions] { actions.MailSupport(); }}});
}

void MainWindow::BuildFrames() {
  auto* const frame = AddLabel<QLabel>("lblFrame", FromTwips(0, 0, kClientWidth, kClientHeight));
  frame->setFrameStyle(QFrame::Panel | QFrame::Raised);
  auto* const focus = new QLineEdit("Text1", client_);
  focus->setObjectName("txtFocus");
  focus->setAccessibleName("Queues");
  focus->setReadOnly(true);
  focus->setGeometry(FromTwips(kColumnLeft[0], kFocusTop, 1320, kBoxHeight));
  focus->setFocus();
  SetBoxed(AddLabel<QLabel>("lblStatus1", FromTwips(kColumnLeft[0], 75, kColumnWidth, kBoxHeight)));

  // The readout stands at the right, clear of the count of files at the left of the same pane.
  auto* const readout = AddLabel<ValueLabel>(
      state_.lblStatus2.name().c_str(), FromTwips(kColumnLeft[1], 75, kColumnWidth, kBoxHeight));
  BindValue(readout, "Timing readout", state_.lblStatus2);
  SetBoxed(readout);
  readout->setMargin(2);
  readout->setCursor(Qt::PointingHandCursor);
  readout->setToolTip("Click to switch the timing readout on or off.");
  readout->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  QFont bold = client_->font();
  bold.setBold(true);
  readout->setFont(bold);
  connect(readout, &ValueLabel::Clicked, this, [this] { actions_.ToggleTimingReadout(); });
}

void MainWindow::BuildSending() {
  AddCaption("lblSend", FromTwips(120, 105, 720, kTextHeight), "Sending:");
  auto* const file = AddFigure(FromTwips(840, 105, 1320, kTextHeight), state_.lblActivefile);
  Paint(file, state_.lblActivefileBackColor);
  file->SetRemark([this] {
    const auto left = figures_().endsIn;
    return left > milliseconds(0) ? ToQt(SpellDuration(left)) + " left" : QString();
  });

  AddCaption("lblBlock", FromTwips(2160, 105, 435, kTextHeight), "Block");
  AddFigure(FromTwips(2595, 105, 360, kTextHeight), state_.lblBlkPktNum)
      ->setAlignment(Qt::AlignCenter);
  AddCaption("lblOF", FromTwips(2970, 105, 240, kTextHeight), "Of");
  AddFigure(FromTwips(3225, 105, 360, kTextHeight), state_.lblBlkPktTot)
      ->setAlignment(Qt::AlignCenter);
  AddCaption("lblFilesSentDesc", FromTwips(3960, 105, 840, kTextHeight), "Files Sent:");
  AddFigure(FromTwips(4800, 105, 900, kTextHeight), state_.lblFilesSent)->SetRemark([this] {
    QStringList lines;
    for (const auto& [at, name] : status_.LastStarted)
      lines << ToQt(FormatLogStamp(at)) + "  " + Shown(name);
    return lines.join('\n');
  });
}

void MainWindow::BuildLight() {
  const QRect place = FromTwips(3630, 150, 120, 120);
  const auto addPicture = [&](const char* name, Light light) {
    auto* const picture = AddLabel<QLabel>(name, place);
    picture->setPixmap(LightPicture(light, devicePixelRatioF()));
    picture->hide();
    return picture;
  };
  auto* const red = addPicture("imgRedLed", Light::kRed);
  auto* const yellow = addPicture("imgYellowLed", Light::kYellow);
  auto* const light = AddLabel<QLabel>(state_.imgActivity.name().c_str(), place);
  light->setAccessibleName("Activity");
  const auto show = [=](Light state) {
    light->setPixmap(state == Light::kNone  ? QPixmap()
                     : state == Light::kRed ? red->pixmap()
                                            : yellow->pixmap());
  };
  show(state_.imgActivity.Get());
  KeepWith(light, state_.imgActivity.OnChange(show));
  const auto tell = [light](const std::string& text) {
    light->setToolTip(PlainToolTip(Shown(text)));
  };
  tell(state_.imgActivityToolTip.Get());
  KeepWith(light, state_.imgActivityToolTip.OnChange(tell));
}

void MainWindow::BuildFigures() {
  auto* const rate = AddBoxedFigure(FromTwips(60, 345, 2535, kBoxHeight), state_.lblDataRate);
  Paint(rate, state_.lblDataRateBackColor);
  BindToolTip(rate, state_.lblDataRateToolTip);
  AddBoxedFigure(FromTwips(2610, 345, 2520, kBoxHeight), state_.lblCompressionRatio);
  AddBoxedFigure(FromTwips(5145, 345, 2550, kBoxHeight), state_.lblThroughput)->SetRemark([this] {
    const QString time = TimeUntilOutText(AllPriorities().back());
    return InLines({time.isEmpty() ? time : "All queues are empty in about " + time,
                    IngestText(figures_().intake)});
  });
}

void MainWindow::BuildQueue(Priority p) {
  const std::size_t rows = std::size(kListTop);
  const int left = kColumnLeft[p.index() / rows];
  const int top = kListTop[p.index() % rows];
  auto* const caption = AddBound<ElidedLabel>(
      FromTwips(left, top - kBoxHeight, kColumnWidth, kBoxHeight), state_.lblSending[p]);
  SetBoxed(caption);
  SetBackground(caption, kQueueYellow);
  caption->setAlignment(Qt::AlignCenter);
  caption->SetRemark([this, p] {
    const auto waiting = state_.PriorityList[p].size();
    QString refused = RefusedText(figures_().intake, p);
    if (waiting == 0) return refused;
    const QString time = TimeUntilOutText(p);
    return InLines(
        {QString("%1 waiting").arg(waiting) + (time.isEmpty() ? time : ", about " + time),
         refused});
  });

  auto* const list = new ListView(state_.PriorityList[p],
                                  QString("Queue of priority %1").arg(p.number()), client_);
  list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  list->setGeometry(FromTwips(left, top, kColumnWidth, kListHeight));
  list->ShowWholeRows(kRowsShown);
  caption->setBuddy(list);
  connect(list, &ListView::DeletePressed, this, [this, list, p] {
    actions_.RemoveQueued(p, list->Selected());
    list->clearSelection();
  });
}

QString MainWindow::TimeUntilOutText(Priority p) const {
  const auto time = TimeUntilOut(figures_(), p);
  return time ? ToQt(SpellDuration(*time)) : QString();
}

void MainWindow::ShowStatus() {
  if (!statusWindow_) statusWindow_ = new StatusWindow(state_, status_, figures_, this);
  BringForward(statusWindow_);
}

void MainWindow::ShowAbout() {
  if (!about_) about_ = new AboutBox(this);
  BringForward(about_);
}

}  // namespace ostrel::ui
