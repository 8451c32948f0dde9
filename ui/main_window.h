// The station's permanent window: the ten queues, the file on the air, the figures and the menus.
// It shows what the state holds and forwards what the operator does; its layout is fixed.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QPointer>

#include "state/main_fields.h"
#include "state/transmit_status.h"
#include "station/actions.h"
#include "station/figures.h"
#include "ui/elided_label.h"
#include "ui/list_view.h"

namespace ostrel::ui {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  /// `figures` tells how the station stands, for the tool tips.
  MainWindow(MainFields& state, const TransmitStatus& status, std::function<Figures()> figures,
             Actions& actions);

 protected:
  /// The shutdown closes the window, not the close box.
  void closeEvent(QCloseEvent* event) override;

 private:
  template <typename Label>
  Label* AddLabel(const char* name, const QRect& place);
  void AddCaption(const char* name, const QRect& place, const char* text);
  /// A label that shows `field`, under its name.
  template <typename Label>
  Label* AddBound(const QRect& place, Field<std::string>& field);
  ElidedLabel* AddFigure(const QRect& place, Field<std::string>& field);
  ElidedLabel* AddBoxedFigure(const QRect& place, Field<std::string>& field);

  void BuildMenus();
  void BuildFrames();
  void BuildSending();
  void BuildLight();
  void BuildFigures();
  void BuildQueue(Priority p);
  QString TimeUntilOutText(Priority p) const;
  void ShowStatus();
  void ShowAbout();

  MainFields& state_;
  const TransmitStatus& status_;
  std::function<Figures()> figures_;
  Actions& actions_;
  QWidget* client_;
  QPointer<QWidget> statusWindow_;
  QPointer<QWidget> about_;
};

}  // namespace ostrel::ui
