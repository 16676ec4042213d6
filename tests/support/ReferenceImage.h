// Comparison of a rendered picture with a reference picture kept in the project.
#pragma once

#include <QImage>

#include <cstdlib>

// Pixels whose four channels all lie within `tolerance` of the reference, as a share of all
// pixels; 0 when the sizes differ.
inline double matchingShare(QImage const &image, QImage const &reference, int tolerance)
{
    QImage const a = image.convertToFormat(QImage::Format_ARGB32);
    QImage const b = reference.convertToFormat(QImage::Format_ARGB32);
    if (a.size() != b.size() || a.isNull())
        return 0.0;
    long matching = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            QRgb const p = a.pixel(x, y), q = b.pixel(x, y);
            matching += std::abs(qRed(p) - qRed(q)) <= tolerance && std::abs(qGreen(p) - qGreen(q)) <= tolerance &&
                        std::abs(qBlue(p) - qBlue(q)) <= tolerance && std::abs(qAlpha(p) - qAlpha(q)) <= tolerance;
        }
    return double(matching) / (double(a.width()) * a.height());
}
