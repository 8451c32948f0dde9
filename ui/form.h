// The rows of a settings page: a caption, its field, and perhaps a unit behind it. The caption is
// the field's name for screen readers.
#pragma once

#include <QCheckBox>
#include <QGridLayout>
#include <QLineEdit>

#include "state/field.h"
#include "ui/value_label.h"

namespace ostrel::ui {

/// How much a text field has to hold; a path takes what width there is.
enum class FieldWidth { kNumber, kText, kPath };

/// The makers of a page's elements: each is bound to its field and has its name.
QLineEdit* MakeTextField(QWidget* page, Field<std::string>& field, const char* toolTip,
                         FieldWidth width = FieldWidth::kNumber);
/// A value with a tool tip is one that the mouse steps, and looks it.
ValueLabel* MakeValueLabel(QWidget* page, const char* caption, Field<std::string>& field,
                           const char* toolTip = "", FieldWidth width = FieldWidth::kNumber);
QCheckBox* MakeCheckBox(QWidget* page, const char* caption, Field<Check>& field,
                        const char* toolTip);
/// A label that is read as a heading.
QLabel* MakeHeading(QWidget* page, const char* text);

class Form {
 public:
  /// Lays out `page`, whose rows are added from the top.
  explicit Form(QWidget* page);

  /// One row: caption, field and unit.
  void AddRow(const char* caption, QWidget* field, const char* unit = "");
  /// One row that takes the whole width.
  void AddWide(QWidget* widget);
  void AddWide(QLayout* layout);
  void AddGap();
  /// Keeps the rows together at the top.
  void Finish();

 private:
  QGridLayout* grid_;
};

}  // namespace ostrel::ui
