// The widget that shows a VW_View on screen: it paints the view's image, hands it the mouse and
// the keys in view pixels with their modifiers, follows its size, and shows the tool's cursor.
// Everything else is the view's (VW_View.h): this shell holds no state of its own.
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

private:
    void updateCursor(QPointF const &position);

    VW_View *view_;  // not owned
};
