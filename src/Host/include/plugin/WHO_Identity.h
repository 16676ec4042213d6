// Which host application is running. Plug-ins turn features on or off by it.
#pragma once

enum WHO_ApplicationIdentity {
    WHO_UnknownApplication = 0,
    WHO_RenderApplication = 1,     // renders scenes without interactive views
    WHO_AnimationApplication = 2,  // the full animation editor: the reference host
    WHO_DrawingApplication = 3,    // a drawing editor with views and tools but a smaller scene
};

class WHO_Identity {
public:
    // WHO_AnimationApplication unless set otherwise.
    static WHO_ApplicationIdentity application();
    // For tests and for applications built on the host that present themselves otherwise.
    static void setApplication(WHO_ApplicationIdentity identity);
};
