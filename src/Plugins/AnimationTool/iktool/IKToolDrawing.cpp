// What the IK tool paints, and when: the setup skeleton, the ghosts of the other frames of the
// range, the current pose and the constellation, in this order, so that the ghosts lie under the
// pose and the menu on top. The pick pass runs the same code with picking ids as colours.
#include "iktool/IKTool.h"

#include "iktool/IKPreferences.h"
#include "iktool/IKToolImpl.h"
#include "iktool/IKToolRendering.h"

#include "skeleton/IKMetaData.h"

#include <algorithm>

using namespace IKToolRendering;

namespace {

bool darkBubble() { return WID_IconManager::instance().iconsExtension().isEmpty(); }

}  // namespace

VS_RGBA IKTool::Impl::ghostColour(int from, int current, int to, int frame)
{
    VS_RGBA colour;
    double a;
    if (frame > current) {
        colour = IKPreferences::interpolationBaseColorAfter();
        a = 1.0 - double(frame - current) / double(std::max(1, to - current + 1));
    } else {
        colour = IKPreferences::interpolationBaseColorBefore();
        a = double(frame - from) / double(std::max(1, current - from + 1));
    }
    // Careful: a current frame outside the range would put a out of 0..1, and the byte out of range.
    a = std::clamp(a, 0.0, 1.0);
    colour.a = std::uint8_t(int(((1.0 - a) * 0.05 + a * 0.8) * 255.0));
    return colour;
}

void IKTool::Impl::drawSkeleton(CC_CameraChainTransformCanvasBinder &binder, VU_Painter &painter,
                                SkeletonDef const &skeleton, std::map<int, Math::Point3d> const &selected,
                                SLB_SelectablePickAdaptor &adaptor, bool pick, RenderingStyle const &style,
                                bool pressed, bool ghost)
{
    int const n = int(skeleton.size());
    if (pick && 2 * n > adaptor.nbHandles())
        adaptor.reserveHandles(2 * n);
    painter.setPointReferential(VU_Painter::kSceneReferential);
    painter.setPointFillColor(style.jointFillColor());
    painter.setPointStrokeColor(style.jointFillColor());
    binder.setModelMatrix(Math::Matrix4x4());

    RenderSettings settings(pick);
    settings.boneLineColor = style.boneColor();
    settings.boneFillColor = style.boneFillColor();
    settings.boneHalfWidth = style.boneThickness();
    settings.jointRadius = style.jointSize(pick);
    settings.ghost = ghost;
    settings.darkBubble = darkBubble();

    // Weights show relative to the greatest of this skeleton; none of the maxima is below 1.
    double maxPosition = 1.0, maxMobility = 1.0, maxOrientation = 1.0;
    for (SkeletonJointDef const &joint : skeleton) {
        if (joint.hasPositionTask())
            maxPosition = std::max(maxPosition, joint.positionTaskWeight());
        if (joint.isMobile())
            maxMobility = std::max(maxMobility, joint.mobilityWeight());
        if (joint.hasOrientationTask())
            maxOrientation = std::max(maxOrientation, joint.orientationTaskWeight());
    }

    if (!pick || style.bonesInPickPass()) {
        for (SkeletonJointDef const &joint : skeleton) {
            auto const parent = skeleton.find(joint.parentName);
            if (joint.parentName.empty() || parent == skeleton.end())
                continue;
            settings.holdOrientation = parent->hasOrientationTask();
            settings.holdOrientationPercent = (parent->orientationTaskWeight() + 1.0) * 100.0 / (maxOrientation + 1.0);
            settings.handleBone = joint.isHandle && parent->module.get() == joint.module.get();
            if (settings.handleBone && pressed && !selected.count(joint.index))
                continue;
            if (pick) {
                VS_RGBA const id = SLB_PickEngine::idToColor(adaptor.pickingId() + std::uint32_t(n + joint.index));
                settings.boneLineColor = id;
                settings.boneFillColor = id;
            }
            drawBone(binder, settings, painter, parent->solvedPosition, joint.solvedPosition);
        }
    }

    painter.setLineThickness(1.0, 1);
    maxPosition += 1.0;
    maxMobility += 1.0;
    for (SkeletonJointDef const &joint : skeleton) {
        bool isSelected = false;
        if (pick) {
            painter.setPointSize(style.jointPickSize());
            VS_RGBA const id = SLB_PickEngine::idToColor(adaptor.pickingId() + std::uint32_t(joint.index));
            settings.jointFillColor = id;
            settings.jointLineColor = id;
        } else {
            isSelected = selected.count(joint.index) > 0;
            painter.setPointSize(style.jointSize(false));
            settings.haloColor = style.selectedJointColor();
            settings.jointLineColor = style.jointColor();
            settings.jointFillColor = joint.module.get() ? style.jointFillColor() : style.noModuleJointColor();
        }
        settings.holdPosition = joint.hasPositionTask() && joint.positionTaskWeight() != 0.0;
        settings.showCross = joint.parentName.empty();
        settings.handleJoint = joint.isHandle;
        settings.blocker = joint.isBlocker();
        settings.holdPositionRatio = 1.0 - (joint.positionTaskWeight() + 1.0) / maxPosition;
        settings.mobilityRatio = joint.isMobile() ? (joint.mobilityWeight() + 1.0) / maxMobility : 0.0;
        if (pressed && joint.isHandle && !selected.count(joint.index))
            continue;
        drawJoint(binder, settings, painter, joint.solvedPosition, isSelected);
    }
}

void IKTool::Impl::drawConstellationFor(SkeletonDef const &skeleton, CC_CameraChainTransformCanvasBinder &binder,
                                        VU_Painter &painter, PickMode mode)
{
    if (!constellationVisible)
        return;
    if (constellationJoint == -1 || !selectedJointMap.count(constellationJoint)) {
        if (selectedJointMap.empty()) {
            constellationVisible = false;
            constellationJoint = -1;
            return;
        }
        constellationJoint = selectedJointMap.begin()->first;
    }
    if (constellationJoint < 0 || constellationJoint >= int(skeleton.size())) {
        constellationJoint = -1;
        return;
    }
    SkeletonJointDef const &joint = skeleton[std::size_t(constellationJoint)];
    RenderSettings settings(mode != NormalMode);
    for (int i = 0; i < ItemCount; ++i)
        settings.itemColors[i] = SLB_PickEngine::idToColor(constellationPickAdaptor.pickingId() + std::uint32_t(i));
    settings.itemFlags[0] = joint.isMobile();
    settings.itemFlags[1] = joint.hasPositionTask();
    settings.itemFlags[2] = joint.hasOrientationTask();
    settings.itemFlags[3] = joint.isBlocker();
    settings.itemFlags[4] = joint.useActualPositionWhenInterpolating();
    settings.darkBubble = darkBubble();
    JointAttr *attr = skeleton.getAttribute(constellationJoint);
    if (!IKToolUtil::getIKMetaDataForModule(joint.module.get()) || !attr)
        return;
    settings.sliderValues[0] = float(attr->weightAttr()->localValue() / 100.0);
    settings.sliderValues[1] = float(attr->holdPositionGainAttr()->localValue() / 100.0);
    settings.sliderValues[2] = float(attr->holdOrientationGainAttr()->localValue() / 100.0);
    settings.showApplyAltogether = IKToolSettings::instance().interpolationEnabled();
    drawConstellation(binder, settings, painter, joint.solvedPosition);
    std::copy(std::begin(settings.sliderTracks), std::end(settings.sliderTracks), std::begin(sliderSegments));
}

void IKTool::draw(PickMode mode)
{
    Impl &d = *impl_;
    if (mode == NoDrawing)
        return;
    IKToolSettings &settings = IKToolSettings::instance();
    if (!settings.skeletonRoot()) {
        d.clearFrames();
        d.selectedJointMap.clear();
        d.jointPaths.clear();
        return;
    }
    CC_CameraChainTransformCanvasBinder *binder = context()->canvasBinder();
    if (binder)
        prepareTextures(binder->canvas());
    if (!d.pressed)
        d.rebuildFrames();
    bool const pick = mode != NormalMode;
    bool const setup = settings.toolMode() == IKToolSettings::SetupMode;
    if (setup) {
        if (d.state != Impl::DraggingHandle)
            d.setupJoint = -1;
        d.pendingJoint = -1;
        d.selectedJointMap.clear();
        drawSetupMode(pick);
    }
    if (!pick)
        drawInterpolationMode();
    else if (setup)
        return;  // the pick pass of setup mode holds the setup skeleton alone
    // A visible pass leaves the records alone: a current frame outside the range has no pose to show.
    auto const found = d.frames.find(d.currentKey());
    if (!pick && found == d.frames.end())
        return;
    FrameRecord &current = pick ? d.record(d.currentKey()) : found->second;
    if (!binder) {
        // Nothing to paint on; the picking ids are reserved all the same.
        if (pick)
            d.reserveHandles(current.pickAdaptor, current.skeleton);
        return;
    }
    CC_CameraChainTransformCanvasBinder::Scope scope(*binder);
    VU_Painter painter(*binder);
    VU_Painter::Batch const batch(painter);
    RenderingStyle const style(setup ? IKPreferences::setupBoneThickness() : IKPreferences::boneThickness());
    SkeletonDef const &skeleton = current.skeleton;
    Impl::drawSkeleton(*binder, painter, skeleton, d.selectedJointMap, current.pickAdaptor, pick, style, d.pressed,
                       false);
    d.drawConstellationFor(skeleton, *binder, painter, mode);
}

void IKTool::drawSetupMode(bool pick)
{
    Impl &d = *impl_;
    d.updateSetupSkeleton(pick);
    CC_CameraChainTransformCanvasBinder *binder = context()->canvasBinder();
    if (!binder)
        return;
    CC_CameraChainTransformCanvasBinder::Scope scope(*binder);
    VU_Painter painter(*binder);
    VU_Painter::Batch const batch(painter);
    SetupRenderingStyle const style(IKPreferences::setupBoneThickness());
    Impl::drawSkeleton(*binder, painter, d.setupSkeleton, {}, d.setupPickAdaptor, pick, style, false, false);
}

void IKTool::drawInterpolationMode()
{
    Impl &d = *impl_;
    CC_CameraChainTransformCanvasBinder *binder = context()->canvasBinder();
    if (d.frames.empty() || !binder)
        return;
    int from = 0, to = 0;
    d.activeRange(from, to);
    int const current = d.currentKey();
    for (auto &entry : d.frames) {
        if (entry.first == current)
            continue;
        CC_CameraChainTransformCanvasBinder::Scope scope(*binder);
        VU_Painter painter(*binder);
        VU_Painter::Batch const batch(painter);  // one QPainter for the whole ghost
        VS_RGBA const boneTint = Impl::ghostColour(from, current, to, entry.first);
        VS_RGBA jointTint = IKPreferences::interpolationJointColor();
        jointTint.a = boneTint.a;
        InterpolationRenderingStyle const style(IKPreferences::interpolationBoneThickness(), jointTint, boneTint);
        Impl::drawSkeleton(*binder, painter, entry.second.skeleton, {}, d.setupPickAdaptor, false, style, d.pressed,
                           true);
    }
}
