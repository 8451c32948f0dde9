// Every setting of the station, on seventeen tabs. It stays loaded for the program's life and is
// shown and hidden; leaving it for another window of the program stores the settings.
#pragma once

#include <QWidget>
#include <QWindow>

#include "state/setup_fields.h"
#include "station/actions.h"
#include "ui/left_tabs.h"

class QLineEdit;

namespace ostrel::ui {

class SetupDialog : public QWidget {
  Q_OBJECT

 public:
  SetupDialog(SetupFields& setup, Actions& actions, QWidget* mainWindow);

  /// Stores the settings and hides, or stays when they were refused. True when the dialog is not in
  /// sight afterwards.
  bool Leave();
  /// Hides for good; nothing is stored any more.
  void Unload();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void BuildMenu();
  void BuildBlank();
  void BuildTabs(SetupFields& setup);
  /// The close box and the menu's E&xit.
  void Dismiss();
  void TakePlace();
  void FocusLogSize();
  void FollowFocus(QWindow* window);
  void FocusEntryOf(int tab);

  Actions& actions_;
  QWidget* mainWindow_;
  LeftTabs* tabs_;
  QLineEdit* blank_;
  bool isPlaced_ = false;
  bool entered_ = false;  // active at least once since it was shown
  bool leaving_ = false;
  bool unloaded_ = false;
};

}  // namespace ostrel::ui
