#include "AH_TracingActions.h"

#include "AH_TracingActionsResponders.h"
#include "AH_Workspace.h"
#include "action/AC_Manager.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "tool/TO_AbstractToolContext.h"
#include "view/VW_View.h"

AH_OnionSkinResponder::AH_OnionSkinResponder(AH_Workspace &workspace)
    : AC_ResponderTemplateObject(QStringLiteral("onionSkinResponder")), workspace_(workspace)
{
    setResponderDescription(QObject::tr("Onion skin"));
}

void AH_OnionSkinResponder::onActionOnionSkinToggle()
{
    VW_View *view = workspace_.view();
    view->setOnionSkin(!view->onionSkin());
}

void AH_OnionSkinResponder::onActionOnionSkinToggleValidate(AC_ActionInfo *info)
{
    info->setEnabled(true);
    info->setChecked(workspace_.view()->onionSkin());
}

AH_TracingResponder::AH_TracingResponder(AH_Workspace &workspace)
    : AC_ResponderTemplateObject(QStringLiteral("tracingResponder")), workspace_(workspace)
{
    setResponderDescription(QObject::tr("Views and drawings"));
}

void AH_TracingResponder::onActionCameraView()
{
    workspace_.view()->setViewKind(TO_AbstractToolContext::CameraView);
}

void AH_TracingResponder::onActionCameraViewValidate(AC_ActionInfo *info)
{
    info->setEnabled(true);
    info->setChecked(workspace_.view()->viewKind() == TO_AbstractToolContext::CameraView);
}

void AH_TracingResponder::onActionDrawingView()
{
    workspace_.view()->setViewKind(TO_AbstractToolContext::DrawingView);
}

void AH_TracingResponder::onActionDrawingViewValidate(AC_ActionInfo *info)
{
    info->setEnabled(true);
    info->setChecked(workspace_.view()->viewKind() == TO_AbstractToolContext::DrawingView);
}

void AH_TracingResponder::onActionNewDrawing()
{
    workspace_.newDrawing(nullptr);
}

void AH_TracingResponder::onActionNewDrawingValidate(AC_ActionInfo *info)
{
    info->setEnabled(SL_SelectionUtil::getFirstElement(workspace_.session()->getSelection()) != nullptr);
}

struct AH_TracingActions::Impl {
    explicit Impl(AH_Workspace &workspace) : onionSkin(workspace), tracing(workspace) {}
    AH_OnionSkinResponder onionSkin;
    AH_TracingResponder tracing;
};

AH_TracingActions::AH_TracingActions(AH_Workspace &workspace, AC_Manager *actions) : d_(std::make_unique<Impl>(workspace))
{
    d_->onionSkin.initActionManager(actions);
    d_->tracing.initActionManager(actions);
    // Menus and toolbars show the new states.
    auto refresh = [actions] {
        if (actions)
            actions->refreshActionStates();
    };
    QObject::connect(workspace.view(), &VW_View::onionSkinChanged, &d_->onionSkin, refresh);
    QObject::connect(workspace.view(), &VW_View::viewKindChanged, &d_->tracing, refresh);
}

AH_TracingActions::~AH_TracingActions() = default;
