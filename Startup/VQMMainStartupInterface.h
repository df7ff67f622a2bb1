#pragma once

#include "platform/Export.h"
#include "registry/VQMModuleContract.h"

namespace Orvia {

/// The startup object as other parts of the firmware know it: a module that also takes the others down.
class VQM_EXPORT VQMMainStartupInterface : public VQMModuleInterface
{
public:
    virtual HwESigGenFamily getTargetId() = 0;
    virtual void modulesTerminate() = 0;
    virtual void freeResources() = 0;
    virtual void destroyAnnouncement(int id) = 0;
    virtual void destroyAllAnnouncements() = 0;
};

} // namespace Orvia
