#include <QHBoxLayout>

#include "ui/bindings.h"
#include "ui/elided_label.h"
#include "ui/form.h"
#include "ui/setup_pages.h"

namespace ostrel::ui {
namespace {

void AddPortValues(Form& form, QWidget* page, SetupFields& setup, Actions& actions) {
  auto* const port = MakeValueLabel(page, "Port", setup.lblOutPort, "Click to change port.");
  auto* const rate =
      MakeValueLabel(page, "Data Rate", setup.lblOutBaud, "Click to change data rate.");
  auto* const stop =
      MakeValueLabel(page, "Stop Bits", setup.lblOutStop, "Click to change the stop bits.");
  QObject::connect(port, &ValueLabel::Pressed, page,
                   [&actions](Button button) { actions.StepPort(button); });
  QObject::connect(rate, &ValueLabel::Clicked, page, [&actions] { actions.StepBaud(); });
  QObject::connect(stop, &ValueLabel::Clicked, page, [&actions] { actions.StepStopBits(); });
  form.AddRow("Port", port);
  form.AddRow("Data Rate", rate);
  form.AddRow("Data Bits", MakeValueLabel(page, "Data Bits", setup.lblOutData));
  form.AddRow("Stop Bits", stop);
  form.AddRow("Parity", MakeValueLabel(page, "Parity", setup.lblOutParity));
}

/// One sentence with the two figures in it.
QLayout* MakeDutyCycle(QWidget* page, SetupFields& setup) {
  auto* const sentence = new QHBoxLayout;
  const auto addWords = [&](const char* words, QLineEdit* field) {
    auto* const label = new QLabel(words, page);
    label->setBuddy(field);
    sentence->addWidget(label);
  };
  auto* const up = MakeTextField(page, setup.totdown, "Minutes to transmit.");
  auto* const pause = MakeTextField(page, setup.totup, "Seconds to pause.");
  for (QLineEdit* const field : {up, pause}) field->setFixedWidth(field->width() / 2);
  addWords("Transmit for", up);
  sentence->addWidget(up);
  addWords("minutes, pause for", pause);
  sentence->addWidget(pause);
  addWords("seconds, then resume transmitting.", nullptr);
  sentence->addStretch();
  return sentence;
}

}  // namespace

QWidget* MakePortPage(SetupFields& setup, Actions& actions) {
  auto* const page = new QWidget;
  Form form(page);
  AddPortValues(form, page, setup, actions);
  auto* const message = new ElidedLabel(page);
  Bind(message, setup.lblCommMesg);
  form.AddWide(message);
  form.AddGap();
  form.AddRow("Transmitter Delay",
              MakeTextField(page, setup.txtTxDelay, "Transmitter key-up delay."), "milliseconds");
  form.AddWide(MakeDutyCycle(page, setup));
  form.Finish();
  return page;
}

}  // namespace ostrel::ui
