#include "widgets/UI_DoubleEditor.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>

#include <cmath>

UI_DoubleEditor::UI_DoubleEditor(QWidget *parent) : QWidget(parent), field_(new QDoubleSpinBox(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field_);
    setFocusProxy(field_);
    field_->setKeyboardTracking(false);  // one signal per finished edit, not per keystroke
    connect(field_, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &UI_DoubleEditor::valueChanged);
}

UI_DoubleEditor::~UI_DoubleEditor() = default;

double UI_DoubleEditor::minimum() const
{
    return field_->minimum();
}

void UI_DoubleEditor::setMinimum(double minimum)
{
    if (std::isfinite(minimum))
        field_->setMinimum(minimum);
}

double UI_DoubleEditor::maximum() const
{
    return field_->maximum();
}

void UI_DoubleEditor::setMaximum(double maximum)
{
    if (std::isfinite(maximum))
        field_->setMaximum(maximum);
}

void UI_DoubleEditor::setRange(double minimum, double maximum)
{
    if (std::isfinite(minimum) && std::isfinite(maximum))
        field_->setRange(minimum, maximum);
}

double UI_DoubleEditor::value() const
{
    return field_->value();
}

void UI_DoubleEditor::setValue(double value)
{
    if (std::isfinite(value))
        field_->setValue(value);
}

int UI_DoubleEditor::decimals() const
{
    return field_->decimals();
}

void UI_DoubleEditor::setDecimals(int decimals)
{
    if (decimals >= 0)
        field_->setDecimals(decimals);
}

double UI_DoubleEditor::step() const
{
    return field_->singleStep();
}

void UI_DoubleEditor::setStep(double step)
{
    if (std::isfinite(step) && step > 0.0)
        field_->setSingleStep(step);
}

QWidget *UI_DoubleEditor::tabWidget() const
{
    return field_;
}
