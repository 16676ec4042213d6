#include "view/VW_ViewWidget.h"

#include "base/Math/Vector.h"
#include "view/VW_View.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

Math::Point2d toPoint(QPointF const &p)
{
    return Math::Point2d(p.x(), p.y());
}

// One notch of a mouse wheel (120 eighths of a degree) zooms by this factor.
constexpr double kWheelNotchZoom = 1.25;

} // namespace

VW_ViewWidget::VW_ViewWidget(VW_View *view, QWidget *parent) : QWidget(parent), view_(view)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(view_, &VW_View::redrawRequested, this, QOverload<>::of(&QWidget::update));
}

VW_ViewWidget::~VW_ViewWidget() = default;

QSize VW_ViewWidget::sizeHint() const
{
    return QSize(640, 480);
}

void VW_ViewWidget::paintEvent(QPaintEvent *)
{
    // The view may have been given another size meanwhile (a script's "view" line): the widget
    // shows it at its own size.
    if (view_->size() != size())
        view_->resize(width(), height());
    QPainter painter(this);
    painter.drawImage(0, 0, view_->render());
}

void VW_ViewWidget::resizeEvent(QResizeEvent *)
{
    view_->resize(width(), height());
}

void VW_ViewWidget::beginPan(QPointF const &position, Qt::MouseButton button)
{
    panButton_ = button;
    panLast_ = position;
    setCursor(Qt::ClosedHandCursor);
}

void VW_ViewWidget::mousePressEvent(QMouseEvent *event)
{
    if (panButton_ == Qt::NoButton && (event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && spaceHeld_)))
        return beginPan(event->localPos(), event->button());
    if (event->button() != Qt::LeftButton || panButton_ != Qt::NoButton)
        return QWidget::mousePressEvent(event);
    view_->mousePress(toPoint(event->localPos()), event->modifiers());
    updateCursor(event->localPos());
}

void VW_ViewWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (panButton_ != Qt::NoButton) {
        QPointF const delta = event->localPos() - panLast_;
        panLast_ = event->localPos();
        view_->pan(delta.x(), delta.y());
        return;
    }
    view_->mouseMove(toPoint(event->localPos()), event->modifiers());
    updateCursor(event->localPos());
}

void VW_ViewWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (panButton_ != Qt::NoButton && event->button() == panButton_) {
        panButton_ = Qt::NoButton;
        if (spaceHeld_)
            setCursor(Qt::OpenHandCursor);
        else
            updateCursor(event->localPos());
        return;
    }
    if (event->button() != Qt::LeftButton)
        return QWidget::mouseReleaseEvent(event);
    view_->mouseRelease(toPoint(event->localPos()), event->modifiers());
    updateCursor(event->localPos());
}

void VW_ViewWidget::leaveEvent(QEvent *)
{
    view_->mouseLeave();
}

void VW_ViewWidget::keyPressEvent(QKeyEvent *event)
{
    if (view_->keyPress(event->key(), event->modifiers(), event->isAutoRepeat()))
        return;
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier) {
        if (!spaceHeld_ && panButton_ == Qt::NoButton)
            setCursor(Qt::OpenHandCursor);
        spaceHeld_ = true;
        return;
    }
    QWidget::keyPressEvent(event);
}

void VW_ViewWidget::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && spaceHeld_) {
        if (event->isAutoRepeat())
            return;
        spaceHeld_ = false;
        if (panButton_ == Qt::NoButton)
            updateCursor(mapFromGlobal(QCursor::pos()));
    }
    if (!view_->keyRelease(event->key(), event->modifiers()))
        QWidget::keyReleaseEvent(event);
}

void VW_ViewWidget::wheelEvent(QWheelEvent *event)
{
    double const notches = event->angleDelta().y() / 120.0;
    if (notches == 0.0)
        return QWidget::wheelEvent(event);
    double const factor = std::clamp(view_->zoom() * std::pow(kWheelNotchZoom, notches), VW_View::kMinimumZoom, VW_View::kMaximumZoom);
    view_->zoomAbout(factor, toPoint(event->position()));
    event->accept();
}

void VW_ViewWidget::focusOutEvent(QFocusEvent *event)
{
    // The release of Space may go to another widget.
    spaceHeld_ = false;
    QWidget::focusOutEvent(event);
}

void VW_ViewWidget::updateCursor(QPointF const &position)
{
    setCursor(view_->cursorAt(toPoint(position)));
}
