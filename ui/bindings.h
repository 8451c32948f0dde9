// Ties a widget to its field of the state, both ways where the operator can edit, and names it as
// the field is named. A binding ends with its widget.
#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <string>

#include "state/field.h"
#include "state/setup_fields.h"

namespace ostrel::ui {

/// The station's texts are bytes; a window shows them as UTF-8, invalid UTF-8 as U+FFFD.
QString ToQt(const std::string& text);
/// What is only shown, not edited: names and texts of strangers have what is not ASCII written out.
QString Shown(const std::string& text);

/// Keeps `subscription` for the life of `owner`.
void KeepWith(QObject* owner, Subscription subscription);

/// The label shows the field.
void Bind(QLabel* label, Field<std::string>& field);
/// The field is what the pointer over the widget tells.
void BindToolTip(QWidget* widget, Field<std::string>& field);
/// As above, for a figure with a caption beside it: a screen reader reads the two together.
void BindValue(QLabel* label, const QString& caption, Field<std::string>& field);
/// The text field and the check box also write what the operator enters.
void Bind(QLineEdit* edit, Field<std::string>& field);
void Bind(QCheckBox* box, Field<Check>& field);

}  // namespace ostrel::ui
