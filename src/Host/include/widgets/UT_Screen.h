// The display the host draws on, for sizes that follow the screen's scale.
#pragma once

#include <QPointer>
#include <QScreen>

class UT_Screen {
public:
    // The application's primary screen.
    static UT_Screen getMainScreen();

    // Device pixels per logical pixel: 2.0 on a doubled display; 1.0 without a screen.
    double scaleFactor() const;

private:
    explicit UT_Screen(QScreen *screen) : screen_(screen) {}
    QPointer<QScreen> screen_;
};
