// The IK tool's two preference forms, loaded through its customizer into the host's preference
// dialog: each of the 21 keys has one editor of its kind, the dialog shows the stored values, and
// OK writes them, after which IKPreferences draws with the new values.
#include "AH_PreferencesDialog.h"
#include "ColourDialogDriver.h"
#include "iktool/IKPreferences.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDir>
#include <QImage>
#include <QSpinBox>
#include <QTabWidget>

#include <gtest/gtest.h>

#include <map>

namespace {

enum class Kind { Size, Colour };

// The keys the forms must offer, by kind.
std::map<QString, Kind> const kKeys = {
    {"ikBoneColor", Kind::Colour},
    {"ikBoneFillColor", Kind::Colour},
    {"ikJointColor", Kind::Colour},
    {"ikSelectedJointColor", Kind::Colour},
    {"ikJointFillColor", Kind::Colour},
    {"ikJointSize", Kind::Size},
    {"ikJointPickSize", Kind::Size},
    {"ikBoneThickness", Kind::Size},
    {"ikSetupBoneColor", Kind::Colour},
    {"ikSetupBoneFillColor", Kind::Colour},
    {"ikSetupJointColor", Kind::Colour},
    {"ikSetupSelectedJointColor", Kind::Colour},
    {"ikSetupJointFillColor", Kind::Colour},
    {"ikSetupJointSize", Kind::Size},
    {"ikSetupJointPickSize", Kind::Size},
    {"ikSetupBoneThickness", Kind::Size},
    {"ikInterpolationBaseColorBefore", Kind::Colour},
    {"ikInterpolationBaseColorAfter", Kind::Colour},
    {"ikInterpolationJointColor", Kind::Colour},
    {"ikInterpolationJointSize", Kind::Size},
    {"ikInterpolationBoneThickness", Kind::Size},
};

class IKPreferenceForms : public ::testing::Test {
protected:
    void SetUp() override
    {
        // The forms are read from the source tree's resources, as from the plug-in's folder.
        PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), QStringLiteral(ANIM_SOURCE_DIR));
        IKPreferences::instance();  // stores the defaults and follows the store from now on
        hook.registerCustomizer(&customizer);
    }
    void TearDown() override { hook.unregisterCustomizer(&customizer); }

    // The bound widgets of the IK tabs, by key (the general page's own key left out).
    static std::multimap<QString, QWidget *> ikWidgets(AH_PreferencesDialog const &dialog)
    {
        std::multimap<QString, QWidget *> widgets;
        for (QWidget *widget : dialog.boundWidgets()) {
            QString const key = widget->property("prefKey").toString();
            if (key.startsWith(QLatin1String("ik")))
                widgets.emplace(key, widget);
        }
        return widgets;
    }

    template <class W>
    static W *editor(AH_PreferencesDialog const &dialog, char const *key)
    {
        auto const widgets = ikWidgets(dialog);
        auto const it = widgets.find(QLatin1String(key));
        return it == widgets.end() ? nullptr : qobject_cast<W *>(it->second);
    }

    PLUG_PreferenceUI hook;
    IKPreferenceCustomizer customizer;
};

TEST_F(IKPreferenceForms, BothPagesGetAnIKToolTab)
{
    AH_PreferencesDialog dialog(&hook);
    struct Expected {
        int pageKind;
        char const *panel;
    };
    for (Expected const &e : {Expected{PLUG_PreferenceUI::ToolsPage, "ikPreferencePanel"},
                              Expected{PLUG_PreferenceUI::ColoursPage, "ikColorPanel"}}) {
        SCOPED_TRACE(e.panel);
        auto *tabs = dialog.page(e.pageKind)->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
        ASSERT_NE(tabs, nullptr);
        ASSERT_EQ(tabs->count(), 2);  // both forms on each page, as the customizer adds them
        EXPECT_EQ(tabs->tabText(0), QStringLiteral("IK Tool"));
        EXPECT_EQ(tabs->tabText(1), QStringLiteral("IK Tool"));
        EXPECT_NE(tabs->findChild<QWidget *>(QLatin1String(e.panel)), nullptr);
    }
}

TEST_F(IKPreferenceForms, EachKeyHasOneEditorOfItsKindPerForm)
{
    // One customized page holds each form once; the other page holds them again.
    AH_PreferencesDialog dialog(&hook);
    QWidget *page = dialog.page(PLUG_PreferenceUI::ToolsPage);
    std::map<QString, std::vector<QWidget *>> found;
    for (QWidget *widget : dialog.boundWidgets())
        if (page->isAncestorOf(widget))
            found[widget->property("prefKey").toString()].push_back(widget);
    EXPECT_EQ(found.size(), kKeys.size());
    for (auto const &[key, kind] : kKeys) {
        SCOPED_TRACE(key.toStdString());
        ASSERT_EQ(found[key].size(), 1u);
        QWidget *widget = found[key].front();
        if (kind == Kind::Size) {
            auto *spin = qobject_cast<QSpinBox *>(widget);
            ASSERT_NE(spin, nullptr);
            EXPECT_GE(spin->minimum(), 1);  // a size of zero would hide the skeleton
        } else {
            EXPECT_NE(qobject_cast<QAbstractButton *>(widget), nullptr);
            EXPECT_EQ(qobject_cast<QCheckBox *>(widget), nullptr);
        }
        EXPECT_FALSE(widget->toolTip().isEmpty());
    }
}

TEST_F(IKPreferenceForms, TheDialogShowsTheStoredValues)
{
    tuPref->setIntValue(QStringLiteral("ikJointSize"), 9);
    tuPref->setRgbaValue(QStringLiteral("ikSetupBoneFillColor"), 0x80405060u);
    AH_PreferencesDialog dialog(&hook);
    EXPECT_EQ(editor<QSpinBox>(dialog, "ikJointSize")->value(), 9);
    EXPECT_EQ(editor<QAbstractButton>(dialog, "ikSetupBoneFillColor")->property("color").value<QColor>().rgba(),
              0x80405060u);
    // A key left at its default shows the default.
    EXPECT_EQ(editor<QSpinBox>(dialog, "ikInterpolationJointSize")->value(), tuPref->getIntValue(QStringLiteral("ikInterpolationJointSize"), -1));
}

TEST_F(IKPreferenceForms, AcceptingWritesTheKeysAndTheToolFollows)
{
    tuPref->setIntValue(QStringLiteral("ikJointSize"), 5);
    AH_PreferencesDialog dialog(&hook);
    // Both pages hold each form: an edit of one editor shows in its twin on the other page too.
    editor<QSpinBox>(dialog, "ikJointSize")->setValue(12);
    ASSERT_TRUE(chooseColour(editor<QAbstractButton>(dialog, "ikBoneColor"), QColor(1, 2, 3, 128)));
    auto const widgets = ikWidgets(dialog);
    for (auto [it, end] = widgets.equal_range(QStringLiteral("ikJointSize")); it != end; ++it)
        EXPECT_EQ(qobject_cast<QSpinBox *>(it->second)->value(), 12);
    for (auto [it, end] = widgets.equal_range(QStringLiteral("ikBoneColor")); it != end; ++it)
        EXPECT_EQ(it->second->property("color").value<QColor>().rgba(), qRgba(1, 2, 3, 128));
    EXPECT_EQ(IKPreferences::jointSize(), 5);  // nothing written before OK
    dialog.accept();
    EXPECT_EQ(tuPref->getIntValue(QStringLiteral("ikJointSize"), -1), 12);
    EXPECT_EQ(tuPref->getRgbaValue(QStringLiteral("ikBoneColor"), 0), qRgba(1, 2, 3, 128));
    EXPECT_EQ(IKPreferences::jointSize(), 12);
    VS_RGBA const bone = IKPreferences::boneColor();
    EXPECT_EQ(bone.r, 1);
    EXPECT_EQ(bone.g, 2);
    EXPECT_EQ(bone.b, 3);
    EXPECT_EQ(bone.a, 128);
    tuPref->setIntValue(QStringLiteral("ikJointSize"), 5);
    tuPref->setRgbaValue(QStringLiteral("ikBoneColor"), 0xffff0000u);
}

// Pictures of the two IK tabs, for the documentation: written to the working folder.
TEST_F(IKPreferenceForms, TheTabsRender)
{
    AH_PreferencesDialog dialog(&hook);
    dialog.show();
    auto *pages = dialog.findChild<QTabWidget *>(QStringLiteral("pages"));
    for (int kind : {int(PLUG_PreferenceUI::ToolsPage), int(PLUG_PreferenceUI::ColoursPage)}) {
        QWidget *page = dialog.page(kind);
        pages->setCurrentWidget(page);
        auto *tabs = page->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
        tabs->setCurrentIndex(kind == PLUG_PreferenceUI::ToolsPage ? 0 : 1);
        QImage const image = dialog.grab().toImage();
        ASSERT_FALSE(image.isNull());
        EXPECT_TRUE(image.save(QDir::current().filePath(QStringLiteral("ik-preferences-%1.png").arg(kind))));
    }
}

} // namespace
