// The icons the plug-in names (its tools' descriptors, its menu and tool bar files) are shipped in
// its resource folder and read as the window reads them, through the host's icon lookup with the
// folder the polish adds: the tool bar shows icons, not the tools' names.
#include "iktool/IKTool.h"
#include "shifttrace/ShiftAndTraceTool.h"

#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

QString const kResources = QStringLiteral(ANIM_SOURCE_DIR "/resources");

// The icon attributes of a menu or tool bar file of the resource folder.
QStringList iconsNamedIn(QString const &file)
{
    QFile xml(kResources + QLatin1Char('/') + file);
    EXPECT_TRUE(xml.open(QIODevice::ReadOnly)) << file.toStdString();
    QStringList names;
    QRegularExpression const icon(QStringLiteral("icon=\"([^\"]+)\""));
    for (auto match = icon.globalMatch(QString::fromUtf8(xml.readAll())); match.hasNext();)
        names << match.next().captured(1);
    return names;
}

TEST(ToolIcons, EveryIconThePlugInNamesIsFoundAndHasPixels)
{
    WID_IconManager::instance().addSearchDirectory(kResources);
    QStringList names{IKTool::descriptor().icon, ShiftAndTraceTool::descriptor().icon};
    for (char const *file : {"animationMenu.xml", "insertMenu.xml", "viewMenu.xml", "ShiftAndTrace_toolbar.xml"})
        names << iconsNamedIn(QLatin1String(file));
    EXPECT_TRUE(names.contains(QStringLiteral("IKTool.png")));
    EXPECT_TRUE(names.contains(QStringLiteral("ShiftAndTrace/shiftandtracetool.svg")));
    for (QString const &name : names) {
        QIcon const icon = WID_IconManager::instance().icon(name);
        ASSERT_FALSE(icon.isNull()) << name.toStdString();
        QImage const image = icon.pixmap(22, 22).toImage();
        ASSERT_FALSE(image.isNull()) << name.toStdString();
        // Drawn, not blank: some pixel is opaque and dark (the symbol's ink or the face's rim).
        bool inked = false;
        for (int y = 0; y < image.height() && !inked; ++y)
            for (int x = 0; x < image.width() && !inked; ++x)
                inked = qAlpha(image.pixel(x, y)) == 255 && qGray(image.pixel(x, y)) < 128;
        EXPECT_TRUE(inked) << name.toStdString();
    }
}

} // namespace
