// A light scene for the Shift and Trace tests, built in memory and installed as the plug-in's
// session: two elements at the scene's origin (identity world matrices) under default metrics, so
// that field x (1/12 OGL unit) and field y (1/16) differ.
//
//   "Hand": drawing "1" from frame 1, "2" from frame 5, nothing from frame 9.
//   "Arm":  drawing "a" from frame 1.
#pragma once

#include "host/HostAPI.h"
#include "shifttrace/ShiftAndTraceSelection.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

// A shift from its seven values, in their stored order.
inline AT_ShiftAndTraceUtil::PositionData shiftOf(double rotation, double pivotX, double pivotY, double scaleX,
                                                  double scaleY, double positionX, double positionY)
{
    AT_ShiftAndTraceUtil::PositionData d;
    d.rotation = rotation;
    d.pivotX = pivotX;
    d.pivotY = pivotY;
    d.scaleX = scaleX;
    d.scaleY = scaleY;
    d.positionX = positionX;
    d.positionY = positionY;
    return d;
}

inline void expectShift(AT_ShiftAndTraceUtil::PositionData const &actual,
                        AT_ShiftAndTraceUtil::PositionData const &expected, double tolerance = 1e-9)
{
    EXPECT_NEAR(actual.rotation, expected.rotation, tolerance);
    EXPECT_NEAR(actual.pivotX, expected.pivotX, tolerance);
    EXPECT_NEAR(actual.pivotY, expected.pivotY, tolerance);
    EXPECT_NEAR(actual.scaleX, expected.scaleX, tolerance);
    EXPECT_NEAR(actual.scaleY, expected.scaleY, tolerance);
    EXPECT_NEAR(actual.positionX, expected.positionX, tolerance);
    EXPECT_NEAR(actual.positionY, expected.positionY, tolerance);
}

// A view for the manipulators and the tool: 401 by 301 pixels, 120 pixels per OGL unit, camera at
// the origin, so that the view pixel (200 + 120 x, 150 - 120 y) shows the scene point (x, y).
// Modifiers, frame and view kind are set by the test; picks find nothing.
class TestToolContext : public TO_AbstractToolContext {
public:
    static constexpr double kPixelsPerUnit = 120.0;
    TestToolContext()
    {
        binder.setViewport(401, 301);
        binder.setOrthographicProjection(kPixelsPerUnit);
    }
    static Math::Point2d pixel(double x, double y) { return {200.0 + kPixelsPerUnit * x, 150.0 - kPixelsPerUnit * y}; }

    bool extendModifier() const override { return extend; }
    bool keepModifier() const override { return keep; }
    bool thirdModifier() const override { return false; }
    double currentFrame() const override { return frame; }
    void requestRedraw() override { ++redraws; }
    // Runs `onPick` (a stand-in for the view's pick pass) when set; counts the picks.
    UT_SharedPtr<SLB_SelectableDescriptor> pick(UT_Point const &, bool commit, int) override
    {
        ++picks;
        return onPick ? onPick(commit) : nullptr;
    }
    CC_CameraChainTransformCanvasBinder *canvasBinder() override { return &binder; }
    int registerCursor(QCursor *) override { return 0; }
    int viewKind() const override { return kind; }
    int pickedHandle(UT_SharedPtr<SLB_SelectableDescriptor> const &) override { return -1; }
    void dragStepDone() override { ++dragSteps; }

    CC_CameraChainTransformCanvasBinder binder;
    bool extend = false;
    bool keep = false;
    double frame = 1.0;
    int kind = CameraView;
    int redraws = 0;
    int dragSteps = 0;
    int picks = 0;
    std::function<UT_SharedPtr<SLB_SelectableDescriptor>(bool)> onPick;
};

class ShiftAndTraceScene : public ::testing::Test {
protected:
    void SetUp() override
    {
        auto scene = std::make_unique<TUScene>();
        hand = addElement(*scene, QStringLiteral("Hand"));
        hand->addDrawing(QStringLiteral("1"), {square(0.1, 0.2, 0.3, 0.5)});
        hand->addDrawing(QStringLiteral("2"), {square(-0.1, -0.1, 0.1, 0.1)});
        hand->setExposure(1, QStringLiteral("1"));
        hand->setExposure(5, QStringLiteral("2"));
        hand->setExposure(9, QString());
        arm = addElement(*scene, QStringLiteral("Arm"));
        arm->addDrawing(QStringLiteral("a"), {square(-0.5, -0.5, 0.5, 0.5)});
        arm->setExposure(1, QStringLiteral("a"));
        session = std::make_unique<SC_Session>(std::move(scene));
        PLUG_Services::setSessionContext(session.get());
        PLUG_Services::setEditionStackInterface(session.get());
        PLUG_Services::setSelection(session->getSelection());
        selection().elements().clear();
        selection().validate(-1);
    }
    void TearDown() override
    {
        selection().elements().clear();
        PLUG_Services::setSelection(nullptr);
        PLUG_Services::setEditionStackInterface(nullptr);
        PLUG_Services::setSessionContext(nullptr);
    }

    static ShiftAndTraceSelection &selection() { return ShiftAndTraceSelection::instance(); }
    SL_Selection *nodeSelection() const { return session->getSelection(); }
    CO_CommandManager *commands() const { return session->commandManager(); }

    static OC_VectorShape square(double x0, double y0, double x1, double y1)
    {
        OC_VectorShape shape;
        shape.kind = OC_VectorShape::Kind::Polygon;
        shape.points = {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
        return shape;
    }

    static CA_CelKey key(char const *element, char const *drawing)
    {
        return CA_CelKey(QLatin1String(element), QLatin1String(drawing));
    }

    std::unique_ptr<SC_Session> session;
    MO_ElementModule *hand = nullptr;
    MO_ElementModule *arm = nullptr;

private:
    static MO_ElementModule *addElement(TUScene &scene, QString const &name)
    {
        auto node = UT_MakeShared<MO_ElementModule>();
        node->setInstanceName(name);
        auto *element = static_cast<MO_ElementModule *>(scene.getRootGroup()->addNode(node));
        element->setElementName(name);
        return element;
    }
};
