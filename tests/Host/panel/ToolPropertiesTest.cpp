#include "panel/TP_ToolProperties.h"

#include <QLabel>
#include <QPointer>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTextStream>
#include <gtest/gtest.h>

namespace {

constexpr CX_ToolIds::ID kToolA = 501;
constexpr CX_ToolIds::ID kToolB = 502;

QString writeUi(QTemporaryDir const &dir, QString const &labelText)
{
    QString const path = dir.filePath(labelText + ".ui");
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Text));
    QTextStream(&file) << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                          "<ui version=\"4.0\"><class>Panel</class>"
                          "<widget class=\"QWidget\" name=\"Panel\"><layout class=\"QVBoxLayout\" name=\"layout\">"
                          "<item><widget class=\"QLabel\" name=\"caption\"><property name=\"text\"><string>"
                       << labelText << "</string></property></widget></item></layout></widget></ui>\n";
    return path;
}

class CountingPanel : public TP_ToolPropertiesPanel {
public:
    CountingPanel(TP_ToolPropertiesReceiver *receiver, QString uiFile, bool monitors = false)
        : TP_ToolPropertiesPanel(receiver), uiFile_(std::move(uiFile)), monitors_(monitors)
    {
    }
    int loads = 0;
    int refreshes = 0;

protected:
    void load_internal() override
    {
        ++loads;
        createContentWidget(uiFile_);
    }
    void refresh_internal() override { ++refreshes; }
    bool monitorSelectionChange() override { return monitors_; }

private:
    QString uiFile_;
    bool monitors_;
};

class Factory : public TP_ToolPropertiesPanelFactory {
public:
    Factory(CX_ToolIds::ID tool, QString uiFile, int *calls) : tool_(tool), uiFile_(std::move(uiFile)), calls_(calls) {}
    void create(TP_ToolPropertiesReceiver *receiver) override
    {
        ++*calls_;
        auto *panel = new CountingPanel(receiver, uiFile_, true);
        panel->load();
        registerPanelForTool(receiver, tool_, panel);
        addPanelInPlaceholder(receiver, panel);
    }

private:
    CX_ToolIds::ID tool_;
    QString uiFile_;
    int *calls_;
};

class ToolProperties : public ::testing::Test {
protected:
    void TearDown() override { TP_ToolPropertiesPanelFactory::clearPanelFactories(); }
    QTemporaryDir dir;
};

TEST_F(ToolProperties, FactoriesAreCalledForEveryReceiverWhenEverEitherComes)
{
    int callsA = 0, callsB = 0;
    TP_ToolPropertiesReceiver early;
    TP_ToolPropertiesPanelFactory::addPanelFactory(std::make_unique<Factory>(kToolA, writeUi(dir, "alpha"), &callsA));
    EXPECT_EQ(callsA, 1);
    TP_ToolPropertiesReceiver late;
    EXPECT_EQ(callsA, 2);
    TP_ToolPropertiesPanelFactory::addPanelFactory(std::make_unique<Factory>(kToolB, writeUi(dir, "beta"), &callsB));
    EXPECT_EQ(callsB, 2);
    TP_ToolPropertiesPanelFactory::addPanelFactory(nullptr);
    EXPECT_EQ(TP_ToolPropertiesPanelFactory::panelFactoryCount(), 2);

    ASSERT_NE(late.panelForTool(kToolA), nullptr);
    ASSERT_NE(late.panelForTool(kToolB), nullptr);
    EXPECT_NE(late.panelForTool(kToolA), early.panelForTool(kToolA));
    QLabel *caption = late.panelForTool(kToolB)->contentWidget()->findChild<QLabel *>("caption");
    ASSERT_NE(caption, nullptr);
    EXPECT_EQ(caption->text(), "beta");
}

TEST_F(ToolProperties, TheCurrentToolsPanelIsShownAndRefreshedAndNoOtherIs)
{
    int calls = 0;
    TP_ToolPropertiesReceiver receiver;
    TP_ToolPropertiesPanelFactory::addPanelFactory(std::make_unique<Factory>(kToolA, writeUi(dir, "alpha"), &calls));
    auto *panel = static_cast<CountingPanel *>(receiver.panelForTool(kToolA));
    ASSERT_NE(panel, nullptr);
    panel->load();  // a second load builds nothing
    EXPECT_EQ(panel->loads, 1);
    EXPECT_FALSE(panel->isShown());

    panel->updateStatus();  // not shown: no refresh
    EXPECT_EQ(panel->refreshes, 0);
    receiver.setCurrentTool(kToolA);
    EXPECT_TRUE(panel->isShown());
    EXPECT_EQ(panel->refreshes, 1);
    auto *stack = receiver.findChild<QStackedWidget *>();
    ASSERT_NE(stack, nullptr);
    EXPECT_EQ(stack->currentWidget(), panel->contentWidget());
    panel->updateStatus();
    receiver.selectionChanged();
    EXPECT_EQ(panel->refreshes, 3);

    receiver.setCurrentTool(kToolB);  // no panel: the empty page
    EXPECT_EQ(receiver.currentPanel(), nullptr);
    EXPECT_NE(stack->currentWidget(), panel->contentWidget());
    receiver.selectionChanged();
    EXPECT_EQ(panel->refreshes, 3);
}

TEST_F(ToolProperties, AMissingFormGivesNoContentAndASecondPanelReplacesTheFirst)
{
    TP_ToolPropertiesReceiver receiver;
    auto *broken = new CountingPanel(&receiver, dir.filePath("missing.ui"));
    broken->load();
    EXPECT_EQ(broken->contentWidget(), nullptr);
    TP_ToolPropertiesPanelFactory::registerPanelForTool(&receiver, kToolA, broken);
    TP_ToolPropertiesPanelFactory::addPanelInPlaceholder(&receiver, broken);
    receiver.setCurrentTool(kToolA);  // shows the empty page, refreshes the panel
    EXPECT_EQ(broken->refreshes, 1);

    QPointer<CountingPanel> first(broken);
    auto *second = new CountingPanel(&receiver, writeUi(dir, "gamma"));
    second->load();
    TP_ToolPropertiesPanelFactory::registerPanelForTool(&receiver, kToolA, second);
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(receiver.panelForTool(kToolA), second);

    TP_ToolPropertiesPanelFactory::registerPanelForTool(nullptr, kToolA, second);
    TP_ToolPropertiesPanelFactory::registerPanelForTool(&receiver, kToolB, nullptr);
    EXPECT_EQ(receiver.panelForTool(kToolB), nullptr);
}

} // namespace
