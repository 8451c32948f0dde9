#include "ui/form.h"
#include "ui/setup_pages.h"

namespace ostrel::ui {

QWidget* MakeMorsePage(SetupFields& setup) {
  auto* const page = new QWidget;
  Form form(page);
  form.AddRow("Morse Identity",
              MakeTextField(page, setup.CWidenty, "FCC assigned call sign.", FieldWidth::kText));
  form.AddRow(
      "ID Frequency",
      MakeTextField(page, setup.IDTime, "Send morse code identification interval in minutes."),
      "Minutes");
  form.AddRow("Identifier Speed Factor",
              MakeTextField(page, setup.CWSpeed, "Morse code speed factor."));
  form.AddGap();
  form.AddRow("Time To Next ID", MakeValueLabel(page, "Time To Next ID", setup.TimeLeft),
              "Minutes");
  form.AddRow("Time Of Last ID",
              MakeValueLabel(page, "Time Of Last ID", setup.LastId, "", FieldWidth::kText));
  form.Finish();
  return page;
}

}  // namespace ostrel::ui
