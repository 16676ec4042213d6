// The application shell's view of the keyboard: which keys are down now.
//
// The shell watches every key event of the application (an event filter on the application
// object, installed on first use once the application exists). Batch runs, which have no keyboard,
// press and release keys with setKeyPressed. All keys count as released when the application
// loses the focus, since their release events then go elsewhere.
#pragma once

#include <QObject>

#include <memory>

class BUIAPP_Application : public QObject {
    Q_OBJECT
public:
    static BUIAPP_Application &instance();

    // Whether the key (a Qt::Key; modifier bits are ignored) is down.
    bool isKeyPressed(int key) const;
    void setKeyPressed(int key, bool pressed);
    void releaseAllKeys();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    BUIAPP_Application();
    ~BUIAPP_Application() override;
    void watchApplication();

    struct Impl;
    std::unique_ptr<Impl> impl_;
};
