#include "plugin/WHO_Identity.h"

namespace {

WHO_ApplicationIdentity &applicationIdentity()
{
    static WHO_ApplicationIdentity identity = WHO_AnimationApplication;
    return identity;
}

}  // namespace

WHO_ApplicationIdentity WHO_Identity::application()
{
    return applicationIdentity();
}

void WHO_Identity::setApplication(WHO_ApplicationIdentity identity)
{
    applicationIdentity() = identity;
}
