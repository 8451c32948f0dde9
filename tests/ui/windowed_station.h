// The whole station in virtual time with its real windows over it, driven as an operator would: by
// keys and clicks on elements found by their names.
#pragma once

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <functional>
#include <memory>

#include "app/station.h"
#include "platform/linux/linux_files.h"
#include "platform/linux/sqlite_settings_store.h"
#include "platform/linux/zip_archives.h"
#include "platform/virtual/virtual_machine.h"
#include "tests/support/temp_folder.h"
#include "ui/list_view.h"
#include "ui/main_window.h"
#include "ui/setup_dialog.h"
#include "ui/window_dialogs.h"

namespace ostrel {

/// A message box as the operator saw it.
struct SeenMessage {
  QString title;
  QString text;
};

class WindowedStation {
 public:
  WindowedStation();

  /// Ends the station and starts another one over the same folder.
  void Restart();

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
  /// The operator goes to another window of the program.
  void Activate(QWidget* window);
  void Type(const QString& field, const QString& text);
  void Click(const QString& label, Qt::MouseButton button = Qt::LeftButton);
  /// So fast that the toolkit takes it for a double click.
  void ClickTwice(const QString& label);
  /// Selects these positions, the first by a click and the others with Ctrl.
  void Select(const QString& list, std::initializer_list<int> rows);
  /// What `action` made the program say, each box answered by its own default.
  std::vector<SeenMessage> MessagesOf(const std::function<void()>& action);

  bool HasEnded() const { return dialogs_.hasEnded; }

  TempFolder folder;
  VirtualMachine machine;
  std::unique_ptr<Station> station;
  std::unique_ptr<ui::MainWindow> mainWindow;
  ui::SetupDialog* setup = nullptr;

 private:
  /// The windows stay for the next look, where the program would end with them.
  struct KeptDialogs : ui::WindowDialogs {
    using WindowDialogs::WindowDialogs;
    void EndProgram() override { hasEnded = true; }
    bool hasEnded = false;
  };

  void Start();

  LinuxFiles files_;
  ZipArchives archives_;
  SqliteSettingsStores stores_;
  KeptDialogs dialogs_;
};

}  // namespace ostrel
