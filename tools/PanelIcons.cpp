// Draws the icons of the plug-in into its resource folder, each a light rounded face of 16 by 16
// in the middle of 22 by 22 (the margin stays transparent, as on the constellation's buttons,
// whose icons the panel shares) with a dark symbol: the IK tool panel's as PNG files in icons/,
// the IK tool's tool bar and menu icon as IKTool.png, and the Shift and Trace tool's as
// ShiftAndTrace/shiftandtracetool.svg, with the icons of its actions beside it; its panel's
// buttons, the same symbols and the two resets, in icons/ShiftAndTrace/. Run it after changing a
// symbol:
//   cmake --build --preset default --target PanelIcons && build/default/bin/PanelIcons resources
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QSvgGenerator>

#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

QColor const kInk(40, 40, 40);
QColor const kRed(215, 40, 40);
QColor const kGreen(40, 150, 60);
QColor const kYellow(245, 215, 40);

using Symbol = std::function<void(QPainter &)>;

QPen pen(QColor const &colour, double width = 1.4)
{
    return QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

void joint(QPainter &p, QPointF const &at, double r, QColor const &fill = kYellow)
{
    p.setPen(pen(kInk, 1.0));
    p.setBrush(fill);
    p.drawEllipse(at, r, r);
}

void bone(QPainter &p, QPointF const &a, QPointF const &b)
{
    p.setPen(pen(kRed, 1.6));
    p.drawLine(a, b);
}

void key(QPainter &p, QPointF const &at, double r, QColor const &fill)
{
    QPolygonF diamond({at + QPointF(0, -r), at + QPointF(r, 0), at + QPointF(0, r), at + QPointF(-r, 0)});
    p.setPen(pen(kInk, 1.0));
    p.setBrush(fill);
    p.drawPolygon(diamond);
}

void cross(QPainter &p, QPointF const &at, double r, QColor const &colour)
{
    p.setPen(pen(colour, 1.8));
    p.drawLine(at + QPointF(-r, -r), at + QPointF(r, r));
    p.drawLine(at + QPointF(-r, r), at + QPointF(r, -r));
}

void arrowHead(QPainter &p, QPointF const &tip, double angle, QColor const &colour)
{
    QPointF const back(std::cos(angle), std::sin(angle));
    QPointF const side(-back.y(), back.x());
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawPolygon(QPolygonF({tip, tip - back * 3.2 + side * 2.2, tip - back * 3.2 - side * 2.2}));
}

void circularArrow(QPainter &p, QColor const &colour)
{
    p.setPen(pen(colour, 1.6));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(6.5, 6.5, 9, 9), 60 * 16, 280 * 16);
    arrowHead(p, QPointF(13.6, 7.4), 0.3, colour);
}

void rootMark(QPainter &p, QPointF const &at)
{
    joint(p, at, 3.6);
    p.setPen(pen(kInk, 1.0));
    p.drawLine(at + QPointF(-3.6, 0), at + QPointF(3.6, 0));
    p.drawLine(at + QPointF(0, -3.6), at + QPointF(0, 3.6));
}

std::vector<std::pair<char const *, Symbol>> symbols()
{
    return {
        {"ikMagicSetup", [](QPainter &p) {
             p.setPen(pen(kInk, 2.0));
             p.drawLine(QPointF(7, 15), QPointF(13, 9));
             p.setPen(pen(QColor(230, 160, 0), 1.2));
             for (double a = 0; a < 6.28; a += 1.57)
                 p.drawLine(QPointF(14.5, 7.5), QPointF(14.5 + 2.8 * std::cos(a), 7.5 + 2.8 * std::sin(a)));
         }},
        {"ikCreateRoot", [](QPainter &p) {
             rootMark(p, QPointF(10, 12));
             p.setPen(pen(kGreen, 1.8));
             p.drawLine(QPointF(14.5, 5.5), QPointF(14.5, 9.5));
             p.drawLine(QPointF(12.5, 7.5), QPointF(16.5, 7.5));
         }},
        {"ikDeleteRoot", [](QPainter &p) {
             rootMark(p, QPointF(10, 12));
             cross(p, QPointF(14.5, 7.5), 1.8, kRed);
         }},
        {"ikResetAll", [](QPainter &p) { circularArrow(p, kInk); }},
        {"ikResetAllSelected", [](QPainter &p) {
             circularArrow(p, kInk);
             joint(p, QPointF(11, 11), 1.8, QColor(40, 90, 230));
         }},
        {"ikSetupMode", [](QPainter &p) {
             bone(p, QPointF(7.5, 14.5), QPointF(14.5, 7.5));
             joint(p, QPointF(7.5, 14.5), 2.2);
             joint(p, QPointF(14.5, 7.5), 2.2, Qt::white);
             p.setPen(pen(kInk, 1.2));
             p.drawLine(QPointF(12.5, 14.5), QPointF(16, 14.5));
             p.drawLine(QPointF(14.25, 12.75), QPointF(14.25, 16.25));
         }},
        {"ikBonemanipulationMode", [](QPainter &p) {
             bone(p, QPointF(7, 15), QPointF(11.5, 9.5));
             joint(p, QPointF(7, 15), 2.2);
             joint(p, QPointF(11.5, 9.5), 2.2);
             p.setPen(pen(kInk, 1.2));
             p.drawLine(QPointF(12.5, 8.5), QPointF(15.5, 5.8));
             arrowHead(p, QPointF(16.2, 5.2), -0.73, kInk);
         }},
        {"ikDeleteKeyframes", [](QPainter &p) {
             key(p, QPointF(9.5, 11), 4.0, kYellow);
             cross(p, QPointF(14, 14.5), 1.8, kRed);
         }},
        {"ikInterpolate", [](QPainter &p) {
             p.setPen(pen(kInk, 1.2));
             p.setBrush(Qt::NoBrush);
             QPainterPath path(QPointF(7.5, 14.5));
             path.cubicTo(QPointF(10, 14.5), QPointF(12, 7.5), QPointF(14.5, 7.5));
             p.drawPath(path);
             key(p, QPointF(7.5, 14.5), 2.4, kYellow);
             key(p, QPointF(14.5, 7.5), 2.4, kYellow);
         }},
        {"ikApplyToExistingKF", [](QPainter &p) {
             key(p, QPointF(9.5, 11), 4.0, kYellow);
             p.setPen(pen(kGreen, 1.8));
             p.drawPolyline(QPolygonF({QPointF(12.5, 13), QPointF(14, 15), QPointF(16.5, 11)}));
         }},
        {"ikCurrentFrame", [](QPainter &p) {
             p.setPen(pen(kRed, 1.6));
             p.drawLine(QPointF(11, 8.5), QPointF(11, 16));
             p.setPen(Qt::NoPen);
             p.setBrush(kRed);
             p.drawPolygon(QPolygonF({QPointF(8, 5.5), QPointF(14, 5.5), QPointF(11, 9)}));
         }},
        {"ikTranslateRoot", [](QPainter &p) {
             p.setPen(pen(kInk, 1.2));
             p.drawLine(QPointF(11, 6.5), QPointF(11, 15.5));
             p.drawLine(QPointF(6.5, 11), QPointF(15.5, 11));
             arrowHead(p, QPointF(11, 5.5), -1.5708, kInk);
             arrowHead(p, QPointF(11, 16.5), 1.5708, kInk);
             arrowHead(p, QPointF(5.5, 11), 3.1416, kInk);
             arrowHead(p, QPointF(16.5, 11), 0.0, kInk);
             joint(p, QPointF(11, 11), 1.8);
         }},
        {"ikMoveAll", [](QPainter &p) {
             for (double y : {7.5, 11.0, 14.5}) {
                 p.setPen(pen(kInk, 1.2));  // the arrow head leaves no pen
                 p.drawLine(QPointF(6.5, y), QPointF(12.5, y));
                 arrowHead(p, QPointF(15.5, y), 0.0, kInk);
             }
         }},
        {"ikCubic", [](QPainter &p) {
             p.setPen(pen(kInk, 1.5));
             p.setBrush(Qt::NoBrush);
             QPainterPath path(QPointF(6.5, 15));
             path.cubicTo(QPointF(11, 15), QPointF(11, 7), QPointF(15.5, 7));
             p.drawPath(path);
         }},
        {"ikLinear", [](QPainter &p) {
             p.setPen(pen(kInk, 1.5));
             p.drawLine(QPointF(6.5, 15), QPointF(15.5, 7));
         }},
        {"ikUsePeg", [](QPainter &p) {
             p.setPen(pen(kInk, 1.6));
             p.drawLine(QPointF(11, 9), QPointF(11, 16));
             p.setPen(pen(kInk, 1.0));
             p.setBrush(QColor(120, 180, 240));
             p.drawEllipse(QPointF(11, 8), 2.8, 2.8);
         }},
        {"ikUseRead", [](QPainter &p) {
             p.setPen(pen(kInk, 1.0));
             p.setBrush(Qt::white);
             p.drawRect(QRectF(6.5, 6.5, 9, 9));
             p.setPen(pen(QColor(60, 110, 200), 1.4));
             p.setBrush(Qt::NoBrush);
             QPainterPath stroke(QPointF(8, 13.5));
             stroke.cubicTo(QPointF(10, 8), QPointF(12, 14), QPointF(14, 8.5));
             p.drawPath(stroke);
         }},
        {"ikUseDeformer", [](QPainter &p) {
             p.setPen(pen(kRed, 1.8));
             p.setBrush(Qt::NoBrush);
             QPainterPath path(QPointF(7, 15));
             path.quadTo(QPointF(8, 8), QPointF(15, 7.5));
             p.drawPath(path);
             joint(p, QPointF(7, 15), 1.8);
             joint(p, QPointF(15, 7.5), 1.8);
         }},
        {"ikJointParticipates", [](QPainter &p) {
             joint(p, QPointF(9.5, 12), 3.6);
             p.setPen(pen(kGreen, 1.8));
             p.drawPolyline(QPolygonF({QPointF(12.5, 8), QPointF(14, 10), QPointF(16.5, 5.5)}));
         }},
    };
}

// The tools' own icons, for the tool bar and the menus.

// The IK tool: an arm of two bones whose end joint is dragged.
void ikToolSymbol(QPainter &p)
{
    bone(p, QPointF(6.5, 15.5), QPointF(8.5, 8.5));
    bone(p, QPointF(8.5, 8.5), QPointF(12.5, 13));
    joint(p, QPointF(6.5, 15.5), 1.9);
    joint(p, QPointF(8.5, 8.5), 1.9);
    joint(p, QPointF(12.5, 13), 2.2, QColor(40, 90, 230));
    p.setPen(pen(kInk, 1.2));
    p.drawLine(QPointF(14.2, 11.3), QPointF(16.1, 9.4));
    arrowHead(p, QPointF(17.6, 7.9), -0.785, kInk);
}

// Shift and Trace: a drawing traced over another, shifted beside it.
void shiftAndTraceSymbol(QPainter &p)
{
    p.setPen(pen(QColor(150, 150, 150), 1.0));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(5.5, 5.5, 8, 8));
    p.setPen(pen(QColor(60, 110, 200), 1.2));
    p.setBrush(Qt::NoBrush);
    QPainterPath under(QPointF(7, 11.5));
    under.quadTo(QPointF(9.5, 6.5), QPointF(12, 11.5));
    p.drawPath(under);
    p.setPen(pen(kInk, 1.0));
    p.setBrush(QColor(255, 255, 255, 200));
    p.drawRect(QRectF(8.5, 8.5, 8, 8));
    p.setPen(pen(kRed, 1.2));
    p.setBrush(Qt::NoBrush);
    QPainterPath over(QPointF(10, 14.5));
    over.quadTo(QPointF(12.5, 9.5), QPointF(15, 14.5));
    p.drawPath(over);
}

// The Shift and Trace tool's actions, for its tool bar and menus: written as
// ShiftAndTrace/<name>.svg.
void peg(QPainter &p, QPointF const &centre, bool round)
{
    p.setPen(pen(kInk, 1.0));
    p.setBrush(QColor(255, 140, 40));
    if (round)
        p.drawEllipse(centre, 1.8, 1.8);
    else
        p.drawRect(QRectF(centre.x() - 1.3, centre.y() - 1.3, 2.6, 2.6));
}

void crossHair(QPainter &p, QPointF const &c, QColor const &colour)
{
    p.setPen(pen(colour, 1.1));
    p.setBrush(Qt::NoBrush);
    p.drawLine(QPointF(c.x() - 4, c.y()), QPointF(c.x() + 4, c.y()));
    p.drawLine(QPointF(c.x(), c.y() - 4), QPointF(c.x(), c.y() + 4));
    p.drawEllipse(c, 2.0, 2.0);
}

std::vector<std::pair<char const *, Symbol>> shiftAndTraceActionSymbols()
{
    return {
        {"enableshiftandtrace", [](QPainter &p) {
             shiftAndTraceSymbol(p);
             p.setPen(pen(kGreen, 1.6));
             p.drawPolyline(QPolygonF({QPointF(5, 15.5), QPointF(6.5, 17), QPointF(9, 13.5)}));
         }},
        {"showpegs", [](QPainter &p) {
             p.setPen(pen(kInk, 1.0));
             p.drawLine(QPointF(5.5, 11), QPointF(16.5, 11));
             peg(p, QPointF(6.5, 11), false);
             peg(p, QPointF(11, 11), true);
             peg(p, QPointF(15.5, 11), false);
         }},
        {"showmanipulator", [](QPainter &p) {
             p.setPen(pen(QColor(255, 120, 0), 1.0));
             p.setBrush(Qt::NoBrush);
             p.drawRect(QRectF(6.5, 6.5, 8, 8));
             p.setPen(pen(QColor(0, 0, 255), 2.4));
             for (QPointF const &c : {QPointF(6.5, 6.5), QPointF(14.5, 6.5), QPointF(6.5, 14.5), QPointF(14.5, 14.5)})
                 p.drawPoint(c);
             p.drawPoint(QPointF(10.5, 10.5));
             p.setPen(pen(QColor(255, 120, 0), 1.0));
             p.drawLine(QPointF(14.5, 10.5), QPointF(17, 10.5));
         }},
        {"showoutline", [](QPainter &p) {
             p.setPen(pen(QColor(255, 120, 0), 1.3));
             p.setBrush(Qt::NoBrush);
             p.drawEllipse(QPointF(11, 11), 5, 4);
             p.drawLine(QPointF(7.5, 12.5), QPointF(14.5, 9.5));
         }},
        {"showcrosshair", [](QPainter &p) { crossHair(p, QPointF(11, 11), QColor(255, 120, 0)); }},
        {"addcrosshair", [](QPainter &p) {
             crossHair(p, QPointF(10, 12), QColor(255, 120, 0));
             p.setPen(pen(kGreen, 1.5));
             p.drawLine(QPointF(15.5, 5), QPointF(15.5, 9));
             p.drawLine(QPointF(13.5, 7), QPointF(17.5, 7));
         }},
        {"removecrosshair", [](QPainter &p) {
             crossHair(p, QPointF(10, 12), QColor(255, 120, 0));
             p.setPen(pen(kRed, 1.5));
             p.drawLine(QPointF(13.8, 5.3), QPointF(17.2, 8.7));
             p.drawLine(QPointF(17.2, 5.3), QPointF(13.8, 8.7));
         }},
    };
}

// The Shift and Trace panel's two reset buttons. The panel's other buttons share the symbols of
// the actions they stand for.

// A sheet of paper with a drawing on it, at `at` (top left), 8 by 8.
void sheet(QPainter &p, QPointF const &at, QColor const &stroke)
{
    p.setPen(pen(QColor(150, 150, 150), 1.0));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(at, QSizeF(8, 8)));
    p.setPen(pen(stroke, 1.2));
    p.setBrush(Qt::NoBrush);
    QPainterPath path(at + QPointF(1.5, 6));
    path.quadTo(at + QPointF(4, 1), at + QPointF(6.5, 6));
    p.drawPath(path);
}

// A small circular arrow at the bottom right: back to where it was.
void backArrow(QPainter &p)
{
    p.setPen(pen(kRed, 1.4));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(10.5, 10.5, 6, 6), 60 * 16, 280 * 16);
    arrowHead(p, QPointF(15.4, 11.0), 0.3, kRed);
}

std::vector<std::pair<char const *, Symbol>> shiftAndTracePanelSymbols()
{
    std::vector<std::pair<char const *, Symbol>> panel = {
        // Every sheet back in its place: two sheets, a circular arrow.
        {"clearallshifts", [](QPainter &p) {
             sheet(p, QPointF(5, 5), QColor(60, 110, 200));
             sheet(p, QPointF(8.5, 8.5), kInk);
             backArrow(p);
         }},
        // One sheet back in its place.
        {"clearcurrentshift", [](QPainter &p) {
             sheet(p, QPointF(5.5, 5.5), kInk);
             backArrow(p);
         }},
    };
    for (auto const &[name, symbol] : shiftAndTraceActionSymbols())
        panel.emplace_back(std::string(name) == "enableshiftandtrace" ? "shiftandtrace" : name, symbol);
    return panel;
}

void paintIcon(QPainter &p, Symbol const &symbol)
{
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(pen(QColor(90, 90, 90), 1.0));
    p.setBrush(QColor(236, 236, 236));
    p.drawRoundedRect(QRectF(3.5, 3.5, 15, 15), 3, 3);
    symbol(p);
}

bool writePng(QString const &path, Symbol const &symbol)
{
    QImage image(22, 22, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    {
        QPainter p(&image);
        paintIcon(p, symbol);
    }
    return image.save(path, "PNG");
}

bool writeSvg(QString const &path, Symbol const &symbol)
{
    QSvgGenerator svg;
    svg.setFileName(path);
    svg.setSize(QSize(22, 22));
    svg.setViewBox(QRect(0, 0, 22, 22));
    svg.setTitle(QStringLiteral("Shift and Trace"));
    QPainter p;
    if (!p.begin(&svg))
        return false;
    paintIcon(p, symbol);
    return p.end();
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: PanelIcons RESOURCE_FOLDER\n");
        return 2;
    }
    QDir const resources(QString::fromLocal8Bit(argv[1]));
    auto fail = [](QString const &path) {
        std::fprintf(stderr, "PanelIcons: expected a folder where %s can be written\n", qPrintable(path));
        return 1;
    };
    resources.mkpath(QStringLiteral("icons"));
    for (auto const &[name, symbol] : symbols()) {
        QString const path = resources.filePath(QStringLiteral("icons/") + QLatin1String(name) + QStringLiteral(".png"));
        if (!writePng(path, symbol))
            return fail(path);
    }
    QString const ikTool = resources.filePath(QStringLiteral("IKTool.png"));
    if (!writePng(ikTool, ikToolSymbol))
        return fail(ikTool);
    resources.mkpath(QStringLiteral("ShiftAndTrace"));
    QString const shiftAndTrace = resources.filePath(QStringLiteral("ShiftAndTrace/shiftandtracetool.svg"));
    if (!writeSvg(shiftAndTrace, shiftAndTraceSymbol))
        return fail(shiftAndTrace);
    for (auto const &[name, symbol] : shiftAndTraceActionSymbols()) {
        QString const path = resources.filePath(QStringLiteral("ShiftAndTrace/") + QLatin1String(name) + QStringLiteral(".svg"));
        if (!writeSvg(path, symbol))
            return fail(path);
    }
    resources.mkpath(QStringLiteral("icons/ShiftAndTrace"));
    for (auto const &[name, symbol] : shiftAndTracePanelSymbols()) {
        QString const path = resources.filePath(QStringLiteral("icons/ShiftAndTrace/") + QLatin1String(name) + QStringLiteral(".svg"));
        if (!writeSvg(path, symbol))
            return fail(path);
    }
    return 0;
}
