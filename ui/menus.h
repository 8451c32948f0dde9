// Menus from tables, and what every window needs to come to the front.
#pragma once

#include <QMenuBar>
#include <functional>
#include <vector>

namespace ostrel::ui {

/// One item: its caption ("-" for a separator), its name and what it does.
struct MenuItem {
  const char* caption;
  const char* name;
  std::function<void()> call;
};

/// Adds a menu to the bar; `name` is its object's name.
void AddMenu(QMenuBar* bar, const char* caption, const char* name,
             const std::vector<MenuItem>& items);

/// Shows the window, above the others and active.
void BringForward(QWidget* window);

}  // namespace ostrel::ui
