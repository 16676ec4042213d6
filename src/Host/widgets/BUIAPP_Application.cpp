#include "widgets/BUIAPP_Application.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include <set>

struct BUIAPP_Application::Impl {
    std::set<int> pressed;  // Qt::Key values, without modifier bits
    bool watching = false;
};

namespace {

int keyOnly(int key)
{
    return key & ~int(Qt::KeyboardModifierMask);
}

}  // namespace

BUIAPP_Application::BUIAPP_Application() : impl_(std::make_unique<Impl>()) {}

BUIAPP_Application::~BUIAPP_Application() = default;

BUIAPP_Application &BUIAPP_Application::instance()
{
    static BUIAPP_Application shell;
    shell.watchApplication();
    return shell;
}

void BUIAPP_Application::watchApplication()
{
    if (impl_->watching || !QCoreApplication::instance())
        return;
    QCoreApplication::instance()->installEventFilter(this);
    // The application may go before this object: watch again if a new one comes.
    connect(QCoreApplication::instance(), &QObject::destroyed, this, [this] {
        impl_->watching = false;
        impl_->pressed.clear();
    });
    impl_->watching = true;
}

bool BUIAPP_Application::isKeyPressed(int key) const
{
    return impl_->pressed.count(keyOnly(key)) != 0;
}

void BUIAPP_Application::setKeyPressed(int key, bool pressed)
{
    int const k = keyOnly(key);
    if (k == 0)
        return;
    if (pressed)
        impl_->pressed.insert(k);
    else
        impl_->pressed.erase(k);
}

void BUIAPP_Application::releaseAllKeys()
{
    impl_->pressed.clear();
}

bool BUIAPP_Application::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease: {
        auto *key = static_cast<QKeyEvent *>(event);
        if (!key->isAutoRepeat())
            setKeyPressed(key->key(), event->type() == QEvent::KeyPress);
        break;
    }
    case QEvent::ApplicationDeactivate:
        releaseAllKeys();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
