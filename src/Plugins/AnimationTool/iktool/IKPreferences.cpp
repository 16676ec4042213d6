#include "iktool/IKPreferences.h"

#include <QTabWidget>

namespace {

// The process-wide copies, preset with the defaults before any code runs.
VS_RGBA boneColorValue(255, 0, 0, 255);
VS_RGBA boneFillColorValue(220, 220, 220, 255);
VS_RGBA jointColorValue(50, 50, 50, 255);
VS_RGBA selectedJointColorValue(0, 0, 255, 255);
VS_RGBA jointFillColorValue(255, 255, 0, 255);
int jointSizeValue = 5;
int jointPickSizeValue = 5;
int boneThicknessValue = 3;
VS_RGBA setupBoneColorValue(200, 200, 200, 255);
VS_RGBA setupBoneFillColorValue(50, 50, 50, 255);
VS_RGBA setupJointColorValue(50, 50, 50, 255);
VS_RGBA setupSelectedJointColorValue(0, 0, 255, 255);
VS_RGBA setupJointFillColorValue(220, 220, 220, 255);
int setupJointSizeValue = 5;
int setupJointPickSizeValue = 5;
int setupBoneThicknessValue = 3;
VS_RGBA interpolationBaseColorBeforeValue(255, 0, 0, 255);
VS_RGBA interpolationBaseColorAfterValue(0, 255, 0, 255);
VS_RGBA interpolationJointColorValue(200, 200, 200, 255);
int interpolationJointSizeValue = 2;
int interpolationBoneThicknessValue = 1;
constexpr VS_RGBA kExtraColor(0, 255, 0, 255);

// One row of the table: a key and the copy it feeds, a colour or a size.
struct Key {
    char const *name;
    VS_RGBA *colour;
    int *size;
};

// The keys in the order they are handled.
Key const kKeys[] = {
    {"ikBoneColor", &boneColorValue, nullptr},
    {"ikBoneFillColor", &boneFillColorValue, nullptr},
    {"ikJointColor", &jointColorValue, nullptr},
    {"ikSelectedJointColor", &selectedJointColorValue, nullptr},
    {"ikJointFillColor", &jointFillColorValue, nullptr},
    {"ikJointSize", nullptr, &jointSizeValue},
    {"ikJointPickSize", nullptr, &jointPickSizeValue},
    {"ikBoneThickness", nullptr, &boneThicknessValue},
    {"ikSetupBoneColor", &setupBoneColorValue, nullptr},
    {"ikSetupBoneFillColor", &setupBoneFillColorValue, nullptr},
    {"ikSetupJointColor", &setupJointColorValue, nullptr},
    {"ikSetupSelectedJointColor", &setupSelectedJointColorValue, nullptr},
    {"ikSetupJointFillColor", &setupJointFillColorValue, nullptr},
    {"ikSetupJointSize", nullptr, &setupJointSizeValue},
    {"ikSetupJointPickSize", nullptr, &setupJointPickSizeValue},
    {"ikSetupBoneThickness", nullptr, &setupBoneThicknessValue},
    {"ikInterpolationBaseColorBefore", &interpolationBaseColorBeforeValue, nullptr},
    {"ikInterpolationBaseColorAfter", &interpolationBaseColorAfterValue, nullptr},
    {"ikInterpolationJointColor", &interpolationJointColorValue, nullptr},
    {"ikInterpolationJointSize", nullptr, &interpolationJointSizeValue},
    {"ikInterpolationBoneThickness", nullptr, &interpolationBoneThicknessValue},
};

unsigned int toArgb(VS_RGBA c)
{
    return unsigned(c.a) << 24 | unsigned(c.r) << 16 | unsigned(c.g) << 8 | unsigned(c.b);
}

VS_RGBA fromArgb(unsigned int v)
{
    return VS_RGBA(static_cast<std::uint8_t>(v >> 16), static_cast<std::uint8_t>(v >> 8), static_cast<std::uint8_t>(v),
                   static_cast<std::uint8_t>(v >> 24));
}

// Builds one of the tool's tabs from a form of the resource folder on the tools or colours page.
void addTab(int pageKind, QWidget *page, char const *file, char const *objectName)
{
    if (!page || (pageKind != IKPreferenceCustomizer::kToolsPage && pageKind != IKPreferenceCustomizer::kColoursPage))
        return;
    auto *tabs = page->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    if (!tabs)
        return;
    QString const path = PLUG_Services::getPluginPath(QStringLiteral("AnimationTool")) + QLatin1String(file);
    QWidget *widget = GUT_WidgetFactory::Instance().create(path, tabs);
    if (!widget)
        return;
    widget->setObjectName(QLatin1String(objectName));
    tabs->addTab(widget, QObject::tr("IK Tool"));
}

IKPreferenceCustomizer &customizer()
{
    static IKPreferenceCustomizer instance;
    return instance;
}

} // namespace

IKPreferences &IKPreferences::instance()
{
    // Two guards: a call made while initialize() runs finds the object already there.
    static IKPreferences preferences;
    static bool initialized = false;
    if (!initialized) {
        initialized = true;
        preferences.initialize();
    }
    return preferences;
}

IKPreferences::IKPreferences()
{
    connect(tuPref, "2preferenceChanged()", this, "1onPreferencesChanged()");
}

void IKPreferences::initialize()
{
    if (PLUG_PreferenceUI *ui = PLUG_Services::getPreference())
        ui->registerCustomizer(&customizer());
    storeDefaults();
    load();
}

void IKPreferences::storeDefaults()
{
    for (Key const &key : kKeys) {
        QString const name = QLatin1String(key.name);
        if (tuPref->find(name))
            continue;
        if (key.colour)
            tuPref->setRgbaValue(name, toArgb(*key.colour));
        else
            tuPref->setIntValue(name, *key.size);
    }
}

void IKPreferences::load()
{
    for (Key const &key : kKeys) {
        QString const name = QLatin1String(key.name);
        if (!tuPref->find(name))
            continue;
        if (key.colour)
            *key.colour = fromArgb(tuPref->getRgbaValue(name, toArgb(*key.colour)));
        else
            *key.size = tuPref->getIntValue(name, *key.size);
    }
}

void IKPreferences::onPreferencesChanged()
{
    load();
}

VS_RGBA IKPreferences::boneColor() { return boneColorValue; }
VS_RGBA IKPreferences::boneFillColor() { return boneFillColorValue; }
VS_RGBA IKPreferences::jointColor() { return jointColorValue; }
VS_RGBA IKPreferences::selectedJointColor() { return selectedJointColorValue; }
VS_RGBA IKPreferences::jointFillColor() { return jointFillColorValue; }
VS_RGBA IKPreferences::extraColor() { return kExtraColor; }
int IKPreferences::jointSize() { return jointSizeValue; }
int IKPreferences::jointPickSize() { return jointPickSizeValue; }
int IKPreferences::boneThickness() { return boneThicknessValue; }
VS_RGBA IKPreferences::setupBoneColor() { return setupBoneColorValue; }
VS_RGBA IKPreferences::setupBoneFillColor() { return setupBoneFillColorValue; }
VS_RGBA IKPreferences::setupJointColor() { return setupJointColorValue; }
VS_RGBA IKPreferences::setupSelectedJointColor() { return setupSelectedJointColorValue; }
VS_RGBA IKPreferences::setupJointFillColor() { return setupJointFillColorValue; }
VS_RGBA IKPreferences::setupExtraColor() { return kExtraColor; }
int IKPreferences::setupJointSize() { return setupJointSizeValue; }
int IKPreferences::setupJointPickSize() { return setupJointPickSizeValue; }
int IKPreferences::setupBoneThickness() { return setupBoneThicknessValue; }
VS_RGBA IKPreferences::interpolationBaseColorBefore() { return interpolationBaseColorBeforeValue; }
VS_RGBA IKPreferences::interpolationBaseColorAfter() { return interpolationBaseColorAfterValue; }
VS_RGBA IKPreferences::interpolationJointColor() { return interpolationJointColorValue; }
int IKPreferences::interpolationJointSize() { return interpolationJointSizeValue; }
int IKPreferences::interpolationBoneThickness() { return interpolationBoneThicknessValue; }

void IKPreferenceCustomizer::addPreferenceTab(int pageKind, QWidget *page)
{
    addTab(pageKind, page, "/resources/prefs.ui", "ikPreferencePanel");
}

void IKPreferenceCustomizer::addColorTab(int pageKind, QWidget *page)
{
    addTab(pageKind, page, "/resources/colorPrefs.ui", "ikColorPanel");
}
