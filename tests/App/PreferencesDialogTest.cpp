// The preferences dialog binds the widgets of plug-in tabs to preference keys by their "prefKey"
// property: it shows the stored values, writes them on OK only, and edits colours with alpha.
#include "AH_Host.h"
#include "AH_PreferencesDialog.h"
#include "ColourDialogDriver.h"
#include "plugin/PLUG_PreferenceUI.h"
#include "preference/PR_Preference.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFormLayout>
#include <QLabel>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QToolButton>

#include <gtest/gtest.h>

#include <limits>

namespace {

QString const kInt = QStringLiteral("test.dialog.int");
QString const kBool = QStringLiteral("test.dialog.bool");
QString const kReal = QStringLiteral("test.dialog.real");
QString const kColour = QStringLiteral("test.dialog.colour");
QString const kUnbound = QStringLiteral("test.dialog.unbound");

// A tab on the tools page with one widget of each bound kind, a label that carries a key (a class
// that takes no preference) and a spin box without a key.
class FormCustomizer : public PLUG_PreferenceUICustomizerInterface {
public:
    void addPreferenceTab(int pageKind, QWidget *page) override
    {
        if (pageKind != PLUG_PreferenceUI::ToolsPage)
            return;
        auto *tab = new QWidget;
        auto *form = new QFormLayout(tab);
        auto *spin = new QSpinBox;
        spin->setRange(0, 100);
        spin->setValue(7);  // the form's own value
        spin->setProperty("prefKey", kInt);
        auto *check = new QCheckBox;
        check->setProperty("prefKey", kBool);
        auto *real = new QDoubleSpinBox;
        real->setProperty("prefKey", kReal);
        auto *colour = new QToolButton;
        colour->setProperty("prefKey", kColour);
        auto *label = new QLabel(QStringLiteral("not an editor"));
        label->setProperty("prefKey", kUnbound);
        form->addRow(QStringLiteral("int"), spin);
        form->addRow(QStringLiteral("bool"), check);
        form->addRow(QStringLiteral("real"), real);
        form->addRow(QStringLiteral("colour"), colour);
        form->addRow(label);
        form->addRow(new QSpinBox);
        page->findChild<QTabWidget *>(QStringLiteral("tabWidget"))->addTab(tab, QStringLiteral("Form"));
    }
    void addColorTab(int, QWidget *) override {}
};

class PreferencesDialogBinding : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (QString const &key : {kInt, kBool, kReal, kColour, kUnbound})
            tuPref->remove(key);
        hook.registerCustomizer(&customizer);
    }
    void TearDown() override { hook.unregisterCustomizer(&customizer); }

    template <class W>
    static W *bound(AH_PreferencesDialog const &dialog, QString const &key)
    {
        for (QWidget *widget : dialog.boundWidgets())
            if (widget->property("prefKey").toString() == key)
                return qobject_cast<W *>(widget);
        return nullptr;
    }

    PLUG_PreferenceUI hook;
    FormCustomizer customizer;
};

TEST_F(PreferencesDialogBinding, BindsEditorsByClassAndShowsStoredValues)
{
    tuPref->setIntValue(kInt, 42);
    tuPref->setBoolValue(kBool, true);
    tuPref->setDoubleValue(kReal, 2.5);
    tuPref->setRgbaValue(kColour, 0x80112233u);
    AH_PreferencesDialog dialog(&hook);

    // The general page's own check box, the drawing page's onion skin settings, and the four
    // editors of the form; not the label nor the spin box without a key.
    QStringList keys;
    for (QWidget *widget : dialog.boundWidgets())
        keys << widget->property("prefKey").toString();
    EXPECT_EQ(keys, (QStringList{QStringLiteral("QV_HAS_NEW_IK_TOOL"), QStringLiteral("onionSkinFramesBefore"),
                                 QStringLiteral("onionSkinFramesAfter"), QStringLiteral("onionSkinOpacity"),
                                 QStringLiteral("onionSkinFalloff"), kInt, kBool, kReal, kColour}));

    EXPECT_EQ(bound<QSpinBox>(dialog, kInt)->value(), 42);
    EXPECT_TRUE(bound<QCheckBox>(dialog, kBool)->isChecked());
    EXPECT_DOUBLE_EQ(bound<QDoubleSpinBox>(dialog, kReal)->value(), 2.5);
    QColor const shown = bound<QToolButton>(dialog, kColour)->property("color").value<QColor>();
    EXPECT_EQ(shown.rgba(), 0x80112233u);  // alpha 128 kept
}

TEST_F(PreferencesDialogBinding, MissingOrMistypedKeysLeaveTheFormValue)
{
    tuPref->setStringValue(kInt, QStringLiteral("not a number"));  // another type than the widget's
    AH_PreferencesDialog dialog(&hook);
    EXPECT_EQ(bound<QSpinBox>(dialog, kInt)->value(), 7);
    EXPECT_FALSE(bound<QCheckBox>(dialog, kBool)->isChecked());
    EXPECT_EQ(tuPref->getStringValue(kInt, QString()), QStringLiteral("not a number"));  // opening writes nothing
    EXPECT_EQ(tuPref->find(kBool), nullptr);
}

// Stored values come from a file the user may have edited: whatever is stored, opening the dialog
// shows something the editor can hold and writes nothing.
TEST_F(PreferencesDialogBinding, StoredValuesOutsideTheEditorsRangeAreShownClampedAndLeftAlone)
{
    struct Case {
        char const *what;
        void (*store)();
        int shown;  // by the spin box of range 0 to 100, whose form value is 7
    };
    Case const cases[] = {
        {"below the range", [] { tuPref->setIntValue(kInt, -5); }, 0},
        {"above the range", [] { tuPref->setIntValue(kInt, 1000); }, 100},
        {"the lowest int", [] { tuPref->setIntValue(kInt, std::numeric_limits<int>::min()); }, 0},
        {"a double", [] { tuPref->setDoubleValue(kInt, 3.5); }, 7},
        {"a colour", [] { tuPref->setRgbaValue(kInt, 0xff000000u); }, 7},
        {"a bool", [] { tuPref->setBoolValue(kInt, true); }, 7},
        {"nothing", [] {}, 7},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        tuPref->remove(kInt);
        c.store();
        PR_PreferenceItem const *before = tuPref->find(kInt);
        QVariant const stored = before ? before->value() : QVariant();
        AH_PreferencesDialog dialog(&hook);
        EXPECT_EQ(bound<QSpinBox>(dialog, kInt)->value(), c.shown);
        PR_PreferenceItem const *after = tuPref->find(kInt);
        EXPECT_EQ(after != nullptr, before != nullptr);
        if (after) {
            EXPECT_EQ(after->value(), stored);
        }
    }
}

TEST_F(PreferencesDialogBinding, OkWritesEveryBoundKeyAndCancelNone)
{
    tuPref->setIntValue(kInt, 1);
    {
        AH_PreferencesDialog dialog(&hook);
        bound<QSpinBox>(dialog, kInt)->setValue(30);
        bound<QCheckBox>(dialog, kBool)->setChecked(true);
        ASSERT_TRUE(chooseColour(bound<QToolButton>(dialog, kColour), QColor(10, 20, 30, 40)));
        dialog.reject();
    }
    EXPECT_EQ(tuPref->getIntValue(kInt, -1), 1);
    EXPECT_EQ(tuPref->find(kBool), nullptr);
    EXPECT_EQ(tuPref->find(kColour), nullptr);

    AH_PreferencesDialog dialog(&hook);
    bound<QSpinBox>(dialog, kInt)->setValue(30);
    bound<QCheckBox>(dialog, kBool)->setChecked(true);
    bound<QDoubleSpinBox>(dialog, kReal)->setValue(0.75);
    ASSERT_TRUE(chooseColour(bound<QToolButton>(dialog, kColour), QColor(10, 20, 30, 40)));
    QSignalSpy changes(tuPref, &PR_Preference::preferenceChanged);
    dialog.accept();
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(tuPref->getIntValue(kInt, -1), 30);
    EXPECT_TRUE(tuPref->getBoolValue(kBool, false));
    EXPECT_DOUBLE_EQ(tuPref->getDoubleValue(kReal, -1), 0.75);
    EXPECT_EQ(tuPref->getRgbaValue(kColour, 0), qRgba(10, 20, 30, 40));
    EXPECT_GE(changes.count(), 4);
    EXPECT_EQ(tuPref->find(kUnbound), nullptr);
}

TEST_F(PreferencesDialogBinding, CancellingTheColourDialogKeepsTheColour)
{
    tuPref->setRgbaValue(kColour, 0x80112233u);
    AH_PreferencesDialog dialog(&hook);
    auto *button = bound<QToolButton>(dialog, kColour);
    ASSERT_TRUE(chooseColour(button, QColor()));
    EXPECT_EQ(button->property("color").value<QColor>().rgba(), 0x80112233u);
    dialog.accept();
    EXPECT_EQ(tuPref->getRgbaValue(kColour, 0), 0x80112233u);
}

// The application as it starts: the plug-in, loaded with its IK tool on, adds its two forms to the
// dialog of the window, which shows the values of the preference file.
TEST(PreferencesDialogInTheApplication, ShowsTheIKToolTabsWithTheStoredValues)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QString const prefs = folder.filePath(QStringLiteral("prefs.xml"));
    QFile file(prefs);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<preferences version=\"1\">\n"
               " <bool key=\"QV_HAS_NEW_IK_TOOL\" value=\"true\"/>\n <int key=\"ikJointSize\" value=\"9\"/>\n"
               " <rgba key=\"ikBoneColor\" value=\"#80ff0000\"/>\n</preferences>\n");
    file.close();
    AH_Options options;
    QString error;
    ASSERT_TRUE(AH_Options::parse({QStringLiteral("animhost"), QStringLiteral("--prefs"), prefs}, options, &error));
    AH_Host host;
    host.startup(options);
    ASSERT_TRUE(host.pluginErrors().isEmpty()) << host.pluginErrors().join('\n').toStdString();
    {
        AH_PreferencesDialog dialog(host.preferenceUI());
        EXPECT_NE(dialog.page(PLUG_PreferenceUI::ToolsPage)->findChild<QWidget *>(QStringLiteral("ikPreferencePanel")), nullptr);
        EXPECT_NE(dialog.page(PLUG_PreferenceUI::ColoursPage)->findChild<QWidget *>(QStringLiteral("ikColorPanel")), nullptr);
        int sizes = 0, colours = 0;
        for (QWidget *widget : dialog.boundWidgets()) {
            QString const key = widget->property("prefKey").toString();
            if (key == QLatin1String("ikJointSize")) {
                ++sizes;
                EXPECT_EQ(qobject_cast<QSpinBox *>(widget)->value(), 9);
            } else if (key == QLatin1String("ikBoneColor")) {
                ++colours;
                EXPECT_EQ(widget->property("color").value<QColor>().rgba(), 0x80ff0000u);
            }
        }
        EXPECT_EQ(sizes, 2);  // the sizes form is on both pages
        EXPECT_EQ(colours, 2);
    }
    host.shutdown();
}

} // namespace
