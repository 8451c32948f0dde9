// The pages of the setup dialog, one function a page. A page binds its fields to the state and
// forwards what the operator does.
#pragma once

#include <QWidget>

#include "state/setup.h"
#include "station/actions.h"

namespace ostrel::ui {

QWidget* MakeMorsePage(Setup& setup);
QWidget* MakePortPage(Setup& setup, Actions& actions);
QWidget* MakePriorityPage(Setup& setup, Actions& actions, Priority p);
QWidget* MakeSystemPage(Setup& setup, Actions& actions);
QWidget* MakeCompressPage(Setup& setup, Actions& actions);
QWidget* MakeDiscardPage(Setup& setup, Actions& actions);
QWidget* MakeCopiesPage(Setup& setup, Actions& actions);
QWidget* MakeSchedulePage(Setup& setup, Actions& actions);

}  // namespace ostrel::ui
