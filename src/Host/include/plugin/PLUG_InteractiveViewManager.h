// The host's interactive views, as a plug-in reaches them through
// PLUG_Services::getInteractiveViewManager(): a tool that changed what a frame shows asks the views
// that show it to draw again.
#pragma once

class PLUG_InteractiveViewManager {
public:
    virtual ~PLUG_InteractiveViewManager() = default;
    // Asks every interactive view that shows `frame` to draw again; views at other frames are
    // left alone. Frames are whole: a view at 3.5 shows frame 3.
    virtual void redrawViewsAtFrame(int frame) = 0;
};
