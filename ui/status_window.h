// How many files wait in each queue, and the most that waited at once since midnight. It reads
// every four seconds while it is open and changes nothing.
#pragma once

#include <QDialog>
#include <QGridLayout>
#include <QLabel>

#include "state/main_fields.h"
#include "state/transmit_status.h"

namespace ostrel::ui {

class StatusWindow : public QDialog {
  Q_OBJECT

 public:
  StatusWindow(const MainFields& state, const TransmitStatus& status, QWidget* parent);

 private:
  void AddTitle(QGridLayout* grid, int column, const char* name, const char* text);
  QLabel* AddValue(QGridLayout* grid, int column, Priority p, const char* name);
  QWidget* BuildTable();
  void Refresh();

  const MainFields& state_;
  const TransmitStatus& status_;
  PerPriority<QLabel*> lblPending_;
  PerPriority<QLabel*> lblMaxWait_;
};

}  // namespace ostrel::ui
