// How many files wait in each queue, and the most that waited at once since midnight. It reads
// every four seconds while it is open and changes nothing.
#pragma once

#include <QDialog>
#include <QGridLayout>
#include <QLabel>

#include "state/engine.h"
#include "state/main_window.h"

namespace ostrel::ui {

class StatusWindow : public QDialog {
  Q_OBJECT

 public:
  StatusWindow(const ostrel::MainWindow& state, const Engine& engine, QWidget* parent);

 private:
  void AddTitle(QGridLayout* grid, int column, const char* name, const char* text);
  QLabel* AddValue(QGridLayout* grid, int column, Priority p, const char* name);
  QWidget* BuildTable();
  void Refresh();

  const ostrel::MainWindow& state_;
  const Engine& engine_;
  PerPriority<QLabel*> lblPending_;
  PerPriority<QLabel*> lblMaxWait_;
};

}  // namespace ostrel::ui
