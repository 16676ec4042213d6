// How the IK tool paints one bone, one joint and the joint menu (the constellation), in pixels and
// colours. The same routines serve the visible pass and the pick pass: with `picking` set they draw
// plain shapes in the colours they are given (picking ids) and no textures.
//
// Scene points are projected through the binder's camera chain; every size is in view pixels.
// Every routine leaves the painter in the scene referential (6), whatever it switched to.
//
// The rendering styles say which preference values a skeleton is drawn with: manipulation, setup,
// and the tinted ghosts of interpolation.
#pragma once

#include "host/HostAPI.h"
#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/VS_Canvas.h"
#include "graphic/VS_RGBA.h"
#include "graphic/VU_Painter.h"
#include "base/Math/Shapes.h"
#include "base/Math/Vector.h"

#include <cstdint>
#include <map>

namespace IKToolRendering {

// What one call of drawBone, drawJoint or drawConstellation shows. Ratios run from 0 to 1.
struct RenderSettings {
    explicit RenderSettings(bool picking_);

    bool picking;                  // pick pass: plain shapes in id colours, no textures
    std::int32_t jointRadius = 11;
    double boneApex = 0.125;       // widest point of a bone, as a fraction of its length from the parent
    std::int32_t boneHalfWidth = 8;
    bool handleBone = false;       // the bone leads to a handle joint: a narrow rectangle
    bool showCross = false;        // the joint is a root
    bool reservedFlag = true;      // read by nothing
    double mobilityRatio = 50.0;   // brightness of a round joint
    bool holdPosition = false;     // the joint is a square
    double holdPositionRatio = 50.0;  // brightness of a square joint
    bool holdOrientation = false;  // the bone shows the orientation gauge
    double holdOrientationPercent = 50.0;  // 0 to 100: length of the gauge
    bool handleJoint = false;      // small inner ring
    bool blocker = false;          // red triangle under the joint
    VS_RGBA jointFillColor;
    VS_RGBA jointLineColor;
    VS_RGBA boneLineColor;
    VS_RGBA boneFillColor;
    VS_RGBA gaugeColor{0, 0, 255, 255};
    VS_RGBA haloColor{0, 0, 255, 255};
    bool ghost = false;            // ghosts show no gauge
    VS_RGBA itemColors[9];         // pick colours of the constellation items, by item
    bool itemFlags[5] = {};        // mobile, hold position, hold orientation, blocker, use actual position
    float sliderValues[3] = {};    // 0 to 1
    Math::Segment2d sliderTracks[3];  // output: where each slider's track was drawn, in view pixels
    bool showApplyAltogether = false;
    bool darkBubble = true;        // tint the bubble dark (icons without a theme extension)
};

// Ids of the textures, in the order they are loaded.
enum TextureId {
    MobilityTexture = 0,
    HoldPositionTexture = 1,
    HoldOrientationTexture = 2,
    UseActualTexture = 3,
    BlockerTexture = 4,
    SliderBackgroundTexture = 5,
    SliderCursorTexture = 6,
    ButtonHaloTexture = 7,
    BubbleDownTexture = 8,
    BubbleSideTexture = 9,
    AltogetherTexture = 10,
    TextureCount = 11,
};

// One loaded icon. A file that could not be read leaves a null texture of 64 by 64.
struct TextureRecord {
    VS_TexturePtr texture;
    int width = 64;
    int height = 64;
};

// File name of a texture id, within the plug-in's "resources/icons/" folder.
char const *textureFileName(int id);

// Loads the eleven icons once per process, from the plug-in's folder, as textures of `canvas`.
// Later calls, on any canvas, do nothing: the first textures stay in use.
void prepareTextures(VS_Canvas *canvas);
// The record of `id`: a null 64 by 64 one before prepareTextures or for an unknown id.
TextureRecord texture(int id);

void drawBone(CC_CameraChainTransformCanvasBinder &binder, RenderSettings const &settings, VU_Painter &painter,
              Math::Point3d const &from, Math::Point3d const &to);
void drawJoint(CC_CameraChainTransformCanvasBinder &binder, RenderSettings const &settings, VU_Painter &painter,
               Math::Point3d const &point, bool selected);
// Writes settings.sliderTracks (hence not const).
void drawConstellation(CC_CameraChainTransformCanvasBinder &binder, RenderSettings &settings, VU_Painter &painter,
                       Math::Point3d const &point);
// One slider whose track starts at `at`; its size is its texture's. `length`, `height` and `color`
// are accepted and not used. Writes the track's segment to `track`.
void drawSlider(CC_CameraChainTransformCanvasBinder &binder, VU_Painter &painter, Math::Point2d const &at, int length,
                int height, float value, VS_RGBA color, VS_RGBA tint, bool picking, Math::Segment2d &track);

// Which preference values a skeleton is drawn with: the manipulation style.
class RenderingStyle {
public:
    explicit RenderingStyle(int boneThickness) : boneThickness_(boneThickness) {}
    virtual ~RenderingStyle() = default;
    virtual VS_RGBA boneColor() const;
    virtual VS_RGBA boneFillColor() const;
    virtual VS_RGBA selectedJointColor() const;
    virtual VS_RGBA jointColor() const;
    virtual VS_RGBA jointFillColor() const;
    virtual VS_RGBA noModuleJointColor() const;  // a joint without module
    virtual int jointSize(bool pick) const;
    virtual int jointPickSize() const;
    virtual bool bonesInPickPass() const { return true; }
    virtual int boneThickness() const { return boneThickness_; }

private:
    int boneThickness_;  // "ikBoneThickness" in manipulation, "ikSetupBoneThickness" otherwise
};

class SetupRenderingStyle : public RenderingStyle {
public:
    using RenderingStyle::RenderingStyle;
    VS_RGBA boneColor() const override;
    VS_RGBA boneFillColor() const override;
    VS_RGBA selectedJointColor() const override;
    VS_RGBA jointColor() const override;
    VS_RGBA jointFillColor() const override;
    VS_RGBA noModuleJointColor() const override;
    int jointSize(bool pick) const override;
    int jointPickSize() const override;
    bool bonesInPickPass() const override { return false; }
    int boneThickness() const override;
};

// Ghosts: every colour is one of two tints.
class InterpolationRenderingStyle : public RenderingStyle {
public:
    InterpolationRenderingStyle(int boneThickness, VS_RGBA jointTint, VS_RGBA boneTint)
        : RenderingStyle(boneThickness), jointTint(jointTint), boneTint(boneTint) {}
    VS_RGBA boneColor() const override { return jointTint; }
    VS_RGBA boneFillColor() const override { return boneTint; }
    VS_RGBA selectedJointColor() const override { return InterpolationRenderingStyle::jointFillColor(); }
    VS_RGBA jointColor() const override { return jointTint; }
    VS_RGBA jointFillColor() const override { return boneTint; }
    int jointSize(bool pick) const override;
    int jointPickSize() const override;
    bool bonesInPickPass() const override { return false; }
    int boneThickness() const override;

    VS_RGBA jointTint;
    VS_RGBA boneTint;
};

}  // namespace IKToolRendering
