#include "ui/menus.h"

namespace ostrel::ui {

void AddMenu(QMenuBar* bar, const char* caption, const char* name,
             const std::vector<MenuItem>& items) {
  QMenu* const menu = bar->addMenu(caption);
  menu->setObjectName(name);
  for (const auto& [text, itemName, call] : items) {
    QAction* const action = call ? menu->addAction(text) : menu->addSeparator();
    action->setObjectName(itemName);
    if (call) QObject::connect(action, &QAction::triggered, menu, call);
  }
}

void BringForward(QWidget* window) {
  window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
  window->show();
  window->raise();
  window->activateWindow();
}

}  // namespace ostrel::ui
