#include "AH_PreferencesDialog.h"

#include "plugin/PLUG_PreferenceUI.h"
#include "preference/PR_Preference.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QTabWidget>
#include <QVBoxLayout>

AH_PreferencesDialog::AH_PreferencesDialog(PLUG_PreferenceUI const *customizers, QWidget *parent)
    : QDialog(parent), pages_(new QTabWidget(this)), customizers_(customizers)
{
    setWindowTitle(tr("Preferences"));
    pages_->setObjectName(QStringLiteral("pages"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(pages_);

    QWidget *general = addPage(PLUG_PreferenceUI::GeneralPage, tr("General"));
    auto *generalTab = new QWidget;
    auto *generalLayout = new QVBoxLayout(generalTab);
    auto *ikTool = new QCheckBox(tr("Offer the IK tool (takes effect at the next start)"), generalTab);
    ikTool->setObjectName(QStringLiteral("QV_HAS_NEW_IK_TOOL"));
    ikTool->setChecked(tuPref->getBoolValue(QStringLiteral("QV_HAS_NEW_IK_TOOL"), false));
    connect(ikTool, &QCheckBox::toggled, [](bool on) { tuPref->setBoolValue(QStringLiteral("QV_HAS_NEW_IK_TOOL"), on); });
    generalLayout->addWidget(ikTool);
    generalLayout->addStretch();
    general->findChild<QTabWidget *>(QStringLiteral("tabWidget"))->insertTab(0, generalTab, tr("Application"));
    addPage(PLUG_PreferenceUI::ToolsPage, tr("Tools"));
    addPage(PLUG_PreferenceUI::ColoursPage, tr("Colours"));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::accept);
    layout->addWidget(buttons);
    resize(560, 460);
}

AH_PreferencesDialog::~AH_PreferencesDialog() = default;

QWidget *AH_PreferencesDialog::addPage(int pageKind, QString const &title)
{
    auto *page = new QWidget;
    page->setProperty("pageKind", pageKind);
    auto *layout = new QVBoxLayout(page);
    auto *tabs = new QTabWidget(page);
    tabs->setObjectName(QStringLiteral("tabWidget"));
    layout->addWidget(tabs);
    if (customizers_)
        customizers_->customizePage(pageKind, page);
    if (tabs->count() == 0 && pageKind != PLUG_PreferenceUI::GeneralPage)
        tabs->addTab(new QLabel(tr("Nothing to set here."), tabs), title);
    pages_->addTab(page, title);
    return page;
}

QWidget *AH_PreferencesDialog::page(int pageKind) const
{
    for (int i = 0; i < pages_->count(); ++i)
        if (pages_->widget(i)->property("pageKind").toInt() == pageKind)
            return pages_->widget(i);
    return nullptr;
}
