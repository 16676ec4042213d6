#include "AH_PreferencesDialog.h"

#include "AH_Host.h"

#include "plugin/PLUG_PreferenceUI.h"
#include "preference/PR_Preference.h"
#include "widgets/GUT_WidgetFactory.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QPainter>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

char const kPrefKey[] = "prefKey";
char const kColor[] = "color";

// Shows `colour` on its button: a swatch over a checkerboard, so that a translucent colour reads
// as such.
void showColour(QAbstractButton *button, QColor const &colour)
{
    button->setProperty(kColor, colour);
    QSize const size(40, 14);
    QPixmap swatch(size);
    QPainter painter(&swatch);
    int const cell = 7;
    for (int y = 0; y < size.height(); y += cell)
        for (int x = 0; x < size.width(); x += cell)
            painter.fillRect(x, y, cell, cell, ((x + y) / cell) % 2 ? Qt::lightGray : Qt::white);
    painter.fillRect(swatch.rect(), colour);
    painter.setPen(Qt::black);
    painter.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
    painter.end();
    button->setIcon(QIcon(swatch));
    button->setIconSize(size);
    button->setAccessibleDescription(colour.name(QColor::HexArgb));
}

QString keyOf(QWidget const *widget)
{
    return widget->property(kPrefKey).toString();
}

} // namespace

struct AH_PreferencesDialog::Impl {
    QList<QWidget *> bound;  // children of the dialog; they live as long as it
};

AH_PreferencesDialog::AH_PreferencesDialog(PLUG_PreferenceUI const *customizers, QWidget *parent)
    : QDialog(parent), pages_(new QTabWidget(this)), customizers_(customizers), impl_(std::make_unique<Impl>())
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
    ikTool->setProperty(kPrefKey, QStringLiteral("QV_HAS_NEW_IK_TOOL"));
    generalLayout->addWidget(ikTool);
    generalLayout->addStretch();
    general->findChild<QTabWidget *>(QStringLiteral("tabWidget"))->insertTab(0, generalTab, tr("Application"));
    bindPage(general);
    // The host's own drawing settings: onion skin.
    QWidget *drawing = addPage(PLUG_PreferenceUI::DrawingPage, tr("Drawing"));
    AH_InitResources();
    if (QWidget *onionSkin = GUT_WidgetFactory::Instance().create(QStringLiteral(":/animhost/onionSkinPreferences.ui")))
        drawing->findChild<QTabWidget *>(QStringLiteral("tabWidget"))->insertTab(0, onionSkin, tr("Onion Skin"));
    bindPage(drawing);
    bindPage(addPage(PLUG_PreferenceUI::ToolsPage, tr("Tools")));
    bindPage(addPage(PLUG_PreferenceUI::ColoursPage, tr("Colours")));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    resize(560, 520);
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
    // The host fills the General and Drawing pages itself.
    if (tabs->count() == 0 && pageKind != PLUG_PreferenceUI::GeneralPage && pageKind != PLUG_PreferenceUI::DrawingPage)
        tabs->addTab(new QLabel(tr("Nothing to set here."), tabs), title);
    pages_->addTab(page, title);
    return page;
}

void AH_PreferencesDialog::bindPage(QWidget *page)
{
    for (QWidget *widget : page->findChildren<QWidget *>()) {
        QString const key = keyOf(widget);
        if (key.isEmpty())
            continue;
        // Careful: QCheckBox is also a button, and UI_DoubleEditor a QDoubleSpinBox; the order of
        // these tests matters. Every edit is copied to the other editors of the same key (a form
        // may be shown on more than one page), so that OK writes what the user last saw.
        if (auto *check = qobject_cast<QCheckBox *>(widget)) {
            check->setChecked(tuPref->getBoolValue(key, check->isChecked()));
            connect(check, &QCheckBox::toggled, this, [this, check](bool on) {
                for (QWidget *twin : twinsOf(check))
                    qobject_cast<QCheckBox *>(twin)->setChecked(on);
            });
        } else if (auto *spin = qobject_cast<QSpinBox *>(widget)) {
            spin->setValue(tuPref->getIntValue(key, spin->value()));
            connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), this, [this, spin](int value) {
                for (QWidget *twin : twinsOf(spin))
                    qobject_cast<QSpinBox *>(twin)->setValue(value);
            });
        } else if (auto *real = qobject_cast<QDoubleSpinBox *>(widget)) {
            real->setValue(tuPref->getDoubleValue(key, real->value()));
            connect(real, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this, real](double value) {
                for (QWidget *twin : twinsOf(real))
                    qobject_cast<QDoubleSpinBox *>(twin)->setValue(value);
            });
        } else if (auto *button = qobject_cast<QAbstractButton *>(widget)) {
            showColour(button, QColor::fromRgba(tuPref->getRgbaValue(key, qRgba(0, 0, 0, 255))));
            connect(button, &QAbstractButton::clicked, this, [this, button]() {
                QColor const chosen = QColorDialog::getColor(button->property(kColor).value<QColor>(), this,
                                                             tr("Choose a colour"), QColorDialog::ShowAlphaChannel);
                if (!chosen.isValid())  // the colour dialog was cancelled
                    return;
                showColour(button, chosen);
                for (QWidget *twin : twinsOf(button))
                    showColour(qobject_cast<QAbstractButton *>(twin), chosen);
            });
        } else {
            continue;
        }
        impl_->bound.append(widget);
    }
}

QList<QWidget *> AH_PreferencesDialog::twinsOf(QWidget *widget) const
{
    QList<QWidget *> twins;
    QString const key = keyOf(widget);
    for (QWidget *other : impl_->bound)
        if (other != widget && keyOf(other) == key && other->metaObject() == widget->metaObject())
            twins.append(other);
    return twins;
}

QList<QWidget *> AH_PreferencesDialog::boundWidgets() const
{
    return impl_->bound;
}

void AH_PreferencesDialog::accept()
{
    for (QWidget *widget : impl_->bound) {
        QString const key = keyOf(widget);
        if (auto *check = qobject_cast<QCheckBox *>(widget))
            tuPref->setBoolValue(key, check->isChecked());
        else if (auto *spin = qobject_cast<QSpinBox *>(widget))
            tuPref->setIntValue(key, spin->value());
        else if (auto *real = qobject_cast<QDoubleSpinBox *>(widget))
            tuPref->setDoubleValue(key, real->value());
        else
            tuPref->setRgbaValue(key, widget->property(kColor).value<QColor>().rgba());
    }
    QDialog::accept();
}

QWidget *AH_PreferencesDialog::page(int pageKind) const
{
    for (int i = 0; i < pages_->count(); ++i)
        if (pages_->widget(i)->property("pageKind").toInt() == pageKind)
            return pages_->widget(i);
    return nullptr;
}
