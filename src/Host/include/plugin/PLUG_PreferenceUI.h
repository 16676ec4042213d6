// The preference dialog's hook for plug-ins: a plug-in registers a customizer, and each time the
// dialog builds one of its pages it lets every customizer add its tabs to it.
#pragma once

#include <memory>
#include <vector>

class QWidget;

class PLUG_PreferenceUICustomizerInterface {
public:
    virtual ~PLUG_PreferenceUICustomizerInterface() = default;
    // Each gets the kind of the page being built (PLUG_PreferenceUI::PageKind) and its widget, and
    // may add a tab to it.
    virtual void addPreferenceTab(int pageKind, QWidget *page) = 0;
    virtual void addColorTab(int pageKind, QWidget *page) = 0;
};

class PLUG_PreferenceUI {
public:
    enum PageKind {
        GeneralPage = 0,
        ScenePage = 1,
        DrawingPage = 2,
        CameraPage = 3,
        ToolsPage = 4,
        ColoursPage = 5,
        AdvancedPage = 6,
    };

    PLUG_PreferenceUI();
    ~PLUG_PreferenceUI();

    // Customizers are not owned and must unregister before they go. Null and repeated
    // registrations are ignored.
    void registerCustomizer(PLUG_PreferenceUICustomizerInterface *customizer);
    void unregisterCustomizer(PLUG_PreferenceUICustomizerInterface *customizer);
    std::vector<PLUG_PreferenceUICustomizerInterface *> customizers() const;

    // Called by the dialog for each page it builds: every customizer, in registration order, adds
    // its preference tab, then its colour tab. Nothing happens for a null page.
    void customizePage(int pageKind, QWidget *page) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
