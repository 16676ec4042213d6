// The pencil's tool properties panel: the colour (a swatch that opens a colour dialog, and the
// same colour as text) and the width of the strokes, both kept in tuPref.
#include "tool/TO_PencilTool.h"

#include "panel/TP_ToolProperties.h"
#include "preference/PR_Preference.h"

#include <QColorDialog>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPixmap>
#include <QSignalBlocker>
#include <QToolButton>

namespace {

class PencilPanel : public TP_ToolPropertiesPanel {
public:
    using TP_ToolPropertiesPanel::TP_ToolPropertiesPanel;

protected:
    void load_internal() override
    {
        QWidget *content = createContentWidget(QStringLiteral(":/pencil/pencilPanel.ui"));
        if (!content)
            return;
        button_ = content->findChild<QToolButton *>(QStringLiteral("pencilColorButton"));
        text_ = content->findChild<QLineEdit *>(QStringLiteral("pencilColor"));
        width_ = content->findChild<QDoubleSpinBox *>(QStringLiteral("pencilWidth"));
        width_->setMaximum(TO_PencilTool::kMaxWidth);
        QObject::connect(button_, &QToolButton::clicked, content, [this] {
            QColor const chosen = QColorDialog::getColor(TO_PencilTool::color(), button_, QObject::tr("Pencil Colour"),
                                                         QColorDialog::ShowAlphaChannel);
            if (chosen.isValid())
                setColor(chosen);
        });
        QObject::connect(text_, &QLineEdit::editingFinished, content, [this] {
            QColor const typed(text_->text().trimmed());
            if (typed.isValid())
                setColor(typed);
            else
                refresh_internal();  // a colour that does not read goes back to the stored one
        });
        QObject::connect(width_, QOverload<double>::of(&QDoubleSpinBox::valueChanged), content,
                         [](double value) { tuPref->setDoubleValue(TO_PencilTool::widthKey(), value); });
        refresh_internal();
    }

    void refresh_internal() override
    {
        if (!width_)
            return;
        QColor const c = TO_PencilTool::color();
        QPixmap swatch(24, 14);
        swatch.fill(c);
        button_->setIcon(QIcon(swatch));
        QSignalBlocker const blockText(text_), blockWidth(width_);
        text_->setText(c.name(c.alpha() == 255 ? QColor::HexRgb : QColor::HexArgb));
        width_->setValue(TO_PencilTool::width());
    }

private:
    void setColor(QColor const &c)
    {
        tuPref->setRgbaValue(TO_PencilTool::colorKey(), c.rgba());
        refresh_internal();
    }

    QToolButton *button_ = nullptr;    // owned by the content widget
    QLineEdit *text_ = nullptr;        // owned by the content widget
    QDoubleSpinBox *width_ = nullptr;  // owned by the content widget
};

class PencilPanelFactory : public TP_ToolPropertiesPanelFactory {
public:
    void create(TP_ToolPropertiesReceiver *receiver) override
    {
        auto *panel = new PencilPanel(receiver);
        panel->load();
        TP_ToolPropertiesPanelFactory::registerPanelForTool(receiver, TO_PencilTool::registerTool(), panel);
        TP_ToolPropertiesPanelFactory::addPanelInPlaceholder(receiver, panel);
    }
};

} // namespace

void TO_PencilTool::addPanelFactory()
{
    TP_ToolPropertiesPanelFactory::addPanelFactory(std::make_unique<PencilPanelFactory>());
}
