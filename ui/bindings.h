// Ties a widget to its field of the state, both ways where the operator can edit, and gives it the
// field's name, under which tests, screen readers and scripts find it. A binding ends with its
// widget.
#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <string>

#include "state/field.h"
#include "state/setup.h"

namespace ostrel::ui {

/// The station's texts are bytes; a window shows them as UTF-8, what is none as a replacement sign.
QString ToQt(const std::string& text);

/// "PriorityList(3)": the name of an element of an array.
QString ElementName(const char* array, std::size_t index);

/// Keeps `subscription` for the life of `owner`.
void KeepWith(QObject* owner, Subscription subscription);

/// The label shows the field.
void Bind(QLabel* label, const QString& name, Field<std::string>& field);
/// As above, for a figure with a caption beside it: a screen reader reads the two together.
void BindValue(QLabel* label, const QString& name, const QString& caption,
               Field<std::string>& field);
/// The text field and the check box also write what the operator enters.
void Bind(QLineEdit* edit, const QString& name, Field<std::string>& field);
void Bind(QCheckBox* box, const QString& name, Field<Check>& field);

}  // namespace ostrel::ui
