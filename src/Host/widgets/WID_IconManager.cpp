#include "widgets/WID_IconManager.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QPixmap>

struct WID_IconManager::Impl {
    QStringList folders;
    QString extension;
};

WID_IconManager::WID_IconManager() : impl_(std::make_unique<Impl>()) {}

WID_IconManager::~WID_IconManager() = default;

WID_IconManager &WID_IconManager::instance()
{
    static WID_IconManager manager;
    return manager;
}

void WID_IconManager::addSearchDirectory(QString const &folder)
{
    if (folder.isEmpty())
        return;
    QString const clean = QDir::cleanPath(folder);
    if (!impl_->folders.contains(clean))
        impl_->folders << clean;
}

QStringList WID_IconManager::searchDirectories() const
{
    return impl_->folders;
}

QString WID_IconManager::iconsExtension() const
{
    return impl_->extension;
}

void WID_IconManager::setIconsExtension(QString const &extension)
{
    impl_->extension = extension;
}

QString WID_IconManager::findIconFile(QString const &name) const
{
    if (name.isEmpty())
        return QString();
    if (QFileInfo(name).isAbsolute())
        return QFileInfo(name).isFile() ? name : QString();
    QStringList candidates;
    if (!impl_->extension.isEmpty()) {
        QFileInfo const plain(name);
        QString const dir = plain.path() == QLatin1String(".") ? QString() : plain.path() + QLatin1Char('/');
        QString const suffix = plain.suffix().isEmpty() ? QString() : QLatin1Char('.') + plain.suffix();
        candidates << dir + plain.completeBaseName() + impl_->extension + suffix;
    }
    candidates << name;
    for (QString const &folder : impl_->folders)
        for (QString const &candidate : candidates) {
            QFileInfo const file(QDir(folder), candidate);
            if (file.isFile())
                return file.filePath();
        }
    return QString();
}

QIcon WID_IconManager::icon(QString const &name) const
{
    QString const file = findIconFile(name);
    if (file.isEmpty())
        return QIcon();
    QIcon const result(file);
    // A bitmap lists its size; a vector icon (SVG) lists none and is tried by drawing it.
    bool const readable = !result.availableSizes().isEmpty() || !result.pixmap(QSize(16, 16)).isNull();
    return readable ? result : QIcon();
}

QIcon WID_IconManager::addBlendedIcon(QString const &name, QColor const &background) const
{
    QString const file = findIconFile(name);
    if (file.isEmpty())
        return QIcon();
    QImage const image(file);
    if (image.isNull())
        return QIcon();
    QImage blended(image.size(), QImage::Format_ARGB32);
    blended.fill(background);
    QPainter painter(&blended);
    painter.drawImage(0, 0, image);
    painter.end();
    return QIcon(QPixmap::fromImage(blended));
}
