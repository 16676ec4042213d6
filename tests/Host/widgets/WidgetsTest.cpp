#include "widgets/BUIAPP_Application.h"
#include "widgets/GUT_WidgetFactory.h"
#include "widgets/UI_DoubleEditor.h"
#include "widgets/UT_Screen.h"
#include "widgets/WID_IconManager.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace {

void writeFile(QString const &path, QByteArray const &contents)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(contents);
}

QByteArray const panelForm = R"ui(<?xml version="1.0" encoding="UTF-8"?>
<ui version="4.0">
 <class>Panel</class>
 <widget class="QWidget" name="Panel">
  <layout class="QVBoxLayout" name="layout">
   <item>
    <widget class="QLabel" name="caption">
     <property name="text"><string>Rotation</string></property>
    </widget>
   </item>
   <item>
    <widget class="UI_DoubleEditor" name="rotation">
     <property name="minimum"><double>-360.000000000000000</double></property>
     <property name="maximum"><double>360.000000000000000</double></property>
     <property name="decimals"><number>1</number></property>
     <property name="step"><double>5.000000000000000</double></property>
     <property name="value"><double>45.500000000000000</double></property>
    </widget>
   </item>
  </layout>
 </widget>
 <customwidgets>
  <customwidget>
   <class>UI_DoubleEditor</class>
   <extends>QWidget</extends>
   <header>widgets/UI_DoubleEditor.h</header>
  </customwidget>
 </customwidgets>
</ui>
)ui";

TEST(WidgetFactory, BuildsAFormWithTheNumericEditorFromAUiFile)
{
    QTemporaryDir dir;
    QString const path = dir.filePath("panel.ui");
    writeFile(path, panelForm);
    QWidget parent;
    QWidget *form = GUT_WidgetFactory::Instance().create(path, &parent);
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form->parentWidget(), &parent);
    EXPECT_EQ(form->objectName(), "Panel");

    auto *editor = form->findChild<UI_DoubleEditor *>("rotation");
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->minimum(), -360.0);
    EXPECT_EQ(editor->maximum(), 360.0);
    EXPECT_EQ(editor->decimals(), 1);
    EXPECT_EQ(editor->step(), 5.0);
    EXPECT_EQ(editor->value(), 45.5);
    auto *caption = form->findChild<QLabel *>("caption");
    ASSERT_NE(caption, nullptr);
    EXPECT_EQ(caption->text(), "Rotation");
}

TEST(WidgetFactory, AMissingOrBrokenFormGivesNullAndNamesTheFile)
{
    QTemporaryDir dir;
    QString const broken = dir.filePath("broken.ui");
    writeFile(broken, "<ui version=\"4.0\"><widget class=\"QWidget\" name=\"x\">");
    QString const notAForm = dir.filePath("notaform.ui");
    writeFile(notAForm, "<html><body/></html>");
    for (QString const &path : {dir.filePath("missing.ui"), broken, notAForm}) {
        SCOPED_TRACE(path.toStdString());
        testing::internal::CaptureStderr();
        QWidget *form = GUT_WidgetFactory::Instance().create(path, nullptr);
        std::string const message = testing::internal::GetCapturedStderr();
        EXPECT_EQ(form, nullptr);
        delete form;
        EXPECT_NE(message.find(path.toStdString()), std::string::npos) << message;
    }
}

TEST(DoubleEditor, ClampsToItsRangeAndSignalsEachChangeOnce)
{
    UI_DoubleEditor editor;
    editor.setRange(0.01, 100.0);
    editor.setDecimals(2);
    QSignalSpy spy(&editor, &UI_DoubleEditor::valueChanged);
    editor.setValue(2.5);
    editor.setValue(2.5);
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy.at(0).at(0).toDouble(), 2.5);
    editor.setValue(1000.0);
    EXPECT_EQ(editor.value(), 100.0);
    editor.setValue(-5.0);
    EXPECT_EQ(editor.value(), 0.01);
    editor.setValue(1.234);
    EXPECT_EQ(editor.value(), 1.23);
    EXPECT_EQ(editor.tabWidget()->parentWidget(), &editor);
}

TEST(DoubleEditor, InvalidInputsAreRefusedAndChangeNothing)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const inf = std::numeric_limits<double>::infinity();
    struct Case {
        char const *what;
        std::function<void(UI_DoubleEditor &)> apply;
    };
    Case const cases[] = {
        {"NaN value", [&](UI_DoubleEditor &e) { e.setValue(nan); }},
        {"+inf value", [&](UI_DoubleEditor &e) { e.setValue(inf); }},
        {"-inf value", [&](UI_DoubleEditor &e) { e.setValue(-inf); }},
        {"NaN minimum", [&](UI_DoubleEditor &e) { e.setMinimum(nan); }},
        {"-inf minimum", [&](UI_DoubleEditor &e) { e.setMinimum(-inf); }},
        {"NaN maximum", [&](UI_DoubleEditor &e) { e.setMaximum(nan); }},
        {"+inf maximum", [&](UI_DoubleEditor &e) { e.setMaximum(inf); }},
        {"NaN range", [&](UI_DoubleEditor &e) { e.setRange(nan, 5.0); }},
        {"infinite range", [&](UI_DoubleEditor &e) { e.setRange(-1.0, inf); }},
        {"NaN step", [&](UI_DoubleEditor &e) { e.setStep(nan); }},
        {"zero step", [&](UI_DoubleEditor &e) { e.setStep(0.0); }},
        {"negative step", [&](UI_DoubleEditor &e) { e.setStep(-1.0); }},
        {"negative decimals", [&](UI_DoubleEditor &e) { e.setDecimals(-1); }},
        {"value by property", [&](UI_DoubleEditor &e) { e.setProperty("value", nan); }},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        UI_DoubleEditor editor;
        editor.setRange(-10.0, 10.0);
        editor.setDecimals(3);
        editor.setStep(0.5);
        editor.setValue(1.25);
        QSignalSpy spy(&editor, &UI_DoubleEditor::valueChanged);
        c.apply(editor);
        EXPECT_EQ(spy.count(), 0);
        EXPECT_EQ(editor.minimum(), -10.0);
        EXPECT_EQ(editor.maximum(), 10.0);
        EXPECT_EQ(editor.decimals(), 3);
        EXPECT_EQ(editor.step(), 0.5);
        EXPECT_EQ(editor.value(), 1.25);
    }
}

class Icons : public ::testing::Test {
protected:
    QTemporaryDir dir;
    WID_IconManager &icons = WID_IconManager::instance();
    void TearDown() override { icons.setIconsExtension(QString()); }

    QString image(QString const &relative, QRgb first, QRgb second)
    {
        QString const path = dir.filePath(relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QImage picture(2, 1, QImage::Format_ARGB32);
        picture.setPixel(0, 0, first);
        picture.setPixel(1, 0, second);
        EXPECT_TRUE(picture.save(path));
        return path;
    }
};

TEST_F(Icons, AreFoundInSearchOrderWithTheThemedVariantFirst)
{
    QString const firstPen = image("first/tools/pen.png", 0xFF000000, 0xFF000000);
    QString const secondPen = image("second/tools/pen.png", 0xFF000000, 0xFF000000);
    QString const lightPen = image("second/tools/pen-light.png", 0xFF000000, 0xFF000000);
    QString const onlySecond = image("second/brush.png", 0xFF000000, 0xFF000000);
    icons.addSearchDirectory(dir.filePath("first"));
    icons.addSearchDirectory(dir.filePath("second"));
    icons.addSearchDirectory(dir.filePath("first") + "/");  // the same folder again
    EXPECT_EQ(icons.searchDirectories().count(dir.filePath("first")), 1);

    EXPECT_EQ(icons.iconsExtension(), QString());
    EXPECT_EQ(icons.findIconFile("tools/pen.png"), firstPen);
    EXPECT_EQ(icons.findIconFile("brush.png"), onlySecond);
    EXPECT_EQ(icons.findIconFile(secondPen), secondPen);  // absolute
    EXPECT_EQ(icons.findIconFile("nothing.png"), QString());
    EXPECT_EQ(icons.findIconFile(""), QString());
    EXPECT_FALSE(icons.icon("tools/pen.png").isNull());
    EXPECT_TRUE(icons.icon("nothing.png").isNull());

    icons.setIconsExtension("-light");
    // Within each folder the themed variant comes first; the first folder still wins.
    EXPECT_EQ(icons.findIconFile("tools/pen.png"), firstPen);
    QFile::remove(firstPen);
    EXPECT_EQ(icons.findIconFile("tools/pen.png"), lightPen);
}

TEST_F(Icons, AnSvgFileIsAnIconAndABrokenOneIsNot)
{
    QDir().mkpath(dir.filePath("vector"));
    writeFile(dir.filePath("vector/square.svg"),
              "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"22\" height=\"22\" viewBox=\"0 0 22 22\">"
              "<rect x=\"4\" y=\"4\" width=\"14\" height=\"14\" fill=\"#000000\"/></svg>");
    writeFile(dir.filePath("vector/broken.svg"), "not an image");
    icons.addSearchDirectory(dir.filePath("vector"));
    QIcon const icon = icons.icon("square.svg");
    ASSERT_FALSE(icon.isNull());
    QImage const drawn = icon.pixmap(QSize(22, 22)).toImage().convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(drawn.size(), QSize(22, 22));
    EXPECT_EQ(drawn.pixel(11, 11), qRgba(0, 0, 0, 255));
    EXPECT_EQ(qAlpha(drawn.pixel(1, 1)), 0);
    EXPECT_TRUE(icons.icon("broken.svg").isNull());
}

TEST_F(Icons, ABlendedIconIsPaintedOverItsBackgroundColour)
{
    image("blend/dot.png", qRgba(0, 0, 0, 0), qRgba(255, 0, 0, 128));
    icons.addSearchDirectory(dir.filePath("blend"));
    QIcon const icon = icons.addBlendedIcon("dot.png", QColor(0, 0, 255));
    ASSERT_FALSE(icon.isNull());
    QImage const result = icon.pixmap(QSize(2, 1)).toImage().convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(result.size(), QSize(2, 1));
    EXPECT_EQ(result.pixel(0, 0), qRgba(0, 0, 255, 255));  // transparent: the background
    QRgb const mixed = result.pixel(1, 0);                   // half red over blue
    EXPECT_EQ(qAlpha(mixed), 255);
    EXPECT_NEAR(qRed(mixed), 128, 1);
    EXPECT_EQ(qGreen(mixed), 0);
    EXPECT_NEAR(qBlue(mixed), 127, 1);

    EXPECT_TRUE(icons.addBlendedIcon("missing.png", Qt::blue).isNull());
    writeFile(dir.filePath("blend/garbage.png"), "not an image");
    EXPECT_TRUE(icons.addBlendedIcon("garbage.png", Qt::blue).isNull());
}

TEST(KeyboardState, FollowsKeyEventsAndBatchPresses)
{
    BUIAPP_Application &shell = BUIAPP_Application::instance();
    shell.releaseAllKeys();
    QWidget target;
    auto send = [&target](QEvent::Type type, int key, Qt::KeyboardModifiers modifiers, bool autoRepeat) {
        QKeyEvent event(type, key, modifiers, QString(), autoRepeat);
        QCoreApplication::sendEvent(&target, &event);
    };
    send(QEvent::KeyPress, Qt::Key_R, Qt::AltModifier, false);
    EXPECT_TRUE(shell.isKeyPressed(Qt::Key_R));
    EXPECT_TRUE(shell.isKeyPressed(int(Qt::ALT) + int(Qt::Key_R)));  // modifier bits are ignored
    EXPECT_FALSE(shell.isKeyPressed(Qt::Key_S));
    send(QEvent::KeyRelease, Qt::Key_R, Qt::AltModifier, true);  // auto-repeat: still down
    EXPECT_TRUE(shell.isKeyPressed(Qt::Key_R));
    send(QEvent::KeyRelease, Qt::Key_R, Qt::NoModifier, false);
    EXPECT_FALSE(shell.isKeyPressed(Qt::Key_R));

    shell.setKeyPressed(Qt::Key_Control, true);
    shell.setKeyPressed(Qt::Key_S, true);
    EXPECT_TRUE(shell.isKeyPressed(Qt::Key_Control));
    QEvent deactivate(QEvent::ApplicationDeactivate);
    QCoreApplication::sendEvent(qApp, &deactivate);
    EXPECT_FALSE(shell.isKeyPressed(Qt::Key_Control));
    EXPECT_FALSE(shell.isKeyPressed(Qt::Key_S));
    EXPECT_FALSE(shell.isKeyPressed(0));
}

TEST(Screen, TheOffscreenDisplayHasNoScaling)
{
    EXPECT_EQ(UT_Screen::getMainScreen().scaleFactor(), 1.0);
}

}  // namespace
