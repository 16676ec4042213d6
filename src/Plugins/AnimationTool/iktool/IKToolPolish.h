// What the plug-in's polish and unpolish do for the IK tool: shortcuts, menus, resources, actions,
// icons, the panel factory and the preferences. Each service the host may lack is tested first and
// its step skipped without a word. Steps behind a latch (shortcuts, panel factory) run once per
// process; a second polish repeats the others.
#pragma once

namespace IKToolPolish {

void polish();
// Removes the toolbar "newIKToolbar" from the toolbar service; nothing else is undone.
void unpolish();

} // namespace IKToolPolish
