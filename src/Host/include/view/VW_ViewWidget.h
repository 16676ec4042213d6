// The widget that shows a VW_View on screen: it paints the view's image, hands it the mouse and
// the keys in view pixels with their modifiers, follows its size, and shows the tool's cursor.
// Everything else is the view's (VW_View.h): this shell holds no state of its own but the hand's.
//
// The hand (zoom and pan) comes before the tool only where a tool has no use for the gesture: the
// wheel zooms about the pointer (with or without Ctrl), the middle button drags the picture, and so
// does the left button while Space is held (when the tool did not take the Space key). Keys the
// tool does not take go on to the parent widget (the window's shortcuts and frame keys).
#pragma once

#include <QWidget>

class VW_View;

class VW_ViewWidget : public QWidget {
    Q_OBJECT
public:
    // `view` is not owned and must outlive the widget.
    explicit VW_ViewWidget(VW_View *view, QWidget *parent = nullptr);
    ~VW_ViewWidget() override;

    VW_View *view() const { return view_; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void updateCursor(QPointF const &position);

    // Starts a drag of the picture at `position` (view pixels) with the closed hand.
    void beginPan(QPointF const &position, Qt::MouseButton button);

    VW_View *view_;  // not owned
    bool spaceHeld_ = false;                   // Space is down and the tool did not take it
    Qt::MouseButton panButton_ = Qt::NoButton;  // the button that drags the picture, if any
    QPointF panLast_;                           // where the drag of the picture was last
};
