#include "tool/CX_Context.h"
#include "tool/TO_AbstractTool.h"
#include "tool/TO_AbstractToolContext.h"
#include "tool/TO_ToolFactory.h"

#include <gtest/gtest.h>

namespace {

class RecordingTool : public TO_Tool {
public:
    using TO_Tool::TO_Tool;
};

class Generator : public TO_ToolFactory::ToolGenerator {
public:
    explicit Generator(bool fails = false) : fails_(fails) {}
    std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override
    {
        return fails_ ? nullptr : std::make_unique<RecordingTool>(context);
    }

private:
    bool fails_;
};

TO_ToolFactory::ToolDescriptor descriptor(char const *name, CX_ToolIds::ID requested)
{
    TO_ToolFactory::ToolDescriptor d;
    d.name = name;
    d.label = QString(name) + " label";
    d.requestedId = requested;
    return d;
}

// Forgets the tools a test registered in the process-wide factory.
struct Registered {
    std::vector<CX_ToolIds::ID> ids;
    ~Registered()
    {
        for (CX_ToolIds::ID id : ids)
            TO_ToolFactory::instance().unregisterTool(id);
    }
    CX_ToolIds::ID add(TO_ToolFactory::ToolDescriptor const &d, std::unique_ptr<TO_ToolFactory::ToolGenerator> g)
    {
        CX_ToolIds::ID const id = TO_ToolFactory::instance().registerTool(d, std::move(g));
        if (id != CX_ToolIds::None)
            ids.push_back(id);
        return id;
    }
};

TEST(ToolFactory, ARequestedIdentifierIsHonouredUnlessTaken)
{
    Registered r;
    EXPECT_EQ(r.add(descriptor("first", 2103), std::make_unique<Generator>()), 2103);
    CX_ToolIds::ID const second = r.add(descriptor("second", 2103), std::make_unique<Generator>());
    EXPECT_GE(second, CX_ToolIds::FirstAssigned);
    CX_ToolIds::ID const third = r.add(descriptor("third", CX_ToolIds::None), std::make_unique<Generator>());
    EXPECT_GE(third, CX_ToolIds::FirstAssigned);
    EXPECT_NE(second, third);

    EXPECT_EQ(TO_ToolFactory::instance().idForName("third"), third);
    EXPECT_EQ(TO_ToolFactory::instance().idForName("nobody"), CX_ToolIds::None);
    std::vector<TO_ToolFactory::Registration> const tools = TO_ToolFactory::instance().tools();
    ASSERT_GE(tools.size(), 3u);
    EXPECT_EQ(tools[tools.size() - 3].descriptor.label, "first label");

    // Once forgotten, the identifier can be asked for again.
    TO_ToolFactory::instance().unregisterTool(2103);
    r.ids.erase(r.ids.begin());
    EXPECT_EQ(r.add(descriptor("again", 2103), std::make_unique<Generator>()), 2103);
}

TEST(ToolFactory, CreatesToolsForTheirViewAndRefusesWhatItCannot)
{
    Registered r;
    CX_ToolIds::ID const ok = r.add(descriptor("ok", CX_ToolIds::None), std::make_unique<Generator>());
    CX_ToolIds::ID const broken = r.add(descriptor("broken", CX_ToolIds::None), std::make_unique<Generator>(true));
    EXPECT_EQ(r.add(descriptor("no generator", 77), nullptr), CX_ToolIds::None);
    EXPECT_EQ(TO_ToolFactory::instance().idForName("no generator"), CX_ToolIds::None);

    auto *context = reinterpret_cast<TO_AbstractToolContext *>(0x1000);  // never dereferenced
    std::unique_ptr<TO_Tool> tool = TO_ToolFactory::instance().createTool(ok, context);
    ASSERT_NE(tool, nullptr);
    EXPECT_EQ(tool->context(), context);
    EXPECT_EQ(TO_ToolFactory::instance().createTool(broken, context), nullptr);
    EXPECT_EQ(TO_ToolFactory::instance().createTool(424242, context), nullptr);
}

TEST(ToolFactory, DefaultToolDeclinesEveryEvent)
{
    RecordingTool tool(nullptr);
    EXPECT_FALSE(tool.onMouseDown(GR_StylusPoint(Math::Point2d(1, 2))));
    EXPECT_FALSE(tool.onMouseMove({}));
    EXPECT_FALSE(tool.onKeyDown(Qt::Key_Left, false));
    EXPECT_EQ(tool.oglScanHit(5, true), -1);
    EXPECT_EQ(tool.getCursor(Math::Point2d()), TO_Enums::Arrow);
}

class CountingListener : public TUListener {
public:
    void callBack(TUTeller *) override { ++calls; }
    int calls = 0;
};

TEST(CXContext, SetDataTellsEveryListenerButTheOriginAndOnlyOnChange)
{
    CX_Context &context = CX_Context::GetInstance();
    CountingListener view, toolBar;
    view.phone(&context);
    toolBar.phone(&context);

    CX_ToolRecord record = context.data();
    record.toolId = context.currentToolId() + 1;
    record.options = 7;
    context.SetData(record, &toolBar);
    EXPECT_EQ(view.calls, 1);
    EXPECT_EQ(toolBar.calls, 0);
    EXPECT_TRUE(toolBar.isListeningTo(&context));
    EXPECT_EQ(context.currentToolId(), record.toolId);
    EXPECT_EQ(context.data().options, 7);

    context.SetData(record, nullptr);  // unchanged: nobody hears
    EXPECT_EQ(view.calls, 1);
    record.toolId += 1;
    context.SetData(record, nullptr);
    EXPECT_EQ(view.calls, 2);
    EXPECT_EQ(toolBar.calls, 1);
}

} // namespace
