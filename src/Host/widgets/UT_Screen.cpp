#include "widgets/UT_Screen.h"

#include <QGuiApplication>

UT_Screen UT_Screen::getMainScreen()
{
    return UT_Screen(qobject_cast<QGuiApplication *>(QCoreApplication::instance()) ? QGuiApplication::primaryScreen()
                                                                                 : nullptr);
}

double UT_Screen::scaleFactor() const
{
    return screen_ ? screen_->devicePixelRatio() : 1.0;
}
