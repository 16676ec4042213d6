#include "iktool/IKToolPanel.h"

#include "iktool/IKTool.h"
#include "iktool/IKToolResponder.h"
#include "iktool/IKToolSettings.h"

#include "bridge/JointDefinition.h"
#include "bridge/SkeletonExtraction.h"
#include "skeleton/IKMetaData.h"
#include "skeleton/JointAttr.h"
#include "skeleton/SkeletonDef.h"

#include <QCheckBox>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>

#include <algorithm>
#include <cstdio>
#include <set>
#include <vector>

namespace {

// A gain as the spin boxes and sliders show it: tenths, rounded half up.
int toTenths(double gain)
{
    return static_cast<int>(gain * 10.0 + 0.5);
}

// A curve cannot be a root.
bool canBeRoot(MO_Module *module)
{
    return module && module->typeKeyword() != CurveModule::Keyword();
}

// Each change a refresh makes is made with the widget's signals blocked; QSignalBlocker gives the
// previous blocked state back when it goes.
void setChecked(QAbstractButton *button, bool checked)
{
    QSignalBlocker blocker(button);
    button->setChecked(checked);
}

void setEnabled(QWidget *widget, bool enabled)
{
    QSignalBlocker blocker(widget);
    widget->setEnabled(enabled);
}

void setShown(QWidget *widget, bool shown)
{
    QSignalBlocker blocker(widget);
    widget->setVisible(shown);
}

template <class W>
void setValue(W *widget, int value)
{
    QSignalBlocker blocker(widget);
    widget->setValue(value);
}

template <class W>
void setText(W *widget, QString const &text)
{
    QSignalBlocker blocker(widget);
    widget->setText(text);
}

// The values of the joint properties as the panel shows them, gains in tenths.
struct JointValues {
    bool active = false;
    bool holdOrientation = false;
    bool holdPosition = false;
    bool useActualPosition = false;
    bool blocker = false;
    int weight = 10;
    int holdPositionGain = 10;
    int holdOrientationGain = 10;

    static JointValues of(JointAttr const &attr)
    {
        JointValues v;
        v.active = attr.activeAttr()->localValue();
        v.holdOrientation = attr.holdOrientationAttr()->localValue();
        v.holdPosition = attr.holdPositionAttr()->localValue();
        v.useActualPosition = attr.useActualPositionAttr()->localValue();
        v.blocker = attr.isBlocker()->localValue();
        v.weight = toTenths(attr.weightAttr()->localValue());
        v.holdPositionGain = toTenths(attr.holdPositionGainAttr()->localValue());
        v.holdOrientationGain = toTenths(attr.holdOrientationGainAttr()->localValue());
        return v;
    }
};

// Where the selected joints differ from the first one.
struct JointDifferences {
    bool active = false;
    bool holdOrientation = false;
    bool holdPosition = false;
    bool useActualPosition = false;
    bool blocker = false;
    bool weight = false;
    bool holdPositionGain = false;
    bool holdOrientationGain = false;

    void add(JointValues const &first, JointValues const &other)
    {
        active |= first.active != other.active;
        holdOrientation |= first.holdOrientation != other.holdOrientation;
        holdPosition |= first.holdPosition != other.holdPosition;
        useActualPosition |= first.useActualPosition != other.useActualPosition;
        blocker |= first.blocker != other.blocker;
        weight |= first.weight != other.weight;
        holdPositionGain |= first.holdPositionGain != other.holdPositionGain;
        holdOrientationGain |= first.holdOrientationGain != other.holdOrientationGain;
    }
};

} // namespace

struct IKToolPanel::Impl {
    explicit Impl(IKToolPanel *owner, QString folder) : panel(owner), resourceFolder(std::move(folder)) {}

    IKToolPanel *panel;    // the owner
    QWidget *content = nullptr;  // the form's widget tree; owned by the receiver
    QString resourceFolder;

    // The widgets of the form; owned by `content`. Null until load_internal finds them.
    QToolButton *magicSetup = nullptr;
    QToolButton *magicDefineRoot = nullptr;
    QToolButton *magicDeleteRoot = nullptr;
    QToolButton *buttonShowHideJointProperties = nullptr;
    QToolButton *resetAllConstraints = nullptr;
    QToolButton *resetAllSelected = nullptr;
    QToolButton *jointSetupMode = nullptr;
    QToolButton *manipulationMode = nullptr;
    QToolButton *fromFrameButton = nullptr;
    QToolButton *toFrameButton = nullptr;
    QWidget *interpolationGroup = nullptr;
    QToolButton *clearKeyframes = nullptr;
    QToolButton *interpolateButton = nullptr;
    QToolButton *existingKeyFramesButton = nullptr;
    QToolButton *interpolateUseCurrentFrame = nullptr;
    QToolButton *enableRootTranslation = nullptr;
    QLineEdit *fromFrame = nullptr;
    QLineEdit *toFrame = nullptr;
    QToolButton *interpolateAltogether = nullptr;
    QToolButton *interpolationMoveAll = nullptr;
    QToolButton *interpolateCubic = nullptr;
    QToolButton *interpolateLinear = nullptr;
    QWidget *setupWizardGroup = nullptr;
    QToolButton *usePegButton = nullptr;
    QToolButton *useReadButton = nullptr;
    QToolButton *useDeformerButton = nullptr;
    QToolButton *jointDefineRoot = nullptr;
    QToolButton *jointDefineParticipates = nullptr;
    QLabel *skeletonNameLabel = nullptr;
    QLabel *maxIterationLabel = nullptr;
    QLabel *selectJointsInformation = nullptr;
    QSpinBox *maxIterations = nullptr;
    QSpinBox *enableRootTranslationGain = nullptr;
    QSlider *enableRootTranslationGainSlider = nullptr;
    QCheckBox *enableShadowPosing = nullptr;
    QToolButton *holdAngleCB = nullptr;
    QToolButton *holdPosCB = nullptr;
    QToolButton *activeCB = nullptr;
    QLabel *holdAngleMulti = nullptr;
    QLabel *holdPosMulti = nullptr;
    QLabel *activeMulti = nullptr;
    QSpinBox *holdAngleGain = nullptr;
    QSpinBox *holdPosGain = nullptr;
    QSpinBox *activeGain = nullptr;
    QSlider *holdAngleGainSlider = nullptr;
    QSlider *holdPosGainSlider = nullptr;
    QSlider *activeGainSlider = nullptr;
    QLabel *holdAngleGainMulti = nullptr;
    QLabel *holdPosGainMulti = nullptr;
    QLabel *activeGainMulti = nullptr;
    QToolButton *jointUseActualPosition = nullptr;
    QLabel *jointUseActualPositionMulti = nullptr;
    QToolButton *jointIsBlocker = nullptr;
    QLabel *jointIsBlockerMulti = nullptr;
    QWidget *jointPropertyContainer = nullptr;

    std::vector<QWidget *> toolWidgets;   // enabled with a root
    std::vector<QWidget *> jointWidgets;  // enabled with a root and selected joints

    bool complete = false;  // = every widget above was found

    template <class W>
    bool find(W *&widget, char const *name)
    {
        widget = content ? content->findChild<W *>(QLatin1String(name)) : nullptr;
        return widget != nullptr;
    }
    // A tool button with its icon: blended on the button's own background, sized for the button.
    bool findButton(QToolButton *&button, char const *name, QString const &icon)
    {
        if (!find(button, name))
            return false;
        QColor const background = button->palette().color(button->backgroundRole());
        QIcon const blended = WID_IconManager::instance().addBlendedIcon(icon, background);
        button->setIcon(blended);
        button->setIconSize(blended.actualSize(button->size(), QIcon::Normal, QIcon::On));
        button->setAutoRaise(true);
        return true;
    }
    bool findWidgets();

    MO_Module *root() const;
    std::vector<MO_Module *> selectedJoints(MO_Module *root) const;
    void refresh();
    void automaticGeneration();
    void assignRoot(bool fromMagicButton);
    void defineJoint();
    void applyToSelectedJoints(MO_Module *root, QObject *sender);
    void refreshSelectionCaption(MO_Module *root, std::vector<MO_Module *> const &joints);
    void refreshJointProperties(MO_Module *root, std::vector<MO_Module *> const &joints);
};

bool IKToolPanel::Impl::findWidgets()
{
    // Three groups, as the diagnostic line reports them: the buttons and groups of the panel, the
    // solver settings, and the joint properties.
    struct Group {
        bool complete = true;  // = every widget looked up so far was found
        void operator()(bool found) { complete = found && complete; }
    };
    Group need, needTool, needJoint;
    need(findButton(magicSetup, "magicSetup", QStringLiteral("icons/ikMagicSetup.png")));
    need(findButton(magicDefineRoot, "magicDefineRoot", QStringLiteral("icons/ikCreateRoot.png")));
    need(findButton(magicDeleteRoot, "magicDeleteRoot", QStringLiteral("icons/ikDeleteRoot.png")));
    need(find(buttonShowHideJointProperties, "buttonShowHideJointProperties"));
    need(findButton(resetAllConstraints, "resetAllConstraints", QStringLiteral("icons/ikResetAll.png")));
    need(findButton(resetAllSelected, "resetAllSelected", QStringLiteral("icons/ikResetAllSelected.png")));
    need(findButton(jointSetupMode, "jointSetupMode", QStringLiteral("icons/ikSetupMode.png")));
    need(findButton(manipulationMode, "manipulationMode", QStringLiteral("icons/ikBonemanipulationMode.png")));
    need(findButton(fromFrameButton, "fromFrameButton", QString()));
    need(findButton(toFrameButton, "toFrameButton", QString()));
    need(find(interpolationGroup, "interpolationGroup"));
    need(findButton(clearKeyframes, "clearKeyframes", QStringLiteral("icons/ikDeleteKeyframes.png")));
    need(findButton(interpolateButton, "interpolateButton", QStringLiteral("icons/ikInterpolate.png")));
    need(findButton(existingKeyFramesButton, "existingKeyFramesButton", QStringLiteral("icons/ikApplyToExistingKF.png")));
    need(findButton(interpolateUseCurrentFrame, "interpolateUseCurrentFrame", QStringLiteral("icons/ikCurrentFrame.png")));
    need(find(fromFrame, "fromFrame"));
    need(find(toFrame, "toFrame"));
    need(findButton(interpolateAltogether, "interpolateAltogether", QStringLiteral("icons/ikAltogether.png")));
    need(findButton(interpolationMoveAll, "interpolationMoveAll", QStringLiteral("icons/ikMoveAll.png")));
    need(findButton(interpolateCubic, "interpolateCubic", QStringLiteral("icons/ikCubic.png")));
    need(findButton(interpolateLinear, "interpolateLinear", QStringLiteral("icons/ikLinear.png")));
    need(find(setupWizardGroup, "setupWizardGroup"));
    need(findButton(usePegButton, "usePegButton", QStringLiteral("icons/ikUsePeg.png")));
    need(findButton(useReadButton, "useReadButton", QStringLiteral("icons/ikUseRead.png")));
    need(findButton(useDeformerButton, "useDeformerButton", QStringLiteral("icons/ikUseDeformer.png")));
    need(findButton(jointDefineRoot, "jointDefineRoot", QStringLiteral("icons/ikCreateRoot.png")));
    need(findButton(jointDefineParticipates, "jointDefineParticipates", QStringLiteral("icons/ikJointParticipates.png")));
    need(find(skeletonNameLabel, "skeletonNameLabel"));
    need(find(maxIterationLabel, "maxIterationLabel"));
    need(find(selectJointsInformation, "selectJointsInformation"));
    need(find(jointPropertyContainer, "jointPropertyContainer"));

    needTool(find(maxIterations, "maxIterations"));
    needTool(findButton(enableRootTranslation, "enableRootTranslation", QStringLiteral("icons/ikTranslateRoot.png")));
    needTool(find(enableRootTranslationGain, "enableRootTranslationGain"));
    needTool(find(enableRootTranslationGainSlider, "enableRootTranslationGainSlider"));
    needTool(find(enableShadowPosing, "enableShadowPosing"));

    needJoint(findButton(holdAngleCB, "holdAngleCB", QStringLiteral("icons/ikHoldOrientation.png")));
    needJoint(find(holdAngleGain, "holdAngleGain"));
    needJoint(find(holdAngleGainSlider, "holdAngleGainSlider"));
    needJoint(findButton(holdPosCB, "holdPosCB", QStringLiteral("icons/ikHoldPosition.png")));
    needJoint(find(holdPosGain, "holdPosGain"));
    needJoint(find(holdPosGainSlider, "holdPosGainSlider"));
    needJoint(findButton(activeCB, "activeCB", QStringLiteral("icons/ikMobility.png")));
    needJoint(find(activeGain, "activeGain"));
    needJoint(find(activeGainSlider, "activeGainSlider"));
    needJoint(findButton(jointUseActualPosition, "jointUseActualPosition", QStringLiteral("icons/ikUseActual.png")));
    needJoint(findButton(jointIsBlocker, "jointIsBlocker", QStringLiteral("icons/ikBlocker.png")));
    needJoint(find(holdAngleMulti, "holdAngleMulti"));
    needJoint(find(holdPosMulti, "holdPosMulti"));
    needJoint(find(activeMulti, "activeMulti"));
    needJoint(find(holdAngleGainMulti, "holdAngleGainMulti"));
    needJoint(find(holdPosGainMulti, "holdPosGainMulti"));
    needJoint(find(activeGainMulti, "activeGainMulti"));
    needJoint(find(jointUseActualPositionMulti, "jointUseActualPositionMulti"));
    needJoint(find(jointIsBlockerMulti, "jointIsBlockerMulti"));

    complete = need.complete && needTool.complete && needJoint.complete;
    if (!complete) {
        std::fputs("Something wrong in IK Tool panel initialization\n", stderr);
        std::fprintf(stderr, "%p %p %p %p %p %p %p %p %d %d %d\n", static_cast<void *>(magicSetup),
                     static_cast<void *>(magicDefineRoot), static_cast<void *>(magicDeleteRoot),
                     static_cast<void *>(buttonShowHideJointProperties), static_cast<void *>(resetAllConstraints),
                     static_cast<void *>(resetAllSelected), static_cast<void *>(jointSetupMode),
                     static_cast<void *>(manipulationMode), int(need.complete), int(needTool.complete),
                     int(needJoint.complete));
    }
    return complete;
}

// The root the panel works on: the settings' skeleton root, while it is still a root.
MO_Module *IKToolPanel::Impl::root() const
{
    MO_Module *root = IKToolSettings::instance().skeletonRoot();
    return IKToolUtil::isRoot(root) ? root : nullptr;
}

// The joints the panel's gestures and captions are about: the tool's selected joints if it has
// any, else the selected nodes below the root that are joints.
std::vector<MO_Module *> IKToolPanel::Impl::selectedJoints(MO_Module *root) const
{
    std::vector<MO_Module *> joints;
    if (IKToolSettings::SelectionJointSource *source = IKToolSettings::instance().jointSource()) {
        std::set<int> indices;
        source->selectedJoints(indices);
        if (!indices.empty()) {
            SkeletonDef &skeleton = source->skeleton();
            for (int index : indices) {  // ascending
                if (index < 0 || std::size_t(index) >= skeleton.size())
                    continue;
                if (MO_Module *module = skeleton[std::size_t(index)].module.get())
                    joints.push_back(module);
            }
            return joints;
        }
    }
    if (!root)
        return joints;
    for (MO_Module *module : IKToolUtil::selectedNodes(root))
        if (IKToolUtil::participates(module))
            joints.push_back(module);
    return joints;
}

void IKToolPanel::Impl::automaticGeneration()
{
    MO_Module *module = IKToolUtil::uniqueSelection();
    if (!module)
        return;
    MO_Module *root = IKToolUtil::skeletonFromModule(module);
    CO_CommandManager *manager = IKToolUtil::commandManagerForModule(module);
    if (!manager)
        return;
    CO_CommandAccumScope scope(manager, QStringLiteral("Automatic Skeleton Generation"));
    QSignalBlocker quiet(panel);
    if (!root)
        IKToolUtil::defineRoot(manager, module, true);
    root = IKToolUtil::skeletonFromModule(module);
    if (!root)
        return;
    SkeletonDef list;
    // Always at frame 0, whatever the scene's current frame.
    IKToolUtil::smartSkeletonFromModule(IKToolUtil::concreteModuleFromSelection(), list, 0.0);
    for (SkeletonJointDef const &joint : list) {
        MO_Module *jointModule = joint.module.get();
        if (jointModule && jointModule != root)
            IKToolUtil::setParticipation(manager, jointModule, true);
    }
    IKToolSettings::instance().setSkeletonRoot(root);
}

void IKToolPanel::Impl::assignRoot(bool fromMagicButton)
{
    MO_Module *module = IKToolUtil::uniqueSelection();
    if (!canBeRoot(module))
        return;
    CO_CommandManager *manager = IKToolUtil::commandManagerForModule(module);
    if (!manager)
        return;
    bool const wasRoot = IKToolUtil::isRoot(module);
    {
        CO_CommandAccumScope scope(manager, wasRoot ? QStringLiteral("Unassign Root") : QStringLiteral("Assign Root"));
        IKToolUtil::defineRoot(manager, module, !wasRoot);
    }
    if (fromMagicButton)
        IKToolSettings::instance().setToolMode(IKToolSettings::SetupMode);
    IKToolResponder::instance().onSelectionChanged();
    refresh();
}

void IKToolPanel::Impl::defineJoint()
{
    MO_Module *module = IKToolUtil::uniqueSelection();
    CO_CommandManager *manager = IKToolUtil::commandManagerForModule(module);
    if (!manager)
        return;
    bool const participated = IKToolUtil::participates(module);
    {
        CO_CommandAccumScope scope(manager, participated ? QStringLiteral("Undefine Joint") : QStringLiteral("Define Joint"));
        IKToolUtil::setParticipation(manager, module, !participated);
    }
    IKToolResponder::instance().onSelectionChanged();
    refresh();
}

// The gestures that need a root: settings and the joint attributes of the selected joints, in
// one undo step.
void IKToolPanel::Impl::applyToSelectedJoints(MO_Module *root, QObject *sender)
{
    IKToolSettings &settings = IKToolSettings::instance();
    std::vector<MO_Module *> const joints = selectedJoints(root);
    CO_CommandManager *manager = IKToolUtil::commandManagerForModule(root);
    if (!manager)
        return;
    QString name = QStringLiteral("IK Setting");
    if (sender == resetAllConstraints)
        name = QStringLiteral("Reset ALL IK Constraints");
    else if (sender == resetAllSelected)
        name = QStringLiteral("Reset ALL IK Constraints for Selected Joints");
    CO_CommandAccumScope scope(manager, name);
    QSignalBlocker quiet(panel);

    IKToolSettings::SelectionJointSource *source = settings.jointSource();
    // The same text on one attribute of every selected joint; a change that changes nothing
    // makes no command, which the manager drops.
    auto write = [&](auto attribute, QString const &text) {
        for (MO_Module *module : joints)
            if (JointAttr *attr = IKToolUtil::jointAttrForModule(module))
                manager->execute((attr->*attribute)()->setTextValue(0.0, text));
    };
    auto flag = [&](AT_BoolAttr *(JointAttr::*attribute)() const, bool on) {
        write(attribute, on ? QStringLiteral("true") : QStringLiteral("false"));
    };
    auto gain = [&](AT_DoubleAttr *(JointAttr::*attribute)() const, int tenths) {
        write(attribute, QString::number(tenths / 10.0, 'g', 6));
    };
    auto reset = [manager](std::vector<MO_Module *> const &modules) {
        for (MO_Module *module : modules)
            if (JointAttr *attr = IKToolUtil::jointAttrForModule(module))
                attr->resetDefaultValues(manager);
    };

    if (sender == fromFrameButton) {
        if (source) {
            settings.setFrameRange(SC_Frames::toInt(source->currentFrame()), settings.toFrame());
            refresh();
        }
    } else if (sender == toFrameButton) {
        if (source) {
            settings.setFrameRange(settings.fromFrame(), SC_Frames::toInt(source->currentFrame()));
            refresh();
        }
    } else if (sender == clearKeyframes) {
        if (source) {
            source->clearKeyframes();
            refresh();
        }
    } else if (sender == interpolateButton) {
        settings.setInterpolationEnabled(interpolateButton->isChecked());
    } else if (sender == interpolateUseCurrentFrame) {
        settings.setUseCurrentFrame(interpolateUseCurrentFrame->isChecked());
        refresh();
    } else if (sender == fromFrame || sender == toFrame) {
        bool fromOk = false, toOk = false;
        int const from = fromFrame->text().toInt(&fromOk, 10);
        int const to = toFrame->text().toInt(&toOk, 10);
        if (fromOk && toOk && SC_Frames::contains(from) && SC_Frames::contains(to))
            settings.setFrameRange(from, to);
        refresh();  // bad text, or a frame beyond the limits: the last good numbers come back
    } else if (sender == maxIterations) {
        settings.setMaxIterations(maxIterations->value());
    } else if (sender == enableRootTranslation) {
        settings.setEnableRootTranslation(enableRootTranslation->isChecked());
    } else if (sender == enableRootTranslationGain) {
        // A trace of the spin box's value, in tenths as it shows them (not the gain).
        std::printf("gain: %f\n", static_cast<double>(enableRootTranslationGain->value()));
        settings.setRootTranslationGain(enableRootTranslationGain->value() / 10.0);
    } else if (sender == enableRootTranslationGainSlider) {
        settings.setRootTranslationGain(enableRootTranslationGainSlider->value() / 10.0);
    } else if (sender == enableShadowPosing) {
        settings.setEnableShadowPosing(enableShadowPosing->isChecked());
    } else if (sender == activeCB) {
        flag(&JointAttr::activeAttr, activeCB->isChecked());
    } else if (sender == holdAngleCB) {
        flag(&JointAttr::holdOrientationAttr, holdAngleCB->isChecked());
    } else if (sender == holdPosCB) {
        flag(&JointAttr::holdPositionAttr, holdPosCB->isChecked());
    } else if (sender == jointUseActualPosition) {
        flag(&JointAttr::useActualPositionAttr, jointUseActualPosition->isChecked());
    } else if (sender == jointIsBlocker) {
        flag(&JointAttr::isBlocker, jointIsBlocker->isChecked());
    } else if (sender == activeGain || sender == activeGainSlider) {
        gain(&JointAttr::weightAttr, sender == activeGain ? activeGain->value() : activeGainSlider->value());
    } else if (sender == holdAngleGain || sender == holdAngleGainSlider) {
        gain(&JointAttr::holdOrientationGainAttr, sender == holdAngleGain ? holdAngleGain->value() : holdAngleGainSlider->value());
    } else if (sender == holdPosGain || sender == holdPosGainSlider) {
        gain(&JointAttr::holdPositionGainAttr, sender == holdPosGain ? holdPosGain->value() : holdPosGainSlider->value());
    } else if (sender == resetAllConstraints) {
        std::vector<MO_Module *> all;
        if (source)
            for (SkeletonJointDef const &joint : source->skeleton())
                if (MO_Module *module = joint.module.get())
                    if (std::find(all.begin(), all.end(), module) == all.end())
                        all.push_back(module);
        reset(all);
    } else if (sender == resetAllSelected) {
        reset(joints);
    }
    // magicDeleteRoot and existingKeyFramesButton have no action of their own.

    // Whatever the sender: the refresh that this signal gives shows the edited joints afresh.
    emit settings.settingsChanged();
}

void IKToolPanel::Impl::refreshSelectionCaption(MO_Module *root, std::vector<MO_Module *> const &joints)
{
    QString caption;
    if (!root || joints.empty()) {
        caption = QStringLiteral("No Joint Selected");
    } else if (joints.size() == 1) {
        caption = QStringLiteral("1 Joint Selected (%1)").arg(joints.front()->instanceName());
    } else {
        // Names joined by ", ", broken after a ", " once a line grows past 31 characters; a broken
        // list starts on its own line.
        QString names;
        QString separator;
        int count = 0;
        for (std::size_t i = 0; i < joints.size(); ++i) {
            if (i > 0) {
                names += QStringLiteral(", ");
                count += 2;
                if (count > 31) {
                    names += QLatin1Char('\n');
                    count = 0;
                    separator = QStringLiteral("\n");
                }
            }
            QString const &name = joints[i]->instanceName();
            names += name;
            count += name.size();
        }
        caption = QStringLiteral("%1 Joints Selected %2(%3)").arg(joints.size()).arg(separator, names);
    }
    setText(selectJointsInformation, caption);
}

void IKToolPanel::Impl::refreshJointProperties(MO_Module *root, std::vector<MO_Module *> const &joints)
{
    QLabel *const multis[] = {holdAngleMulti,     holdPosMulti,     activeMulti,
                              holdAngleGainMulti, holdPosGainMulti, activeGainMulti,
                              jointUseActualPositionMulti, jointIsBlockerMulti};
    IKToolSettings::SelectionJointSource *source = IKToolSettings::instance().jointSource();
    MO_Module *unique = IKToolUtil::uniqueSelection();
    if (!root) {
        setText(skeletonNameLabel, QStringLiteral("** No Skeleton Selected **"));
        setEnabled(magicSetup, unique != nullptr);
        for (QLabel *label : multis)
            setEnabled(label, false);
    } else {
        setText(skeletonNameLabel, root->instanceName());
        std::size_t const jointCount = source ? source->skeleton().size() : 0;
        setEnabled(magicSetup, unique != nullptr && jointCount < 2);

        JointValues shown;
        JointDifferences differ;
        bool first = true;
        for (MO_Module *module : joints) {
            JointAttr *attr = IKToolUtil::jointAttrForModule(module);
            if (!attr || !IKToolUtil::participates(module))
                continue;
            JointValues const values = JointValues::of(*attr);
            if (first)
                shown = values;
            else
                differ.add(shown, values);
            first = false;
        }
        setChecked(activeCB, shown.active);
        setChecked(holdAngleCB, shown.holdOrientation);
        setChecked(holdPosCB, shown.holdPosition);
        setChecked(jointUseActualPosition, shown.useActualPosition);
        setChecked(jointIsBlocker, shown.blocker);
        setValue(activeGain, shown.weight);
        setValue(activeGainSlider, shown.weight);
        setValue(holdPosGain, shown.holdPositionGain);
        setValue(holdPosGainSlider, shown.holdPositionGain);
        setValue(holdAngleGain, shown.holdOrientationGain);
        setValue(holdAngleGainSlider, shown.holdOrientationGain);
        setEnabled(holdAngleMulti, differ.holdOrientation);
        setEnabled(holdPosMulti, differ.holdPosition);
        setEnabled(activeMulti, differ.active);
        setEnabled(holdAngleGainMulti, differ.holdOrientationGain);
        setEnabled(holdPosGainMulti, differ.holdPositionGain);
        setEnabled(activeGainMulti, differ.weight);
        setEnabled(jointUseActualPositionMulti, differ.useActualPosition);
        setEnabled(jointIsBlockerMulti, differ.blocker);
    }

    for (QWidget *widget : toolWidgets)
        setEnabled(widget, root != nullptr);
    for (QWidget *widget : jointWidgets)
        setEnabled(widget, root != nullptr && !joints.empty());
    // Each gain goes with its flag, as shown.
    setEnabled(activeGain, activeCB->isChecked());
    setEnabled(activeGainSlider, activeCB->isChecked());
    setEnabled(holdPosGain, holdPosCB->isChecked());
    setEnabled(holdPosGainSlider, holdPosCB->isChecked());
    setEnabled(holdAngleGain, holdAngleCB->isChecked());
    setEnabled(holdAngleGainSlider, holdAngleCB->isChecked());
}

void IKToolPanel::Impl::refresh()
{
    if (!complete)
        return;
    IKToolSettings &settings = IKToolSettings::instance();
    int const mode = settings.toolMode();
    MO_Module *const root = this->root();
    MO_Module *const unique = IKToolUtil::uniqueSelection();

    setChecked(jointSetupMode, mode == IKToolSettings::SetupMode);
    setChecked(manipulationMode, mode == IKToolSettings::ManipulationMode);
    setEnabled(resetAllConstraints, root != nullptr);
    setEnabled(resetAllSelected, root != nullptr);

    if (mode != IKToolSettings::SetupMode) {
        setShown(interpolationGroup, true);
        bool const interpolation = settings.interpolationEnabled();
        bool const useCurrent = settings.useCurrentFrame();
        setChecked(interpolateButton, interpolation);
        setEnabled(existingKeyFramesButton, interpolation);
        setEnabled(fromFrame, interpolation);
        setEnabled(toFrame, interpolation && !useCurrent);
        setEnabled(fromFrameButton, interpolation);
        setEnabled(toFrameButton, interpolation && !useCurrent);
        setEnabled(interpolateUseCurrentFrame, interpolation);
        if (interpolation) {
            setText(fromFrame, QString::number(settings.fromFrame()));
            setText(toFrame, QString::number(settings.toFrame()));
            setChecked(interpolateUseCurrentFrame, useCurrent);
        }
        IKToolSettings::SelectionJointSource *source = settings.jointSource();
        setEnabled(clearKeyframes, interpolation && source && source->canClearKeyframes());
        int const type = settings.interpolationType();
        QToolButton *const types[] = {interpolateAltogether, interpolationMoveAll, interpolateLinear, interpolateCubic};
        for (int t = 0; t < 4; ++t) {
            setEnabled(types[t], interpolation);
            setChecked(types[t], type == t);
        }
        setShown(setupWizardGroup, false);
        if (root) {
            setEnabled(magicDefineRoot, false);
        } else {
            setEnabled(magicDefineRoot, canBeRoot(unique));
            setEnabled(magicSetup, true);
        }
    } else {
        setShown(interpolationGroup, false);
        setEnabled(magicSetup, false);
        setEnabled(magicDefineRoot, false);
        setEnabled(magicDeleteRoot, false);
        setChecked(usePegButton, settings.usePeg());
        setChecked(useReadButton, settings.useRead());
        setChecked(useDeformerButton, settings.useDeformer());
        if (root && unique == root) {
            setShown(jointDefineRoot, true);
            setChecked(jointDefineRoot, true);
            setEnabled(jointDefineRoot, true);
            setShown(jointDefineParticipates, false);
            setEnabled(jointDefineParticipates, false);
        } else if (root) {
            setChecked(jointDefineRoot, false);
            setShown(jointDefineRoot, false);
            setEnabled(jointDefineRoot, false);
            setChecked(jointDefineParticipates, IKToolUtil::participates(unique));
            setShown(jointDefineParticipates, true);
            setEnabled(jointDefineParticipates, unique != nullptr);
        } else {
            setShown(jointDefineRoot, true);
            setChecked(jointDefineRoot, false);
            setEnabled(jointDefineRoot, canBeRoot(unique));
            setShown(jointDefineParticipates, false);
            setEnabled(jointDefineParticipates, false);
        }
        setShown(setupWizardGroup, true);
    }

    std::vector<MO_Module *> const joints = selectedJoints(root);
    refreshSelectionCaption(root, joints);
    refreshJointProperties(root, joints);

    setValue(maxIterations, settings.maxIterations());
    setValue(enableRootTranslationGain, toTenths(settings.rootTranslationGain()));
    setValue(enableRootTranslationGainSlider, toTenths(settings.rootTranslationGain()));
    setChecked(enableRootTranslation, settings.enableRootTranslation());
    setChecked(enableShadowPosing, settings.enableShadowPosing());
}

IKToolPanel::IKToolPanel(TP_ToolPropertiesReceiver *receiver, QString resourceFolder)
    : TP_ToolPropertiesPanel(receiver), d_(std::make_unique<Impl>(this, std::move(resourceFolder)))
{
}

IKToolPanel::~IKToolPanel() = default;

bool IKToolPanel::isComplete() const
{
    return d_->complete;
}

void IKToolPanel::load_internal()
{
    Impl &d = *d_;
    d.content = createContentWidget(d.resourceFolder + QStringLiteral("/ikToolProperties.ui"));
    if (!d.findWidgets())
        return;

    // Their settings stay in force, but are not for the user to change here.
    d.maxIterations->hide();
    d.maxIterationLabel->hide();
    d.enableShadowPosing->hide();
    d.toolWidgets = {d.maxIterations, d.enableRootTranslation, d.enableRootTranslationGain,
                     d.enableRootTranslationGainSlider, d.enableShadowPosing};
    d.jointWidgets = {d.holdAngleCB, d.holdAngleGain, d.holdAngleGainSlider, d.holdPosCB,
                      d.holdPosGain, d.holdPosGainSlider, d.activeCB, d.activeGain,
                      d.activeGainSlider, d.jointUseActualPosition, d.jointIsBlocker};
    for (QToolButton *button : {d.magicSetup, d.magicDefineRoot, d.magicDeleteRoot})
        button->setCheckable(false);

    if (SC_SessionContext *session = PLUG_Services::getSessionContext())
        if (TUSceneChangeManager *changes = session->changeManager()) {
            connect(changes, &TUSceneChangeManager::selectionChanged, this, &IKToolPanel::onSelectionChanged);
            connect(changes, &TUSceneChangeManager::currentFrameChanged, this, &IKToolPanel::onSelectionChanged);
        }
    IKToolSettings &settings = IKToolSettings::instance();
    connect(&settings, &IKToolSettings::settingsChanged, this, &IKToolPanel::settingsChanged);
    connect(&settings, &IKToolSettings::jointSelectionChanged, this, &IKToolPanel::settingsChanged);
    for (QToolButton *button : {d.jointSetupMode, d.manipulationMode, d.usePegButton, d.useReadButton, d.useDeformerButton})
        connect(button, &QToolButton::clicked, this, &IKToolPanel::modeChanged);
    connect(d.buttonShowHideJointProperties, &QToolButton::toggled, this, &IKToolPanel::onShowHideJointProperties);
    for (QToolButton *button :
         {d.magicSetup, d.magicDefineRoot, d.magicDeleteRoot, d.resetAllConstraints, d.resetAllSelected,
          d.fromFrameButton, d.toFrameButton, d.clearKeyframes, d.interpolateButton, d.existingKeyFramesButton,
          d.interpolateUseCurrentFrame, d.enableRootTranslation, d.interpolateAltogether, d.interpolationMoveAll,
          d.interpolateCubic, d.interpolateLinear, d.jointDefineRoot, d.jointDefineParticipates, d.holdAngleCB,
          d.holdPosCB, d.activeCB, d.jointUseActualPosition, d.jointIsBlocker})
        connect(button, &QToolButton::clicked, this, &IKToolPanel::valueChanged);
    connect(d.fromFrame, &QLineEdit::textChanged, this, &IKToolPanel::valueChanged);
    connect(d.toFrame, &QLineEdit::textChanged, this, &IKToolPanel::valueChanged);
    for (QSpinBox *spin : {d.maxIterations, d.enableRootTranslationGain, d.holdAngleGain, d.holdPosGain, d.activeGain})
        connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), this, &IKToolPanel::valueChanged);
    for (QSlider *slider : {d.enableRootTranslationGainSlider, d.holdAngleGainSlider, d.holdPosGainSlider, d.activeGainSlider})
        connect(slider, &QSlider::valueChanged, this, &IKToolPanel::valueChanged);
    // The check box is a button: its clicks are its gestures.
    connect(d.enableShadowPosing, &QCheckBox::clicked, this, &IKToolPanel::valueChanged);

    d.refresh();
}

void IKToolPanel::refresh_internal()
{
    d_->refresh();
}

void IKToolPanel::settingsChanged()
{
    d_->refresh();
}

void IKToolPanel::onSelectionChanged()
{
    d_->refresh();
}

void IKToolPanel::onShowHideJointProperties(bool shown)
{
    if (d_->complete)
        d_->jointPropertyContainer->setVisible(shown);
}

void IKToolPanel::modeChanged()
{
    Impl &d = *d_;
    if (!d.complete)
        return;
    QObject *const from = sender();
    IKToolSettings &settings = IKToolSettings::instance();
    if (from == d.jointSetupMode)
        settings.setToolMode(IKToolSettings::SetupMode);
    else if (from == d.manipulationMode)
        settings.setToolMode(IKToolSettings::ManipulationMode);
    else if (from == d.usePegButton)
        settings.setUsePeg(d.usePegButton->isChecked());
    else if (from == d.useReadButton)
        settings.setUseRead(d.useReadButton->isChecked());
    else if (from == d.useDeformerButton)
        settings.setUseDeformer(d.useDeformerButton->isChecked());
}

void IKToolPanel::valueChanged()
{
    Impl &d = *d_;
    if (!d.complete)
        return;
    QObject *const from = sender();
    IKToolSettings &settings = IKToolSettings::instance();
    int const types[] = {IKToolSettings::Cubic, IKToolSettings::Altogether, IKToolSettings::MoveAll, IKToolSettings::Linear};
    QToolButton *const typeButtons[] = {d.interpolateCubic, d.interpolateAltogether, d.interpolationMoveAll, d.interpolateLinear};
    for (int i = 0; i < 4; ++i)
        if (from == typeButtons[i]) {
            settings.setInterpolationType(types[i]);
            d.refresh();
            return;
        }
    if (from == d.magicSetup) {
        d.automaticGeneration();
        return;
    }
    if (from == d.jointDefineRoot || from == d.magicDefineRoot) {
        d.assignRoot(from == d.magicDefineRoot);
        return;
    }
    if (from == d.jointDefineParticipates) {
        d.defineJoint();
        return;
    }
    if (MO_Module *root = d.root())
        d.applyToSelectedJoints(root, from);
}

IKToolPanelFactory::IKToolPanelFactory(QString resourceFolder) : resourceFolder_(std::move(resourceFolder)) {}

void IKToolPanelFactory::create(TP_ToolPropertiesReceiver *receiver)
{
    auto *panel = new IKToolPanel(receiver, resourceFolder_);  // the receiver takes it
    panel->load();
    registerPanelForTool(receiver, IKTool::Id, panel);
    addPanelInPlaceholder(receiver, panel);
}
