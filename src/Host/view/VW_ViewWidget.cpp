#include "view/VW_ViewWidget.h"

#include "base/Math/Vector.h"
#include "view/VW_View.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace {

Math::Point2d toPoint(QPointF const &p)
{
    return Math::Point2d(p.x(), p.y());
}

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

void VW_ViewWidget::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    view_->mousePress(toPoint(event->localPos()), event->modifiers());
    updateCursor(event->localPos());
}

void VW_ViewWidget::mouseMoveEvent(QMouseEvent *event)
{
    view_->mouseMove(toPoint(event->localPos()), event->modifiers());
    updateCursor(event->localPos());
}

void VW_ViewWidget::mouseReleaseEvent(QMouseEvent *event)
{
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
    if (!view_->keyPress(event->key(), event->modifiers(), event->isAutoRepeat()))
        QWidget::keyPressEvent(event);
}

void VW_ViewWidget::keyReleaseEvent(QKeyEvent *event)
{
    if (!view_->keyRelease(event->key(), event->modifiers()))
        QWidget::keyReleaseEvent(event);
}

void VW_ViewWidget::updateCursor(QPointF const &position)
{
    setCursor(view_->cursorAt(toPoint(position)));
}
