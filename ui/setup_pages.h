// The pages of the setup dialog, one function a page. A page binds its fields to the state and
// forwards what the operator does.
#pragma once

#include <QWidget>

#include "config/operator.h"
#include "state/setup.h"

namespace ostrel::ui {

QWidget* MakeMorsePage(Setup& setup);
QWidget* MakePortPage(Setup& setup, Operator& operators);
QWidget* MakePriorityPage(Setup& setup, Operator& operators, Priority p);
QWidget* MakeSystemPage(Setup& setup, Operator& operators);
QWidget* MakeCompressPage(Setup& setup, Operator& operators);
QWidget* MakeDiscardPage(Setup& setup, Operator& operators);
QWidget* MakeCopiesPage(Setup& setup, Operator& operators);
QWidget* MakeSchedulePage(Setup& setup, Operator& operators);

}  // namespace ostrel::ui
