#include "plugin/PLUG_PreferenceUI.h"

#include <algorithm>

struct PLUG_PreferenceUI::Impl {
    std::vector<PLUG_PreferenceUICustomizerInterface *> customizers;  // not owned, no nulls
};

PLUG_PreferenceUI::PLUG_PreferenceUI() : impl_(std::make_unique<Impl>()) {}

PLUG_PreferenceUI::~PLUG_PreferenceUI() = default;

void PLUG_PreferenceUI::registerCustomizer(PLUG_PreferenceUICustomizerInterface *customizer)
{
    auto &list = impl_->customizers;
    if (customizer && std::find(list.begin(), list.end(), customizer) == list.end())
        list.push_back(customizer);
}

void PLUG_PreferenceUI::unregisterCustomizer(PLUG_PreferenceUICustomizerInterface *customizer)
{
    auto &list = impl_->customizers;
    list.erase(std::remove(list.begin(), list.end(), customizer), list.end());
}

std::vector<PLUG_PreferenceUICustomizerInterface *> PLUG_PreferenceUI::customizers() const
{
    return impl_->customizers;
}

void PLUG_PreferenceUI::customizePage(int pageKind, QWidget *page) const
{
    if (!page)
        return;
    // A copy: a customizer may unregister itself while it works.
    for (PLUG_PreferenceUICustomizerInterface *customizer : customizers()) {
        customizer->addPreferenceTab(pageKind, page);
        customizer->addColorTab(pageKind, page);
    }
}
