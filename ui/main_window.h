// The station's permanent window: the ten queues, the file on the air, the figures and the menus.
// It shows what the state holds and forwards what the operator does; its layout is fixed.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QPointer>

#include "state/engine.h"
#include "state/main_window.h"
#include "station/actions.h"
#include "ui/list_view.h"

namespace ostrel::ui {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  MainWindow(ostrel::MainWindow& state, const Engine& engine, Actions& actions);

 protected:
  /// The shutdown closes the window, not the close box.
  void closeEvent(QCloseEvent* event) override;

 private:
  template <typename Label>
  Label* AddLabel(const char* name, const QRect& place);
  void AddCaption(const char* name, const QRect& place, const char* text);
  QLabel* AddFigure(const char* name, const QRect& place, Field<std::string>& field);
  QLabel* AddBoxedFigure(const char* name, const QRect& place, Field<std::string>& field);

  void BuildMenus();
  void BuildFrames();
  void BuildSending();
  void BuildLight();
  void BuildFigures();
  void BuildQueue(Priority p);
  void ShowStatus();
  void ShowAbout();

  ostrel::MainWindow& state_;
  const Engine& engine_;
  Actions& actions_;
  QWidget* client_;
  QPointer<QWidget> status_;
  QPointer<QWidget> about_;
};

}  // namespace ostrel::ui
