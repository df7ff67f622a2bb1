#include "registry/VQMModuleC.h"

#include <stdio.h>
#include <stdlib.h>

/* The module object: the record that the start-up knows, then the module's own fields. */
typedef struct
{
    VQMModuleObject object;
    int id;
    int switchings;
} Relay;

/* The description, with the values of CMakeLists.txt. */
static const VQMModuleInfo info = VQM_MODULE_INFO;

/* The module's work */

static int initialize(VQMModuleObject *self, VQMAnchorInterface *anchor, int parts)
{
    (void)anchor;
    (void)parts;
    ((Relay *)self)->switchings = 1;
    fputs("Relay: closed\n", stderr);
    return 0; /* any other value is reported as the error code */
}

static void terminate(VQMModuleObject *self, VQMAnchorInterface *anchor)
{
    (void)anchor;
    fprintf(stderr, "Relay: open, switched %d times\n", ++((Relay *)self)->switchings);
}

/* Its answers about itself */

static void destroyVersion(VQMModuleVersion *self)
{
    (void)self; /* lasts as long as the library */
}

static VQMModuleVersion *getInterfaceVersion(VQMModuleObject *self)
{
    static const VQMModuleVersionOperations operations = {destroyVersion, destroyVersion};
    static VQMModuleVersion version = {&operations, 1, 0, 0};
    (void)self;
    return &version;
}

static const char *getModuleName(VQMModuleObject *self)
{
    (void)self;
    return info.name;
}

static int getModuleId(VQMModuleObject *self)
{
    return ((Relay *)self)->id;
}

/* What every module needs, and this one has no use for */

static void destroy(VQMModuleObject *self)
{
    (void)self;
}

static void destroyAndFree(VQMModuleObject *self)
{
    free(self);
}

static void stage(VQMModuleObject *self)
{
    (void)self;
}

static void stageOfParts(VQMModuleObject *self, int parts)
{
    (void)self;
    (void)parts;
}

static void *getMainWidget(VQMModuleObject *self)
{
    (void)self;
    return NULL;
}

static void startGui(VQMModuleObject *self, VQMAnchorInterface *anchor)
{
    (void)self;
    (void)anchor;
}

static const VQMModuleOperations operations = {
    .destroy = destroy,
    .destroyAndFree = destroyAndFree,
    .getInterfaceVersion = getInterfaceVersion,
    .getModuleName = getModuleName,
    .getModuleId = getModuleId,
    .initialize = initialize,
    .terminate = terminate,
    .modulesFinished = stage,
    .loadablesFinished = stageOfParts,
    .pluginsFinished = stageOfParts,
    .pluginLoadablesFinished = stageOfParts,
    .completeFinished = stage,
    .terminateModules = stage,
    .terminateLoadables = stage,
    .terminatePlugins = stage,
    .terminatePluginLoadables = stage,
    .reserved16 = stage,
    .reserved17 = stage,
    .getMainWidget = getMainWidget,
    .reserved19 = stage,
    .reserved20 = stage,
    .startGui = startGui,
};

/* The entry points of the library */

const VQMModuleInfo *VQMGetModuleInfo(void)
{
    return &info;
}

VQMModuleObject *VQMCreateModuleInterfaceInstance(int id)
{
    Relay *relay = calloc(1, sizeof *relay);
    if (relay == NULL)
        return NULL;
    relay->object.operations = &operations;
    relay->id = id;
    return (VQMModuleObject *)relay;
}
