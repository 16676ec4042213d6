// The colours and sizes with which the IK tool draws, kept in the host's preference store.
//
// The drawing code asks for these for every joint and bone of every frame, so the values are held
// in process-wide copies and the getters never touch the store. The copies start at the defaults;
// the first instance() writes every key the store lacks and reads them all back, and every later
// change of any preference rereads the whole table.
//
// Colours are four bytes red, green, blue, alpha; in the store they are 0xAARRGGBB words. Sizes are
// screen pixels.
#pragma once

#include "host/HostAPI.h"
#include "graphic/VS_RGBA.h"

class IKPreferences : public QObject {
    Q_OBJECT
public:
    // The first call makes the instance, connects it to the store, writes the missing keys and
    // loads the values.
    static IKPreferences &instance();

    // Manipulation style.
    static VS_RGBA boneColor();
    static VS_RGBA boneFillColor();
    static VS_RGBA jointColor();
    static VS_RGBA selectedJointColor();
    static VS_RGBA jointFillColor();
    static VS_RGBA extraColor();  // fixed: no key
    static int jointSize();
    static int jointPickSize();
    static int boneThickness();
    // Setup style.
    static VS_RGBA setupBoneColor();
    static VS_RGBA setupBoneFillColor();
    static VS_RGBA setupJointColor();
    static VS_RGBA setupSelectedJointColor();
    static VS_RGBA setupJointFillColor();
    static VS_RGBA setupExtraColor();  // fixed: no key
    static int setupJointSize();
    static int setupJointPickSize();
    static int setupBoneThickness();
    // Interpolation ghosts.
    static VS_RGBA interpolationBaseColorBefore();
    static VS_RGBA interpolationBaseColorAfter();
    static VS_RGBA interpolationJointColor();
    static int interpolationJointSize();
    static int interpolationBoneThickness();

public slots:
    // Rereads every key.
    void onPreferencesChanged();

private:
    IKPreferences();
    void initialize();
    void storeDefaults();
    void load();
};

// Adds the IK tool's pages to the host's preference dialog: a tab "IK Tool" built from
// "/resources/prefs.ui" on the tools page and from "/resources/colorPrefs.ui" on the colours page.
class IKPreferenceCustomizer : public PLUG_PreferenceUICustomizerInterface {
public:
    static constexpr int kToolsPage = 4;
    static constexpr int kColoursPage = 5;

    void addPreferenceTab(int pageKind, QWidget *page) override;
    void addColorTab(int pageKind, QWidget *page) override;
};
