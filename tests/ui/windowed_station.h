// The whole station in virtual time with its real windows over it, driven as an operator would: by
// keys and clicks on elements found by their names.
#pragma once

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>

#include "tests/support/virtual_station.h"
#include "ui/list_view.h"
#include "ui/main_window.h"
#include "ui/setup_dialog.h"
#include "ui/window_dialogs.h"

namespace ostrel {

/// Runs from the beginning.
class WindowedStation : public VirtualStation {
 public:
  WindowedStation();

  /// The element of that name, in whichever window; a failure of the test when there is none.
  template <typename T>
  T* Find(const QString& name) {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      if (auto* const found = window->findChild<T*>(name)) return found;
    }
    throw std::runtime_error("no element " + name.toStdString());
  }

  /// Shows the dialog on a tab, and waits until it is active.
  void ShowSetup(int tab);
  void Type(const QString& field, const QString& text);
  /// Types and presses Enter; what the program said to it, each box closed by its own default.
  QStringList Enter(const QString& field, const QString& text);
  void Click(const QString& element);
  /// Selects these positions, the first by a click and the others with Ctrl.
  void Select(const QString& list, std::initializer_list<int> rows);
  /// The message boxes that are open.
  QList<QMessageBox*> Boxes();

  /// The windows stay for the next look, where the program would end with them.
  struct KeptDialogs : ui::WindowDialogs {
    explicit KeptDialogs(VirtualMachine& machine)
        : WindowDialogs(machine.clock), unseen(machine.dialogs) {}
    void EndProgram() override { unseen.EndProgram(); }
    VirtualDialogs& unseen;
  };

  KeptDialogs dialogs{machine};
  std::unique_ptr<ui::MainWindow> mainWindow;
  ui::SetupDialog* setupDialog = nullptr;

 private:
  void MakeStation() override;
};

}  // namespace ostrel
