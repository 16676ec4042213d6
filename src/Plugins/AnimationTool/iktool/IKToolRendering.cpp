#include "iktool/IKToolRendering.h"

#include "iktool/IKPreferences.h"

#include "graphic/BM_Bitmap.h"

#include <algorithm>
#include <cmath>

namespace IKToolRendering {

namespace {

using Math::CameraTransformChain;
using Math::Point2d;
using Math::Vector2d;

constexpr int kBubbleWidth = 200;
constexpr int kBubbleHeight = 135;
constexpr int kBubbleLift = 160;  // from the joint to the bubble's top edge
VS_RGBA const kWhite(255, 255, 255, 255);
VS_RGBA const kBlockerRed(255, 0, 0, 255);

// Loaded once per process; the textures are shared values and outlive the canvas they came from.
std::map<int, TextureRecord> &textures()
{
    static std::map<int, TextureRecord> map;
    return map;
}

bool projectToPixels(CC_CameraChainTransformCanvasBinder &binder, Math::Point3d const &point, Point2d &out)
{
    return binder.cameraTransformChain().project(CameraTransformChain::ModelFrame, point, out);
}

// d * (1 - ratio) + colour * ratio, channel by channel, with d the colour darkened to a fifth.
VS_RGBA shade(VS_RGBA const &colour, double ratio)
{
    double const t = std::clamp(std::isfinite(ratio) ? ratio : 0.0, 0.0, 1.0);
    auto channel = [t](std::uint8_t c) {
        int const dark = int(c * 0.2);
        return std::uint8_t(dark * (1.0 - t) + c * t);
    };
    return VS_RGBA(channel(colour.r), channel(colour.g), channel(colour.b), colour.a);
}

// Texture coordinates of the bubble's corners (top left, top right, bottom right, bottom left),
// flipped vertically when the bubble sits below the joint and mirrored when it sits to the left.
struct CornerCoords {
    Point2d uv[4] = {{0.0, 1.0}, {1.0, 1.0}, {1.0, 0.0}, {0.0, 0.0}};
};

VU_TexturedQuad quadAt(double left, double top, double width, double height, CornerCoords const &coords,
                       VS_RGBA const &tint)
{
    VU_TexturedQuad quad;
    quad.corners[0] = Point2d(left, top);
    quad.corners[1] = Point2d(left + width, top);
    quad.corners[2] = Point2d(left + width, top + height);
    quad.corners[3] = Point2d(left, top + height);
    for (int i = 0; i < 4; ++i) {
        quad.texCoords[i] = coords.uv[i];
        quad.tints[i] = tint;
    }
    return quad;
}

void drawTexture(VU_Painter &painter, int id, VU_TexturedQuad const &quad)
{
    painter.drawTexturedQuads(texture(id).texture, {quad});
}

// A constellation button centred on `centre`: a square point in the item's colour when picking;
// otherwise the icon, over the halo when the button is on.
void drawButton(VU_Painter &painter, Point2d const &centre, bool on, int textureId, VS_RGBA const &itemColour,
                bool picking, CornerCoords const &coords)
{
    TextureRecord const icon = texture(textureId);
    if (picking) {
        painter.setPointFillColor(itemColour);
        painter.setPointStrokeColor(itemColour);
        painter.setPointShape(VU_Painter::SquarePoint);
        painter.setPointSize(icon.width + 2);
        painter.drawPoint(centre);
        return;
    }
    VU_TexturedQuad const quad =
        quadAt(centre.x - icon.width / 2.0, centre.y - icon.height / 2.0, icon.width, icon.height, coords, kWhite);
    if (on)
        drawTexture(painter, ButtonHaloTexture, quad);
    drawTexture(painter, textureId, quad);
}

void drawCross(VU_Painter &painter, RenderSettings const &settings, Point2d const &p)
{
    double const r = settings.jointRadius;
    painter.setLineStrokeColor(settings.jointLineColor);
    painter.drawLine(p - Vector2d(r, 0.0), p + Vector2d(r, 0.0));
    painter.drawLine(p - Vector2d(0.0, r), p + Vector2d(0.0, r));
}

}  // namespace

RenderSettings::RenderSettings(bool picking_) : picking(picking_) {}

char const *textureFileName(int id)
{
    static char const *const names[TextureCount] = {
        "ikMobility.png",     "ikHoldPosition.png",  "ikHoldOrientation.png",    "ikUseActual.png",
        "ikBlocker.png",      "ikSliderBg.png",      "ikSliderCursor.png",       "ikSelectedButtonHalo.png",
        "ikBubbleDown.png",   "ikBubbleLeft.png",    "ikAltogether.png",
    };
    return id >= 0 && id < TextureCount ? names[id] : "";
}

void prepareTextures(VS_Canvas *canvas)
{
    std::map<int, TextureRecord> &map = textures();
    if (!map.empty())
        return;
    QString const base = PLUG_Services::getPluginPath("AnimationTool") + "/resources/icons/";
    for (int id = 0; id < TextureCount; ++id) {
        TextureRecord record;
        UT_SharedPtr<BM_Bitmap> const bitmap =
            CELIO_BitmapEngine::load(base + textureFileName(id), CELIO_BitmapEngine::kBitsPerChannel8);
        if (bitmap && !bitmap->isEmpty()) {
            record.width = bitmap->GetWidth();
            record.height = bitmap->GetHeight();
            if (canvas)
                record.texture = canvas->createTexture(
                    VS_Canvas::kTexture2D, VS_Canvas::kFormatRGBA, record.width, record.height, 0,
                    VS_Canvas::kFormatRGBA, VS_Canvas::kTypeUnsignedByte, bitmap->GetPixels(),
                    VS_Texture::ClampToEdge, VS_Texture::ClampToEdge, VS_Texture::Linear, VS_Texture::Linear,
                    VS_Canvas::kNoMipmaps);
        }
        map[id] = record;
    }
}

TextureRecord texture(int id)
{
    std::map<int, TextureRecord> const &map = textures();
    auto const found = map.find(id);
    return found == map.end() ? TextureRecord() : found->second;
}

void drawBone(CC_CameraChainTransformCanvasBinder &binder, RenderSettings const &settings, VU_Painter &painter,
              Math::Point3d const &from, Math::Point3d const &to)
{
    double const r = settings.jointRadius;
    painter.setLineThickness(1.0);
    painter.setLineStrokeColor(settings.boneLineColor);
    Point2d a, b;
    if (!projectToPixels(binder, from, a) || !projectToPixels(binder, to, b))
        return;
    if (!(a.GetDistance(b) > r))
        return;
    Vector2d n = b - a;
    n.Normalize();
    // The bone stops at the rims of its two joints.
    a += n * r;
    b -= n * r;

    painter.setPointReferential(VU_Painter::kPixelReferential);
    double const w = settings.handleBone ? settings.boneHalfWidth * 0.75 : double(settings.boneHalfWidth);
    Point2d const m = a + (b - a) * settings.boneApex;
    Vector2d const o(-n.y * w, n.x * w);
    Point2d const s1 = m - o;
    Point2d const s2 = m + o;
    if (settings.handleBone) {
        painter.setLineStrokeColor(settings.boneFillColor);
        painter.drawQuad(a + o, b + o, b - o, a - o, settings.boneLineColor);
    } else {
        painter.drawQuad(a, s1, b, s2, settings.boneFillColor);
    }
    if (!settings.picking) {
        painter.drawLine(a, b);
        if (settings.holdOrientation && !settings.ghost) {
            painter.setLineStrokeColor(settings.gaugeColor);
            painter.setLineThickness(3.0);
            painter.drawLine(s1, s2);
            painter.drawLine(m, m + (b - m) * (settings.holdOrientationPercent / 100.0));
        } else {
            painter.drawLine(s1, s2);
        }
    }
    painter.setPointReferential(VU_Painter::kSceneReferential);
}

void drawJoint(CC_CameraChainTransformCanvasBinder &binder, RenderSettings const &settings, VU_Painter &painter,
               Math::Point3d const &point, bool selected)
{
    int const r = settings.jointRadius;
    Point2d p;
    if (!projectToPixels(binder, point, p))
        return;
    painter.setPointReferential(VU_Painter::kPixelReferential);
    if (settings.picking) {
        painter.setPointFillColor(settings.jointFillColor);
        painter.setPointStrokeColor(settings.jointFillColor);
        painter.setPointShape(VU_Painter::RoundPoint);
        painter.setPointSize(2.0 * r);
        painter.drawPoint(p);
        painter.setPointReferential(VU_Painter::kSceneReferential);
        return;
    }

    if (settings.blocker) {
        painter.setLineThickness(1.0);
        painter.setLineStrokeColor(settings.jointLineColor);
        painter.drawTriangle(Point2d(p.x + 2 * r, p.y + r), Point2d(p.x - 2 * r, p.y + r), Point2d(p.x, p.y - 2 * r),
                             kBlockerRed);
    }
    if (settings.holdPosition) {
        double s = selected ? r + 3 : r;
        p.Round();
        auto square = [&painter, &p](double half, VS_RGBA const &fill) {
            painter.drawQuad(p + Vector2d(half, half), p + Vector2d(half, -half), p + Vector2d(-half, -half),
                             p + Vector2d(-half, half), fill);
        };
        if (selected) {
            square(s, settings.haloColor);
            painter.setLineStrokeColor(kWhite);
        } else {
            painter.setLineStrokeColor(settings.jointLineColor);
            painter.setLineThickness(1.0);
        }
        VS_RGBA const fill = shade(settings.jointFillColor, settings.holdPositionRatio);
        if (selected) {
            s -= 4;
            painter.setLineThickness(0.0);
        }
        square(s, fill);
        if (settings.showCross)
            drawCross(painter, settings, p);
    } else {
        double inner = r;
        if (selected) {
            painter.drawFilledDisc(p, r + 2, settings.haloColor);
            inner = r - 2;
        }
        painter.drawFilledDisc(p, inner, shade(settings.jointFillColor, settings.mobilityRatio));
        painter.setLineThickness(1.0);
        painter.setLineStrokeColor(selected ? kWhite : settings.jointLineColor);
        painter.drawCircle(p, selected ? r + 2 : r);
        painter.setLineStrokeColor(settings.jointLineColor);
        if (settings.handleJoint)
            painter.drawCircle(p, r / 2);
        else if (settings.showCross)
            drawCross(painter, settings, p);
    }
    painter.setPointReferential(VU_Painter::kSceneReferential);
}

void drawSlider(CC_CameraChainTransformCanvasBinder &, VU_Painter &painter, Point2d const &at, int, int, float value,
                VS_RGBA, VS_RGBA tint, bool picking, Math::Segment2d &track)
{
    TextureRecord const background = texture(SliderBackgroundTexture);
    int const w = background.width;
    int const h = background.height;
    double const top = at.y - h / 2;
    painter.setPointReferential(VU_Painter::kPixelReferential);
    if (!picking)
        drawTexture(painter, SliderBackgroundTexture, quadAt(at.x, top, w, h, CornerCoords(), tint));
    track = Math::Segment2d(at, at + Vector2d(w, 0.0));
    Point2d const knob = track.Interpolate(value);
    if (!picking) {
        TextureRecord const cursor = texture(SliderCursorTexture);
        drawTexture(painter, SliderCursorTexture,
                    quadAt(knob.x - cursor.width / 2, knob.y - cursor.height / 2, cursor.width, cursor.height,
                           CornerCoords(), tint));
    } else {
        // The pick shape starts at the middle of the track's left edge: slanted, and kept so.
        painter.setPointFillColor(tint);
        painter.setPointStrokeColor(tint);
        painter.setLineStrokeColor(tint);
        painter.drawQuad(at, Point2d(at.x + w, top), Point2d(at.x + w, top + h), Point2d(at.x, top + h), tint);
    }
    painter.setPointReferential(VU_Painter::kSceneReferential);
}

void drawConstellation(CC_CameraChainTransformCanvasBinder &binder, RenderSettings &settings, VU_Painter &painter,
                       Math::Point3d const &point)
{
    Point2d q;
    if (!projectToPixels(binder, point, q))
        return;
    CameraTransformChain const &chain = binder.cameraTransformChain();
    int const width = chain.viewportWidth();
    int const height = chain.viewportHeight();
    bool below = false;     // flag 1: the bubble hangs under the joint
    bool rightOf = false;   // flag 2: moved right of a joint near the left edge
    bool leftOf = false;    // flag 4: moved left of a joint near the right edge
    if (width > kBubbleWidth) {
        if (q.x - 100 < 2) {
            q.x = q.x > 2 ? q.x + 110 : 102;
            rightOf = true;
        } else if (q.x + 100 > width - 2) {
            q.x = width > q.x + 2 ? q.x - 110 : width - 102;
            leftOf = true;
        }
    }
    if (height > kBubbleHeight) {
        if (q.y - kBubbleLift < 2) {
            q.y += 175;
            below = true;
        } else if (q.y > height) {
            q.y = height;
        }
    }
    painter.setPointReferential(VU_Painter::kPixelReferential);
    double const left = q.x - 100;
    double const top = q.y - kBubbleLift;

    CornerCoords coords;
    for (Point2d &uv : coords.uv) {
        if (below)
            uv.y = 1.0 - uv.y;
        if (leftOf)
            uv.x = 1.0 - uv.x;
    }
    if (!settings.picking) {
        VS_RGBA const tint = settings.darkBubble ? VS_RGBA(70, 70, 70, 255) : kWhite;
        drawTexture(painter, rightOf || leftOf ? BubbleSideTexture : BubbleDownTexture,
                    quadAt(q.x - 112, q.y - kBubbleLift, 224, 145, coords, tint));
    }

    struct Button {
        int textureId;
        double dx, dy;
    };
    static Button const buttons[5] = {
        {MobilityTexture, 13, 27},       {HoldPositionTexture, 13, 54}, {HoldOrientationTexture, 13, 81},
        {BlockerTexture, 13, 108},       {UseActualTexture, 170, 108},
    };
    for (int i = 0; i < 5; ++i)
        drawButton(painter, Point2d(left + buttons[i].dx, top + buttons[i].dy), settings.itemFlags[i],
                   buttons[i].textureId, settings.itemColors[i], settings.picking, coords);

    // Sliders 5, 6 and 7 sit right of buttons 0, 1 and 2 and go with their flags.
    for (int i = 0; i < 3; ++i) {
        bool const on = settings.itemFlags[i];
        if (!on && settings.picking)
            continue;
        VS_RGBA tint = on ? VS_RGBA(50, 50, 50, 255) : VS_RGBA(150, 150, 150, 255);
        if (settings.picking)
            tint = settings.itemColors[5 + i];
        Point2d const at(left + buttons[i].dx + 32, top + buttons[i].dy);
        drawSlider(binder, painter, at, 150, 12, settings.sliderValues[i], tint, tint, settings.picking,
                   settings.sliderTracks[i]);
        painter.setPointReferential(VU_Painter::kPixelReferential);  // the slider went back to the scene
    }
    if (settings.showApplyAltogether)
        drawButton(painter, Point2d(left + 127, top + 108), false, AltogetherTexture, settings.itemColors[8],
                   settings.picking, coords);
    painter.setPointReferential(VU_Painter::kSceneReferential);
}

// Styles.

VS_RGBA RenderingStyle::boneColor() const { return IKPreferences::boneColor(); }
VS_RGBA RenderingStyle::boneFillColor() const { return IKPreferences::boneFillColor(); }
VS_RGBA RenderingStyle::selectedJointColor() const { return IKPreferences::selectedJointColor(); }
VS_RGBA RenderingStyle::jointColor() const { return IKPreferences::jointColor(); }
VS_RGBA RenderingStyle::jointFillColor() const { return IKPreferences::jointFillColor(); }
VS_RGBA RenderingStyle::noModuleJointColor() const { return IKPreferences::extraColor(); }
int RenderingStyle::jointSize(bool pick) const
{
    return pick ? IKPreferences::jointPickSize() : IKPreferences::jointSize();
}
int RenderingStyle::jointPickSize() const { return IKPreferences::jointPickSize(); }

VS_RGBA SetupRenderingStyle::boneColor() const { return IKPreferences::setupBoneColor(); }
VS_RGBA SetupRenderingStyle::boneFillColor() const { return IKPreferences::setupBoneFillColor(); }
VS_RGBA SetupRenderingStyle::selectedJointColor() const { return IKPreferences::setupSelectedJointColor(); }
VS_RGBA SetupRenderingStyle::jointColor() const { return IKPreferences::setupJointColor(); }
VS_RGBA SetupRenderingStyle::jointFillColor() const { return IKPreferences::setupJointFillColor(); }
VS_RGBA SetupRenderingStyle::noModuleJointColor() const { return IKPreferences::setupExtraColor(); }
int SetupRenderingStyle::jointSize(bool pick) const
{
    return pick ? IKPreferences::setupJointPickSize() : IKPreferences::setupJointSize();
}
int SetupRenderingStyle::jointPickSize() const { return IKPreferences::setupJointPickSize(); }
int SetupRenderingStyle::boneThickness() const { return IKPreferences::setupBoneThickness(); }

int InterpolationRenderingStyle::jointSize(bool) const { return IKPreferences::interpolationJointSize(); }
int InterpolationRenderingStyle::jointPickSize() const { return IKPreferences::interpolationJointSize(); }
int InterpolationRenderingStyle::boneThickness() const { return IKPreferences::interpolationBoneThickness(); }

}  // namespace IKToolRendering
