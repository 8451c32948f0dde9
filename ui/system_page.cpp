#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ui/form.h"
#include "ui/setup_pages.h"

namespace ostrel::ui {
namespace {

QWidget* MakeIngestEngine(QWidget* page, SetupFields& setup, Actions& actions) {
  auto* const boxes = new QWidget(page);
  auto* const layout = new QHBoxLayout(boxes);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* const serial = MakeCheckBox(boxes, "Brask Serial", setup.chkBrask, "Check to start Brask.");
  auto* const internet =
      MakeCheckBox(boxes, "Tiltor Internet", setup.chkByteBlaster, "Check to start Tiltor.");
  QObject::connect(serial, &QCheckBox::clicked, boxes, [&actions] { actions.BraskClicked(); });
  QObject::connect(internet, &QCheckBox::clicked, boxes,
                   [&actions] { actions.ByteBlasterClicked(); });
  layout->addWidget(serial);
  layout->addWidget(internet);
  layout->addStretch();
  return boxes;
}

QLayout* MakeOptions(QWidget* page, SetupFields& setup) {
  struct Row {
    const char* caption;
    Field<Check>& field;
    const char* toolTip;
  };
  const Row rows[] = {
      {"UnZip Received Files", setup.chkUnZipFiles, "Check to unzip received files."},
      {"Daily Log Files", setup.chkLogDaily, "Log sent blocks and identification times."},
      {"Show Errors", setup.chkShowErrors, "Check for program to pop-up program errors."},
      {"Log Sent Blocks", setup.LogIt, "Log sent blocks and identification times."},
      {"Enable Byte Blaster Server Support", setup.chkPacketHost, ""},
  };
  auto* const layout = new QVBoxLayout;
  for (const auto& [caption, field, toolTip] : rows) {
    layout->addWidget(MakeCheckBox(page, caption, field, toolTip), 0, Qt::AlignLeft);
  }
  return layout;
}

}  // namespace

QWidget* MakeSystemPage(SetupFields& setup, Actions& actions) {
  auto* const page = new QWidget;
  Form form(page);
  form.AddRow(
      "If all messages have been sent, send",
      MakeTextField(page, setup.Diddle, "Path and file name to send when there is no data to send.",
                    FieldWidth::kPath));
  form.AddRow(
      "by inserting it into:",
      MakeTextField(page, setup.NameAs, "Priority path and file name to store the fillfile.",
                    FieldWidth::kPath));
  form.AddGap();
  form.AddRow("Ingest Path",
              MakeTextField(page, setup.txtIngestPath, "Path where received messages are stored.",
                            FieldWidth::kPath));
  form.AddRow("Ingest Engine", MakeIngestEngine(page, setup, actions));
  form.AddGap();
  form.AddRow("Purge directories after ",
              MakeTextField(page, setup.txtPurgeTime, "Time to purge directories."), "hours.");
  form.AddRow("Log file size", MakeTextField(page, setup.txtLogSize, "Log file size in bytes."));
  form.AddGap();
  form.AddWide(MakeOptions(page, setup));
  form.Finish();
  return page;
}

}  // namespace ostrel::ui
