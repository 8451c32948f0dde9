#include "ui/bindings.h"

#include "base/text.h"

namespace ostrel::ui {

QString ToQt(const std::string& text) {
  return QString::fromStdString(text);
}

QString Shown(const std::string& text) {
  return ToQt(Printable(text));
}

void KeepWith(QObject* owner, Subscription subscription) {
  QObject::connect(owner, &QObject::destroyed, [kept = std::move(subscription)] {});
}

void Bind(QLabel* label, Field<std::string>& field) {
  label->setObjectName(ToQt(field.name()));
  label->setTextFormat(Qt::PlainText);
  label->setText(Shown(field.Get()));
  KeepWith(label,
           field.OnChange([label](const std::string& text) { label->setText(Shown(text)); }));
}

void BindToolTip(QWidget* widget, Field<std::string>& field) {
  const auto show = [widget](const std::string& text) { widget->setToolTip(Shown(text)); };
  show(field.Get());
  KeepWith(widget, field.OnChange(show));
}

void BindValue(QLabel* label, const QString& caption, Field<std::string>& field) {
  Bind(label, field);
  const auto announce = [label, caption] {
    label->setAccessibleName(caption + QLatin1Char(' ') + label->text());
  };
  announce();
  KeepWith(label, field.OnChange([announce](const std::string&) { announce(); }));
}

void Bind(QLineEdit* edit, Field<std::string>& field) {
  edit->setObjectName(ToQt(field.name()));
  const auto show = [edit](const std::string& text) {
    if (edit->text() == ToQt(text)) return;
    edit->setText(ToQt(text));
    if (!edit->hasFocus()) edit->setCursorPosition(0);  // the beginning of a long path is in sight
  };
  show(field.Get());
  KeepWith(edit, field.OnChange(show));
  // Only what differs from what the field looks like is the operator's: bytes that have no sign of
  // their own are not replaced by being shown.
  QObject::connect(edit, &QLineEdit::textChanged, edit, [&field](const QString& text) {
    if (text != ToQt(field.Get())) field.Set(text.toStdString());
  });
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 7, 0)
constexpr auto kCheckChanged = &QCheckBox::checkStateChanged;
#else
constexpr auto kCheckChanged = &QCheckBox::stateChanged;
#endif

void Bind(QCheckBox* box, Field<Check>& field) {
  box->setObjectName(ToQt(field.name()));
  const auto show = [box](Check state) {
    if (state == Check::kGrayed) {
      box->setCheckState(Qt::PartiallyChecked);
    } else {
      box->setTristate(false);
      box->setChecked(state == Check::kChecked);
    }
  };
  show(field.Get());
  KeepWith(box, field.OnChange(show));
  QObject::connect(box, kCheckChanged, box, [&field](int state) {
    if (state == Qt::PartiallyChecked) return field.Set(Check::kGrayed);
    field.Set(state == Qt::Checked ? Check::kChecked : Check::kUnchecked);
  });
}

}  // namespace ostrel::ui
