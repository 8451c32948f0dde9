#include <QCheckBox>
#include <QHelpEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTextDocumentFragment>
#include <QToolTip>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/ui/windowed_station.h"

namespace ostrel {
namespace {

TEST(MainWindow, TheStationsFiguresShowAtTheirPlaces) {
  WindowedStation ostrel;
  // Pixels, each of 15 twips.
  const std::pair<const char*, QRect> places[] = {{"lblActivefile", {56, 7, 88, 13}},
                                                  {"PriorityList(1)", {4, 125, 253, 46}},
                                                  {"PriorityList(9)", {260, 331, 253, 46}}};
  for (const auto& [name, place] : places) {
    EXPECT_EQ(ostrel.Find<QWidget>(name)->geometry(), place) << name;
  }
  auto* const file = ostrel.Find<QLabel>("lblActivefile");
  ostrel.window().lblActivefileBackColor.Set(Shade::kRed);
  ostrel.window().lblActivefile.Set("Station ID");
  EXPECT_EQ(file->palette().color(QPalette::Window).name(), "#ff0000");
  EXPECT_EQ(file->text(), "Station ID");
  auto* const rate = ostrel.Find<QLabel>("lblDataRate");
  for (const auto shade : {Shade::kRed, Shade::kNone}) {
    ostrel.window().lblDataRateBackColor.Set(shade);
    EXPECT_EQ(rate->autoFillBackground(), shade == Shade::kRed);
  }
  ostrel.window().lblDataRateToolTip.Set("Device unavailable");
  EXPECT_EQ(rate->toolTip(), "Device unavailable");
  auto* const light = ostrel.Find<QLabel>("imgActivity");
  EXPECT_TRUE(light->pixmap().isNull());
  ostrel.window().imgActivityToolTip.Set("Station <b>\x1B");
  EXPECT_EQ(QTextDocumentFragment::fromHtml(light->toolTip()).toPlainText(), "Station <b>\\x1B");
  ostrel.window().imgActivity.Set(Light::kYellow);
  EXPECT_EQ(light->pixmap().toImage(), ostrel.Find<QLabel>("imgYellowLed")->pixmap().toImage());
  ostrel.Click("lblStatus2");
  EXPECT_TRUE(ostrel.station->status().timingReadout);
  ostrel.window().PriorityList[Priority(10)].Append("A.TXT");
  for (int i = 0; i < 2; ++i) ostrel.Find<QAction>("mnuStatus")->trigger();
  EXPECT_EQ(ostrel.mainWindow->findChildren<QWidget*>("frmStatus").size(), 1);
  EXPECT_EQ(ostrel.Find<QLabel>("lblPending(9)")->text(), "1");
}

TEST(MainWindow, TenThousandEntriesFollowTheirQueueAndTheOperatorDeletesSomeOfThem) {
  WindowedStation ostrel;
  auto& queue = ostrel.station->queue();
  const auto add = [&](int p, const std::string& name) {
    ostrel.WriteFile(ostrel.InTransmitFolder(name), name);
    queue.Add(Priority(p), {name}, ostrel.Path(name));
  };
  auto* const view = ostrel.Find<ui::ListView>("PriorityList(1)");
  QSignalSpy reset(view->model(), &QAbstractItemModel::modelReset);
  for (int i = 0; i < 10000; ++i) {
    for (const int p : {2, 3}) add(p, fmt::format("FILE{}.{}", i, p));
  }
  ostrel.Select("PriorityList(1)", {2, 9000});
  queue.Remove(Priority(2), {0, 5000, 5000, 10000});
  ostrel.WriteFile(ostrel.InTransmitFolder("NEW"), "new");
  queue.Replace(Priority(2), 0, {"NEW"}, ostrel.Path("NEW"));
  EXPECT_EQ(view->Selected(), (std::vector<std::size_t>{1, 8998}));
  QTest::keyClick(view, Qt::Key_Delete);
  EXPECT_TRUE(view->Selected().empty());
  EXPECT_EQ(ostrel.Messages("Priority 2"), (Lines{"Removed FILE5000.2", "Removed FILE0.2",
                                                  "Removed FILE9000.2", "Removed FILE2.2"}));
  ASSERT_EQ(view->model()->rowCount(), 9996);
  for (const auto& [row, name] :
       {std::pair{0, "NEW"}, {1, "FILE3.2"}, {4998, "FILE5001.2"}, {8997, "FILE9001.2"}}) {
    EXPECT_EQ(view->model()->index(row, 0).data().toString(), name);
  }
  EXPECT_EQ(reset.count(), 0);
  EXPECT_EQ(ostrel.Queue(3).size(), 10000U);
  EXPECT_EQ(ostrel.Names("KvData/.pending/2").size(), 9996U);
  EXPECT_EQ(ostrel.Names("KvData/RtXmit").size(), 19996U);
}

TEST(MainWindow, ToolTipsTellWhatTheFiguresAndCutNamesDoNot) {
  WindowedStation ostrel;
  const auto tip = [](QWidget* element) {
    const QPoint place(5, 5);
    QHelpEvent event(QEvent::ToolTip, place, element->mapToGlobal(place));
    QApplication::sendEvent(element, &event);
    return QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText();
  };
  ostrel.Hold(2, "FIRST\x1B.TXT", SampleText(5'000));
  ostrel.Run(2s);
  EXPECT_EQ(tip(ostrel.Find<QWidget>("lblFilesSent")), "11/18/26 12:00:00 FIRST\\x1B.TXT");

  ostrel.files.lockFault = [](const std::string& path) {
    if (path.ends_with("&A.TXT")) throw Failure(70, "as told\xE2\x80\xAE");
  };
  ostrel.files.copyFault = [](const std::string& from, const std::string&) {
    return from.ends_with("RtPri2/BAD.TXT") ? copy_code::kDiskFull : 0;
  };
  ostrel.WriteFile(ostrel.Path("KvData/RtPri2/BAD.TXT"), "refused");
  ostrel.Drop("<i>&A.TXT", "not to be taken");
  ostrel.Run(8s);
  ostrel.Find<QAction>("mnuStatus")->trigger();
  const auto ingest = "1 in the ingest folder\n<i>&A.TXT holds it up for ";
  EXPECT_NE(tip(ostrel.Find<QWidget>("lblThroughput")).indexOf(ingest), -1);
  EXPECT_EQ(tip(ostrel.Find<QWidget>("lblTitlePending")).indexOf(ingest), 0);
  EXPECT_NE(tip(ostrel.Find<QWidget>("lblTitlePending")).indexOf("as told\\xE2\\x80\\xAE"), -1);
  const auto refused = "BAD.TXT is refused for ";
  EXPECT_NE(tip(ostrel.Find<QWidget>("lblSending(1)")).indexOf(refused), -1);
  EXPECT_EQ(tip(ostrel.Find<QWidget>("lblPending(1)")).indexOf(refused), 0);

  // What strangers wrote clears no screen, forges no line and turns none round.
  const std::string name(
      "<b>\x1B[2J\r\n\xE2\x80\xAE name that is much longer than its place, or than any queue is "
      "wide.</b>");
  const std::string shown(
      "<b>\\x1B[2J\\x0D\\x0A\\xE2\\x80\\xAE name that is much longer than its place, or than any "
      "queue is wide.</b>");
  ostrel.window().lblActivefile.Set(name);
  ostrel.window().PriorityList[Priority(1)].Append(name);
  ostrel.window().lblDataRateToolTip.Set(name);
  EXPECT_EQ(ostrel.Find<QLabel>("lblActivefile")->text().toStdString(), shown);
  for (auto* const place :
       {ostrel.Find<QWidget>("lblActivefile"), ostrel.Find<QWidget>("lblDataRate"),
        ostrel.Find<ui::ListView>("PriorityList(0)")->viewport()})
    EXPECT_EQ(tip(place).toStdString(), shown);
  ostrel.dialogs.ShowMessage({"Ostrel", "Refused.\r\n\x1B\xE2\x80\xAE", MessageIcon::kStop},
                             nullptr);
  EXPECT_EQ(ostrel.Boxes().first()->text().toStdString(), "Refused.\n\\x1B\\xE2\\x80\\xAE");
}

TEST(MainWindow, AFailureThatLastsLeavesTheOperatorInSetupAndIsSilencedInItsOwnWindow) {
  WindowedStation ostrel;
  const auto comesForward = [&](const char* failure) {
    ostrel.ShowSetup(0);
    ostrel.Run(5s);
    ostrel.station->reporting().ReportError(Failure(61, failure), "Timer");
    QCoreApplication::processEvents();
    return QApplication::activeWindow() != ostrel.setupDialog && ostrel.setupDialog->isHidden();
  };
  EXPECT_TRUE(comesForward("Disk full"));
  EXPECT_FALSE(comesForward("Disk full"));
  const auto text = ostrel.Find<QPlainTextEdit>("txtDisplay")->toPlainText();
  EXPECT_TRUE(text.startsWith("11/18/2026 12:00:10\nOstrel.frmMain.Timer"));
  QTest::keyClick(ostrel.Find<QDialog>("frmError"), Qt::Key_Return);
  EXPECT_TRUE(comesForward("Permission denied"));
  EXPECT_FALSE(comesForward("Disk full")) << "they take turns";

  QTest::mouseClick(ostrel.Find<QDialog>("frmError")->findChild<QCheckBox*>(), Qt::LeftButton);
  ostrel.Click("cmdClose");
  EXPECT_FALSE(comesForward("Device I/O error"));
  ostrel.Restart();
  EXPECT_EQ(ostrel.setup().chkShowErrors.Get(), Check::kUnchecked);
}

TEST(MainWindow, AMessageThatNobodyCanSeeTakesTheAnswerThatChangesNothing) {
  WindowedStation ostrel;
  ostrel.dialogs.GoWithoutDisplay();
  ostrel.dialogs.LogMessagesTo(ostrel.station->reporting());
  ostrel.WriteFile(ostrel.Path("KvRegSet.txt"), "");
  ostrel.Find<QAction>("mnuRegistryImport")->trigger();
  EXPECT_EQ(ostrel.Messages("Message"),
            Lines{"Do you really want to import the backup registry entries?"});
  EXPECT_TRUE(ostrel.Boxes().empty() && ostrel.machine.desktop.started.empty());
}

TEST(MainWindow, TheCloseBoxLeavesSetupEndsTheStationAndTheNextWindowComesBackWhereItStood) {
  WindowedStation ostrel;
  ostrel.mainWindow->setGeometry(120, 90, 600, 500);
  const QPoint place = ostrel.mainWindow->pos();
  ostrel.ShowSetup(0);
  ostrel.Type("CWidenty", "W1AW");
  EXPECT_FALSE(ostrel.mainWindow->close());
  EXPECT_TRUE(ostrel.machine.dialogs.hasEnded);
  EXPECT_FALSE(ostrel.machine.cycleTimer.IsRunning());
  ostrel.Restart();
  EXPECT_EQ(ostrel.mainWindow->pos(), place);
  EXPECT_EQ(ostrel.mainWindow->size(), QSize(600, 500));
  EXPECT_EQ(ostrel.setup().CWidenty.Get(), "W1AW");

  ostrel.mainWindow->move(5000, 90);
  ostrel.Restart();
  EXPECT_NE(QGuiApplication::screenAt(ostrel.mainWindow->pos()), nullptr) << "it is gone";
}

}  // namespace
}  // namespace ostrel
