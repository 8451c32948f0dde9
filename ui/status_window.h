// How many files wait in each queue, and the most that waited at once since midnight. It reads
// every four seconds while it is open and changes nothing.
#pragma once

#include <QDialog>
#include <QGridLayout>
#include <QLabel>

#include "state/main_fields.h"
#include "state/transmit_status.h"
#include "station/figures.h"
#include "ui/elided_label.h"

namespace ostrel::ui {

class StatusWindow : public QDialog {
  Q_OBJECT

 public:
  /// `figures` tells how the station stands, for the tool tips.
  StatusWindow(const MainFields& state, const TransmitStatus& status,
               const std::function<Figures()>& figures, QWidget* parent);

 private:
  ElidedLabel* AddTitle(QGridLayout* grid, int column, const char* name, const char* text);
  ElidedLabel* AddValue(QGridLayout* grid, int column, Priority p, const char* name);
  QWidget* BuildTable(const std::function<Figures()>& figures);
  void Refresh();

  const MainFields& state_;
  const TransmitStatus& status_;
  PerPriority<QLabel*> lblPending_;
  PerPriority<QLabel*> lblMaxWait_;
};

}  // namespace ostrel::ui
