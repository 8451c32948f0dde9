// The pages of the setup dialog, one function a page. A page binds its fields to the state and
// forwards what the operator does.
#pragma once

#include <QWidget>

#include "state/setup_fields.h"
#include "station/actions.h"

namespace ostrel::ui {

QWidget* MakeMorsePage(SetupFields& setup);
QWidget* MakePortPage(SetupFields& setup, Actions& actions);
QWidget* MakePriorityPage(SetupFields& setup, Actions& actions, Priority p);
QWidget* MakeSystemPage(SetupFields& setup, Actions& actions);
QWidget* MakeCompressPage(SetupFields& setup, Actions& actions);
QWidget* MakeDiscardPage(SetupFields& setup, Actions& actions);
QWidget* MakeCopiesPage(SetupFields& setup, Actions& actions);
QWidget* MakeSchedulePage(SetupFields& setup, Actions& actions);

}  // namespace ostrel::ui
