// What this program is, and in which version.
#pragma once

#include <QDialog>

namespace ostrel::ui {

class AboutBox : public QDialog {
  Q_OBJECT

 public:
  explicit AboutBox(QWidget* parent);
};

}  // namespace ostrel::ui
