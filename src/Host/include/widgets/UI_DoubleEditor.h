// A numeric editor for one double: a field with step buttons, keyboard steps and a range.
//
// .ui files use it by class name (<widget class="UI_DoubleEditor" name="rotation">); the widget
// factory's loader knows the class. Its properties minimum, maximum, value, decimals and step can
// be set in the file; give minimum and maximum before value, since a value is clamped to the range
// in force when it is set.
#pragma once

#include <QWidget>

class QDoubleSpinBox;

class UI_DoubleEditor : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double minimum READ minimum WRITE setMinimum)
    Q_PROPERTY(double maximum READ maximum WRITE setMaximum)
    Q_PROPERTY(double value READ value WRITE setValue NOTIFY valueChanged USER true)
    Q_PROPERTY(int decimals READ decimals WRITE setDecimals)
    Q_PROPERTY(double step READ step WRITE setStep)
public:
    explicit UI_DoubleEditor(QWidget *parent = nullptr);
    ~UI_DoubleEditor() override;

    // Setters ignore NaN and infinities, a negative number of decimals and a step that is not
    // above zero. A minimum above the maximum moves the maximum up, and the other way round.
    double minimum() const;
    void setMinimum(double minimum);
    double maximum() const;
    void setMaximum(double maximum);
    void setRange(double minimum, double maximum);
    // The value, clamped to the range and rounded to the decimals.
    double value() const;
    void setValue(double value);
    int decimals() const;
    void setDecimals(int decimals);
    double step() const;
    void setStep(double step);

    // The widget that takes part in the tab order of the form.
    QWidget *tabWidget() const;

signals:
    // Emitted when the value changes, by the user or by setValue.
    void valueChanged(double value);

private:
    QDoubleSpinBox *field_;  // owned as a child widget
};
