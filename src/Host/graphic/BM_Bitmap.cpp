#include "graphic/BM_Bitmap.h"

#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>
#include <QtDebug>

BM_Bitmap::BM_Bitmap(QImage const &image)
{
    if (!image.isNull())
        image_ = image.convertToFormat(QImage::Format_RGBA8888);
}

VS_RGBA const *BM_Bitmap::GetPixels() const
{
    return image_.isNull() ? nullptr : reinterpret_cast<VS_RGBA const *>(image_.constBits());
}

VS_RGBA BM_Bitmap::pixel(int x, int y) const
{
    if (x < 0 || y < 0 || x >= GetWidth() || y >= GetHeight())
        return VS_RGBA(0, 0, 0, 0);
    return reinterpret_cast<VS_RGBA const *>(image_.constScanLine(y))[x];
}

namespace {

QImage readSvg(QString const &path, QString &why)
{
    QSvgRenderer renderer(path);
    if (!renderer.isValid()) {
        why = QStringLiteral("not a readable SVG document");
        return QImage();
    }
    QSize const size = renderer.defaultSize();
    if (size.isEmpty()) {
        why = QStringLiteral("the SVG document declares no size");
        return QImage();
    }
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

QImage readRaster(QString const &path, QString &why)
{
    QImageReader reader(path);
    QImage image = reader.read();
    if (image.isNull())
        why = reader.errorString();
    return image;
}

} // namespace

UT_SharedPtr<BM_Bitmap> CELIO_BitmapEngine::load(QString const &path, int bitsPerChannel, QString *error)
{
    QString why;
    QImage image;
    if (bitsPerChannel != kBitsPerChannel8)
        why = QStringLiteral("%1 bits per channel asked, only 8 are supported").arg(bitsPerChannel);
    else if (!QFileInfo(path).isFile())
        why = QStringLiteral("no such file");
    else if (path.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive))
        image = readSvg(path, why);
    else
        image = readRaster(path, why);

    if (image.isNull() || image.width() == 0 || image.height() == 0) {
        QString const message = QStringLiteral("CELIO_BitmapEngine::load: cannot read \"%1\": %2").arg(path, why);
        qWarning().noquote() << message;
        if (error)
            *error = message;
        return nullptr;
    }
    if (error)
        error->clear();
    return UT_MakeShared<BM_Bitmap>(image);
}
