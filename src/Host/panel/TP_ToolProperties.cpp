#include "panel/TP_ToolProperties.h"

#include "widgets/GUT_WidgetFactory.h"

#include <QFileInfo>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <map>
#include <vector>

namespace {

// The factories and the receivers alive now; main thread only.
struct PanelRegistry {
    std::vector<std::unique_ptr<TP_ToolPropertiesPanelFactory>> factories;
    std::vector<TP_ToolPropertiesReceiver *> receivers;

    static PanelRegistry &instance()
    {
        static PanelRegistry registry;
        return registry;
    }
};

} // namespace

// ---- panel

TP_ToolPropertiesPanel::TP_ToolPropertiesPanel(TP_ToolPropertiesReceiver *receiver) : receiver_(receiver) {}

TP_ToolPropertiesPanel::~TP_ToolPropertiesPanel()
{
    delete content_.data();  // null-safe; the receiver may already have destroyed it
}

void TP_ToolPropertiesPanel::load()
{
    if (loaded_)
        return;
    loaded_ = true;
    load_internal();
}

QWidget *TP_ToolPropertiesPanel::createContentWidget(QString const &uiFile)
{
    QWidget *widget = GUT_WidgetFactory::Instance().create(uiFile, receiver_);
    if (!widget) {
        std::fprintf(stderr, "%s: cannot build the tool properties panel from this file\n",
                     QFileInfo(uiFile).absoluteFilePath().toLocal8Bit().constData());
        return nullptr;
    }
    widget->hide();
    delete content_.data();
    content_ = widget;
    return widget;
}

QWidget *TP_ToolPropertiesPanel::contentWidget() const
{
    return content_.data();
}

void TP_ToolPropertiesPanel::show()
{
    refresh_internal();
}

void TP_ToolPropertiesPanel::updateStatus()
{
    if (isShown())
        refresh_internal();
}

bool TP_ToolPropertiesPanel::isShown() const
{
    return receiver_ && receiver_->currentPanel() == this;
}

void TP_ToolPropertiesPanel::load_internal() {}
void TP_ToolPropertiesPanel::refresh_internal() {}
bool TP_ToolPropertiesPanel::monitorSelectionChange()
{
    return false;
}

// ---- receiver

struct TP_ToolPropertiesReceiver::Impl {
    QStackedWidget *stack = nullptr;   // child of the receiver; page 0 is the empty page
    std::map<CX_ToolIds::ID, TP_ToolPropertiesPanel *> panels;  // owned as QObject children
    CX_ToolIds::ID current = CX_ToolIds::None;
};

TP_ToolPropertiesReceiver::TP_ToolPropertiesReceiver(QWidget *parent) : QWidget(parent), d_(std::make_unique<Impl>())
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    d_->stack = new QStackedWidget(this);
    d_->stack->addWidget(new QWidget(d_->stack));
    layout->addWidget(d_->stack);

    PanelRegistry &registry = PanelRegistry::instance();
    registry.receivers.push_back(this);
    for (auto const &factory : registry.factories)
        factory->create(this);
}

TP_ToolPropertiesReceiver::~TP_ToolPropertiesReceiver()
{
    auto &receivers = PanelRegistry::instance().receivers;
    receivers.erase(std::remove(receivers.begin(), receivers.end(), this), receivers.end());
}

TP_ToolPropertiesPanel *TP_ToolPropertiesReceiver::panelForTool(CX_ToolIds::ID tool) const
{
    auto it = d_->panels.find(tool);
    return it == d_->panels.end() ? nullptr : it->second;
}

void TP_ToolPropertiesReceiver::setCurrentTool(CX_ToolIds::ID tool)
{
    d_->current = tool;
    TP_ToolPropertiesPanel *panel = panelForTool(tool);
    QWidget *content = panel ? panel->contentWidget() : nullptr;
    if (content && d_->stack->indexOf(content) < 0)
        placePanel(panel);
    d_->stack->setCurrentIndex(content ? d_->stack->indexOf(content) : 0);
    if (panel)
        panel->show();
}

CX_ToolIds::ID TP_ToolPropertiesReceiver::currentTool() const
{
    return d_->current;
}

TP_ToolPropertiesPanel *TP_ToolPropertiesReceiver::currentPanel() const
{
    return panelForTool(d_->current);
}

void TP_ToolPropertiesReceiver::selectionChanged()
{
    if (TP_ToolPropertiesPanel *panel = currentPanel())
        if (panel->monitorSelectionChange())
            panel->updateStatus();
}

void TP_ToolPropertiesReceiver::updateStatus()
{
    if (TP_ToolPropertiesPanel *panel = currentPanel())
        panel->updateStatus();
}

void TP_ToolPropertiesReceiver::registerPanel(CX_ToolIds::ID tool, TP_ToolPropertiesPanel *panel)
{
    if (TP_ToolPropertiesPanel *old = panelForTool(tool); old && old != panel)
        delete old;
    panel->setParent(this);
    d_->panels[tool] = panel;
}

void TP_ToolPropertiesReceiver::placePanel(TP_ToolPropertiesPanel *panel)
{
    QWidget *content = panel->contentWidget();
    if (content && d_->stack->indexOf(content) < 0)
        d_->stack->addWidget(content);
}

// ---- factories

TP_ToolPropertiesPanelFactory::~TP_ToolPropertiesPanelFactory() = default;

void TP_ToolPropertiesPanelFactory::addPanelFactory(std::unique_ptr<TP_ToolPropertiesPanelFactory> factory)
{
    if (!factory)
        return;
    PanelRegistry &registry = PanelRegistry::instance();
    TP_ToolPropertiesPanelFactory *added = factory.get();
    registry.factories.push_back(std::move(factory));
    // Careful: a factory may make receivers' widgets; iterate over a copy of the list.
    std::vector<TP_ToolPropertiesReceiver *> const receivers = registry.receivers;
    for (TP_ToolPropertiesReceiver *receiver : receivers)
        added->create(receiver);
}

void TP_ToolPropertiesPanelFactory::registerPanelForTool(TP_ToolPropertiesReceiver *receiver, CX_ToolIds::ID tool,
                                                         TP_ToolPropertiesPanel *panel)
{
    if (receiver && panel)
        receiver->registerPanel(tool, panel);
}

void TP_ToolPropertiesPanelFactory::addPanelInPlaceholder(TP_ToolPropertiesReceiver *receiver, TP_ToolPropertiesPanel *panel)
{
    if (receiver && panel)
        receiver->placePanel(panel);
}

void TP_ToolPropertiesPanelFactory::clearPanelFactories()
{
    PanelRegistry::instance().factories.clear();
}

int TP_ToolPropertiesPanelFactory::panelFactoryCount()
{
    return static_cast<int>(PanelRegistry::instance().factories.size());
}
