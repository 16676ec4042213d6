#include "shifttrace/ShiftAndTraceToolPanel.h"

#include "shifttrace/ShiftAndTraceSelection.h"
#include "shifttrace/ShiftAndTraceTool.h"
#include "shifttrace/ShiftAndTraceToolUtils.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QIcon>
#include <QLabel>
#include <QSignalBlocker>
#include <QToolButton>

#include <cmath>
#include <vector>

using AT_ShiftAndTraceUtil::PositionData;
using AT_ShiftAndTraceUtil::ShiftAndTraceAttr;

namespace {

QString translated(char const *text)
{
    return QCoreApplication::translate("Shift and Trace", text);
}

// Each change a refresh makes is made with the widget's signals blocked; QSignalBlocker gives the
// previous blocked state back when it goes.
void setChecked(QAbstractButton *button, bool checked)
{
    if (!button)
        return;
    QSignalBlocker blocker(button);
    button->setChecked(checked);
}

void setEnabled(QWidget *widget, bool enabled)
{
    if (!widget)
        return;
    QSignalBlocker blocker(widget);
    widget->setEnabled(enabled);
}

bool isChecked(QAbstractButton const *button)
{
    return button && button->isChecked();
}

SC_SceneCommon *sceneOf(MO_ElementModule const *module)
{
    return module ? module->sceneCommon() : nullptr;
}

// Null for a module in no scene, or in a scene without services: the scope is then inert.
CO_CommandManager *commandManagerOf(MO_ElementModule const *module)
{
    SC_SceneCommon *scene = sceneOf(module);
    return scene ? scene->commandManager() : nullptr;
}

double currentFrameOf(SC_CurrentFrameInterface const &frames, MO_ElementModule const *module)
{
    return frames.currentFrame(sceneOf(module));
}

std::vector<MO_ElementModule *> selectedModules()
{
    std::vector<MO_ElementModule *> modules;
    ShiftAndTraceToolUtils::selectedElementModules(modules);
    return modules;
}

// Stores `data` as the shift of the drawing that `module` exposes at `frame`, making the attribute
// if it has none. Nothing without such a drawing. The host holds drawings in memory, so the look-up
// is also the load.
void writePosition(PositionData const &data, MO_ElementModule *module, int frame)
{
    ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::shiftAndTraceFor(module);
    if (!attr)
        attr = AT_ShiftAndTraceUtil::addShiftAndTrace(module);
    if (!attr)
        return;
    OC_DrawingPtr const drawing = module->oglDrawing(MO_FrameKey(frame).frame());
    if (!drawing.drawing())
        return;
    CA_CelKey const key = drawing->celKey();
    if (key.isValid())
        attr->setPositionFor(key, data);
}

// The selected shifted elements, and the command manager of the first one's scene; null when there
// is none or no such element.
CO_CommandManager *selectedShiftedModules(std::vector<MO_ElementModule *> &modules)
{
    ShiftAndTraceToolUtils::selectedShiftedElementModules(modules);
    return modules.empty() ? nullptr : commandManagerOf(modules.front());
}

// Marks the modules' shifts changed, each once, and has the views and the panel refreshed.
void dirtyAndRefresh(std::vector<MO_ElementModule *> const &modules)
{
    for (MO_ElementModule *module : modules)
        if (ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::addShiftAndTrace(module))
            attr->makeDirty();
    ShiftAndTraceTool::responder()->refreshViews();
}

} // namespace

void ElementModuleVisitor::visit(MO_ElementModule &module)
{
    if (ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::shiftAndTraceFor(&module))
        attr->makeDirty();
}

struct ShiftAndTraceToolPanel::Impl {
    Impl(ShiftAndTraceToolPanel *owner, QString folder) : panel(owner), resourceFolder(std::move(folder)) {}

    // The widgets the panel disables while Shift and Trace is off: the six editors, the display
    // switches, add cross-hair and the peg position.
    std::vector<QWidget *> panelControls;
    ShiftAndTraceToolPanel *panel;  // the owner
    QString resourceFolder;
    QWidget *content = nullptr;     // the form's widget tree; owned by the receiver

    // The widgets of the form; owned by `content`. Null where the form lacks them.
    UI_DoubleEditor *positionX = nullptr;
    UI_DoubleEditor *positionY = nullptr;
    UI_DoubleEditor *pivotX = nullptr;
    UI_DoubleEditor *pivotY = nullptr;
    UI_DoubleEditor *scaleX = nullptr;   // scaleX and scaleY alike
    UI_DoubleEditor *rotation = nullptr;
    QToolButton *enableShiftAndTrace = nullptr;
    QToolButton *clearAllShifts = nullptr;
    QToolButton *clearCurrentShift = nullptr;
    QToolButton *showManipulator = nullptr;
    QToolButton *showPegs = nullptr;
    QToolButton *showOutline = nullptr;
    QToolButton *showCrossHair = nullptr;
    QToolButton *addCrossHair = nullptr;
    QToolButton *removeCrossHair = nullptr;
    QLabel *selectedNames = nullptr;
    QComboBox *pegPosition = nullptr;

    // True while the panel itself sets the editors: their valueChanged must not write a shift.
    bool editsBlocked = false;
    bool editorsFound = false;  // = the form has the six editors; else the panel stays unconnected

    template <class W>
    W *find(char const *name) const
    {
        return content ? content->findChild<W *>(QLatin1String(name)) : nullptr;
    }
    UI_DoubleEditor *setupEditor(char const *name, double minimum, double maximum, double value);
    QToolButton *setupToolButton(char const *name, QString const &icon, int size);
    template <class Signal>
    void connectControl(QWidget *widget, Signal signal, void (ShiftAndTraceToolPanel::*slot)());

    void connectWidgets();
    void setEditors(PositionData const &data);
    PositionData editedData() const;
    void update();
    void showSelection();
};

UI_DoubleEditor *ShiftAndTraceToolPanel::Impl::setupEditor(char const *name, double minimum, double maximum, double value)
{
    auto *editor = find<UI_DoubleEditor>(name);
    editor->setMinimum(minimum);
    editor->setMaximum(maximum);
    editor->setValue(value);
    editor->setDecimals(3);
    editor->setStep(0.01);
    panelControls.push_back(editor);
    connect(editor, &UI_DoubleEditor::valueChanged, panel, &ShiftAndTraceToolPanel::valueChanged);
    return editor;
}

// A tool button with its icon blended on the button's own background, `size` pixels square.
QToolButton *ShiftAndTraceToolPanel::Impl::setupToolButton(char const *name, QString const &icon, int size)
{
    auto *button = find<QToolButton>(name);
    if (!button)
        return nullptr;
    QColor const background = button->palette().color(button->backgroundRole());
    QIcon const blended = WID_IconManager::instance().addBlendedIcon(icon, background);
    button->setIcon(blended);
    button->setIconSize(blended.actualSize(QSize(size, size)));
    button->setAutoRaise(true);
    button->setFixedSize(size, size);
    return button;
}

template <class Signal>
void ShiftAndTraceToolPanel::Impl::connectControl(QWidget *widget, Signal signal, void (ShiftAndTraceToolPanel::*slot)())
{
    if (!widget)
        return;
    connect(static_cast<typename QtPrivate::FunctionPointer<Signal>::Object *>(widget), signal, panel, slot);
}

void ShiftAndTraceToolPanel::Impl::setEditors(PositionData const &data)
{
    editsBlocked = true;
    positionX->setValue(data.positionX);
    positionY->setValue(data.positionY);
    pivotX->setValue(data.pivotX);
    pivotY->setValue(data.pivotY);
    scaleX->setValue(data.scaleX);  // a non-uniform scale shows its x factor
    rotation->setValue(data.rotation);
    editsBlocked = false;
}

PositionData ShiftAndTraceToolPanel::Impl::editedData() const
{
    PositionData data;
    data.rotation = rotation->value();
    data.pivotX = pivotX->value();
    data.pivotY = pivotY->value();
    data.scaleX = scaleX->value();
    data.scaleY = scaleX->value();  // the panel sets uniform scales only
    data.positionX = positionX->value();
    data.positionY = positionY->value();
    return data;
}

// The refresh: every widget from the switches, then the caption and the editors from the selection.
void ShiftAndTraceToolPanel::Impl::update()
{
    // Careful: the receiver's widget tree owns the editors and may go first; contentWidget() reads
    // null from then on.
    if (!editorsFound || !panel->contentWidget())
        return;
    setEditors(PositionData());

    ShiftAndTraceToolResponder *responder = ShiftAndTraceTool::responder();
    bool const on = AT_ShiftAndTraceUtil::shiftAndTraceEnabled();
    if (pegPosition) {
        QSignalBlocker blocker(pegPosition);
        pegPosition->setCurrentIndex(int(AT_ShiftAndTraceUtil::shiftAndTracePegPosition()));
    }
    setChecked(showManipulator, responder->isShowManipulator());
    setChecked(showPegs, AT_ShiftAndTraceUtil::shiftAndTraceShowPegs());
    setChecked(showOutline, responder->isShowOutline());
    setEnabled(pegPosition, isChecked(showPegs));
    setChecked(addCrossHair, responder->isAddCrossHairMode());
    setChecked(showCrossHair, AT_ShiftAndTraceUtil::shiftAndTraceShowCrossHair());
    setChecked(enableShiftAndTrace, on);

    // Careful: this overrides what the line above gave the peg position, on purpose: the combo box
    // stays usable while the pegs are hidden, so that their place can be chosen before they show.
    for (QWidget *widget : panelControls)
        setEnabled(widget, on);
    setEnabled(removeCrossHair, on && !AT_ShiftAndTraceUtil::crossHairList().empty());
    bool const anySelected = hasShiftAndTraceDrawingsSelected();
    setEnabled(clearAllShifts, on && anySelected);
    setEnabled(clearCurrentShift, on && anySelected);

    if (!on) {
        if (selectedNames)
            selectedNames->hide();
        return;
    }
    if (selectedNames)
        selectedNames->show();
    showSelection();
}

// The caption and the editors of the first drawing of the Shift and Trace selection, validated at
// the current frame.
void ShiftAndTraceToolPanel::Impl::showSelection()
{
    SC_CurrentFrameInterface *frames = PLUG_Services::getCurrentFrameInterface();
    if (!frames)
        return;
    std::vector<MO_ElementModule *> const modules = selectedModules();
    ShiftAndTraceSelection &selection = ShiftAndTraceSelection::instance();
    if (!modules.empty())
        selection.validate(int(currentFrameOf(*frames, modules.back())));

    auto const &elements = selection.elements();
    MO_ElementModule *module = elements.empty() ? nullptr : elements.begin()->module.get();
    QString caption = translated("No Shifted Drawing Selected");
    if (!modules.empty() && module) {
        ShiftAndTraceSelection::SelectionElement const &first = *elements.begin();
        caption = elements.size() == 1
                      ? module->instanceName() + QStringLiteral(":") + CA_CelKeyMgr::timing(first.celKey)
                      : translated("Multiple Selection");
        PositionData data;
        AT_ShiftAndTraceUtil::renderingOffsetForFrame(module, first.frame, data);
        setEditors(data);
    }
    if (selectedNames) {
        QSignalBlocker blocker(selectedNames);
        selectedNames->setText(caption);
    }
}

// The buttons' and the combo box's gestures, and every signal that refreshes the panel.
void ShiftAndTraceToolPanel::Impl::connectWidgets()
{
    // The display switches, add cross-hair and the peg position go off with Shift and Trace.
    auto control = [this](QWidget *widget) {
        if (widget)
            panelControls.push_back(widget);
    };
    connectControl(showCrossHair, &QToolButton::clicked, &ShiftAndTraceToolPanel::onShowCrossHairChanged);
    control(showCrossHair);
    connectControl(addCrossHair, &QToolButton::clicked, &ShiftAndTraceToolPanel::onAddCrossHairChanged);
    control(addCrossHair);
    connectControl(removeCrossHair, &QToolButton::clicked, &ShiftAndTraceToolPanel::onRemoveCrossHairClicked);
    connectControl(showManipulator, &QToolButton::clicked, &ShiftAndTraceToolPanel::onShowManipulatorChanged);
    control(showManipulator);
    connectControl(showPegs, &QToolButton::clicked, &ShiftAndTraceToolPanel::onShowPegsChanged);
    control(showPegs);
    connectControl(showOutline, &QToolButton::clicked, &ShiftAndTraceToolPanel::onShowOutlineChanged);
    control(showOutline);
    if (pegPosition) {
        connect(pegPosition, QOverload<int>::of(&QComboBox::activated), panel, &ShiftAndTraceToolPanel::onPegPositionChanged);
        control(pegPosition);
    }
    connectControl(clearAllShifts, &QToolButton::clicked, &ShiftAndTraceToolPanel::onClearAllShifts);
    connectControl(clearCurrentShift, &QToolButton::clicked, &ShiftAndTraceToolPanel::onClearCurrentShift);
    connectControl(enableShiftAndTrace, &QToolButton::clicked, &ShiftAndTraceToolPanel::onShiftAndTraceEnableCheckboxChanged);

    connect(ShiftAndTraceTool::responder(), &ShiftAndTraceToolResponder::onShiftChange, panel,
            &ShiftAndTraceToolPanel::onSelectionChanged);
    connect(AT_ShiftAndTraceUtil::ShiftAndTraceStateManager::instance(),
            &AT_ShiftAndTraceUtil::ShiftAndTraceStateManager::onShiftAndTraceEnabledChanged, panel,
            &ShiftAndTraceToolPanel::onShiftAndTraceEnableChanged);
    if (SC_SessionContext *session = PLUG_Services::getSessionContext())
        if (TUSceneChangeManager *changes = session->changeManager()) {
            connect(changes, &TUSceneChangeManager::nodesChanged, panel, &ShiftAndTraceToolPanel::onSelectionChanged);
            connect(changes, &TUSceneChangeManager::selectionChanged, panel, &ShiftAndTraceToolPanel::onSelectionChanged);
            connect(changes, &TUSceneChangeManager::currentFrameChanged, panel, &ShiftAndTraceToolPanel::onSelectionChanged);
        }
}

ShiftAndTraceToolPanel::ShiftAndTraceToolPanel(TP_ToolPropertiesReceiver *receiver, QString resourceFolder)
    : TP_ToolPropertiesPanel(receiver), d_(std::make_unique<Impl>(this, std::move(resourceFolder)))
{
}

ShiftAndTraceToolPanel::~ShiftAndTraceToolPanel() = default;

void ShiftAndTraceToolPanel::load_internal()
{
    Impl &d = *d_;
    d.content = createContentWidget(d.resourceFolder + QStringLiteral("/shiftTraceToolPanel.ui"));

    d.positionX = d.find<UI_DoubleEditor>("position_x");
    d.positionY = d.find<UI_DoubleEditor>("position_y");
    d.pivotX = d.find<UI_DoubleEditor>("pivot_x");
    d.pivotY = d.find<UI_DoubleEditor>("pivot_y");
    d.scaleX = d.find<UI_DoubleEditor>("scale_x");
    d.rotation = d.find<UI_DoubleEditor>("rotation");
    // Every later step reads the editors: a form without them (or no form at all, when the file
    // cannot be read) leaves the panel empty and unconnected.
    d.editorsFound = d.positionX && d.positionY && d.pivotX && d.pivotY && d.scaleX && d.rotation;
    if (!d.editorsFound)
        return;
    QWidget::setTabOrder(d.positionX->tabWidget(), d.positionY->tabWidget());
    QWidget::setTabOrder(d.positionY->tabWidget(), d.scaleX->tabWidget());
    QWidget::setTabOrder(d.scaleX->tabWidget(), d.rotation->tabWidget());
    QWidget::setTabOrder(d.rotation->tabWidget(), d.pivotX->tabWidget());
    QWidget::setTabOrder(d.pivotX->tabWidget(), d.pivotY->tabWidget());

    d.setupEditor("position_x", -1000.0, 1000.0, 0.0);
    d.setupEditor("position_y", -1000.0, 1000.0, 0.0);
    d.setupEditor("pivot_x", -1000.0, 1000.0, 0.0);
    d.setupEditor("pivot_y", -1000.0, 1000.0, 0.0);
    d.setupEditor("scale_x", 0.01, 100.0, 1.0);
    d.setupEditor("rotation", -360.0, 360.0, 0.0);

    int const size = int(std::lround(32.0 * UT_Screen::getMainScreen().scaleFactor()));
    QString const icons = QStringLiteral("icons/ShiftAndTrace/");
    d.enableShiftAndTrace = d.setupToolButton("enableShiftAndTrace", icons + QStringLiteral("shiftandtrace.svg"), size);
    d.clearAllShifts = d.setupToolButton("clearAllShifts", icons + QStringLiteral("clearallshifts.svg"), size);
    d.clearCurrentShift = d.setupToolButton("clearCurrentShift", icons + QStringLiteral("clearcurrentshift.svg"), size);
    d.showManipulator = d.setupToolButton("showManipulator", icons + QStringLiteral("showmanipulator.svg"), size);
    d.showPegs = d.setupToolButton("showPegs", icons + QStringLiteral("showpegs.svg"), size);
    d.showOutline = d.setupToolButton("showOutline", icons + QStringLiteral("showoutline.svg"), size);
    d.showCrossHair = d.setupToolButton("showCrossHair", icons + QStringLiteral("showcrosshair.svg"), size);
    d.addCrossHair = d.setupToolButton("addCrossHair", icons + QStringLiteral("addcrosshair.svg"), size);
    d.removeCrossHair = d.setupToolButton("removeCrossHair", icons + QStringLiteral("removecrosshair.svg"), size);
    d.selectedNames = d.find<QLabel>("selectedNames");
    d.pegPosition = d.find<QComboBox>("pegPosition");

    d.connectWidgets();
}

void ShiftAndTraceToolPanel::refresh_internal()
{
    d_->update();
}

void ShiftAndTraceToolPanel::onSelectionChanged()
{
    d_->update();
}

bool ShiftAndTraceToolPanel::hasShiftAndTraceDrawingsSelected()
{
    return !selectedModules().empty();
}

void ShiftAndTraceToolPanel::valueChanged()
{
    Impl &d = *d_;
    if (d.editsBlocked || !d.editorsFound || !contentWidget())
        return;
    PositionData const data = d.editedData();
    ShiftAndTraceSelection &selection = ShiftAndTraceSelection::instance();
    std::vector<MO_ElementModule *> written;
    if (selection.elements().empty()) {
        // Nothing picked yet: the drawings of the selected elements at the current frame.
        SC_CurrentFrameInterface *frames = PLUG_Services::getCurrentFrameInterface();
        if (!frames)
            return;
        std::vector<MO_ElementModule *> modules;
        ShiftAndTraceToolUtils::selectedElementModules(modules);
        if (modules.empty())
            return;
        CO_CommandAccumScope step(commandManagerOf(modules.front()), translated("Shift and Trace"));
        for (MO_ElementModule *module : modules)
            writePosition(data, module, int(currentFrameOf(*frames, module)));
        written = modules;
    } else {
        for (auto const &element : selection.elements())
            if (MO_ElementModule *module = element.module.get())
                written.push_back(module);
        if (written.empty())
            return;
        CO_CommandAccumScope step(commandManagerOf(written.front()), translated("Shift and Trace"));
        for (auto const &element : selection.elements())
            if (MO_ElementModule *module = element.module.get())
                writePosition(data, module, element.frame);
    }
    dirtyAndRefresh(written);
}

void ShiftAndTraceToolPanel::onClearAllShiftsImpl()
{
    std::vector<MO_ElementModule *> modules;
    CO_CommandManager *manager = selectedShiftedModules(modules);
    if (!manager)
        return;
    CO_CommandAccumScope step(manager, translated("Clear all Shift and Trace Positions"));
    for (MO_ElementModule *module : modules)
        AT_ShiftAndTraceUtil::removeShiftAndTrace(module);
    if (SC_SceneCommon *last = sceneOf(modules.back()))
        if (TUSceneChangeManager *changes = last->changeManager())
            changes->notify();
}

void ShiftAndTraceToolPanel::onClearCurrentShiftImpl()
{
    SC_CurrentFrameInterface *frames = PLUG_Services::getCurrentFrameInterface();
    if (!frames)
        return;
    std::vector<MO_ElementModule *> modules;
    CO_CommandManager *manager = selectedShiftedModules(modules);
    if (!manager)
        return;
    CO_CommandAccumScope step(manager, translated("Clear Shift and Trace Positions"));
    // "Current" is the drawings of the Shift and Trace selection, else those of the selected
    // shifted elements at the current frame.
    bool cleared = false;
    for (auto const &element : ShiftAndTraceSelection::instance().elements()) {
        MO_ElementModule *module = element.module.get();
        ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::shiftAndTraceFor(module);
        if (!attr)
            continue;
        OC_DrawingPtr const drawing = module->oglDrawing(element.frame);
        if (drawing.drawing()) {
            attr->clearPositionFor(drawing->celKey());
            cleared = true;
        }
    }
    if (!cleared)
        for (MO_ElementModule *module : modules) {
            ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::shiftAndTraceFor(module);
            OC_DrawingPtr const drawing = attr ? module->oglDrawing(currentFrameOf(*frames, module)) : OC_DrawingPtr();
            if (drawing.drawing())
                attr->clearPositionFor(drawing->celKey());
        }
    ShiftAndTraceTool::responder()->refreshViews();
}

void ShiftAndTraceToolPanel::onShiftAndTraceEnableChanged()
{
    if (SC_EditionStackInterface *stack = PLUG_Services::getEditionStackInterface())
        if (TUScene *scene = stack->currentScene()) {
            ElementModuleVisitor visitor;
            scene->getRootGroup()->acceptModules(visitor);
        }
    if (SC_SessionContext *session = PLUG_Services::getSessionContext())
        if (TUSceneChangeManager *changes = session->changeManager()) {
            changes->emitSceneChanged();
            changes->emitCurrentFrameChanged();
            changes->notify();
            changes->notifyInteractive();
        }
    d_->update();
}

void ShiftAndTraceToolPanel::onShiftAndTraceEnableCheckboxChanged()
{
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(isChecked(d_->enableShiftAndTrace));
}

void ShiftAndTraceToolPanel::onClearCurrentShift()
{
    onClearCurrentShiftImpl();
}

void ShiftAndTraceToolPanel::onClearAllShifts()
{
    onClearAllShiftsImpl();
}

void ShiftAndTraceToolPanel::onShowManipulatorChanged()
{
    ShiftAndTraceToolResponder *responder = ShiftAndTraceTool::responder();
    if (isChecked(d_->showManipulator) != responder->isShowManipulator())
        responder->onActionToggleShowManipulator();
}

void ShiftAndTraceToolPanel::onShowOutlineChanged()
{
    ShiftAndTraceToolResponder *responder = ShiftAndTraceTool::responder();
    if (isChecked(d_->showOutline) != responder->isShowOutline())
        responder->onActionToggleShowOutline();
}

void ShiftAndTraceToolPanel::onShowPegsChanged()
{
    ShiftAndTraceTool::responder()->setShowPegs(isChecked(d_->showPegs));
}

void ShiftAndTraceToolPanel::onShowCrossHairChanged()
{
    AT_ShiftAndTraceUtil::setShiftAndTraceShowCrossHair(isChecked(d_->showCrossHair));
    ShiftAndTraceTool::responder()->refreshViews();
}

void ShiftAndTraceToolPanel::onAddCrossHairChanged()
{
    ShiftAndTraceToolResponder *responder = ShiftAndTraceTool::responder();
    responder->setIsAddCrossHairMode(isChecked(d_->addCrossHair));
    responder->refreshViews();
}

void ShiftAndTraceToolPanel::onRemoveCrossHairClicked()
{
    AT_ShiftAndTraceUtil::crossHairList().clear();
    ShiftAndTraceTool::responder()->refreshViews();
}

void ShiftAndTraceToolPanel::onPegPositionChanged(int index)
{
    ShiftAndTraceTool::responder()->onActionSetPegPosition(index);
}

ShiftAndTraceToolPanelFactory::ShiftAndTraceToolPanelFactory(QString resourceFolder)
    : resourceFolder_(std::move(resourceFolder))
{
}

void ShiftAndTraceToolPanelFactory::create(TP_ToolPropertiesReceiver *receiver)
{
    auto *panel = new ShiftAndTraceToolPanel(receiver, resourceFolder_);  // the receiver takes it
    panel->load();
    registerPanelForTool(receiver, ShiftAndTraceTool::Id, panel);
    addPanelInPlaceholder(receiver, panel);
}
