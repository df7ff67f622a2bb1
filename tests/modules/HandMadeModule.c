/* A module library without C++: the records and the virtual table by hand. Logs which position was called
 * with which argument. */

#include "tests/modules/ModuleLog.h"

#include <stdint.h>

typedef void (*Operation)(void);

typedef struct
{
    const Operation *positions;
    int id;
} Object;

typedef struct
{
    const Operation *positions;
    int32_t numbers[3];
} Version;

typedef struct
{
    int32_t own[2], major, minor, build;
    const char *name;
    int32_t defaultId, moduleType, parts;
    uint32_t targetMask;
} ModuleInfo;

static const ModuleInfo info = {{-1, -1},         VQM_MODULE_MAJOR, VQM_MODULE_MINOR,
                                VQM_MODULE_BUILD, VQM_MODULE_NAME,  VQM_MODULE_ID,
                                VQM_MODULE_TYPE,  VQM_MODULE_PARTS, VQM_MODULE_FAMILY};

/* The widget that position 18 answers; of the unit tests. */
void *testMainWidget(void) __attribute__((weak));

static void destroy(Object *self)
{
    (void)self;
    moduleLog("position 0");
}
static void deletingDestroy(Object *self)
{
    moduleLog("position 1");
    free(self);
}
static Version *getInterfaceVersion(Object *self)
{
    static const Operation destructors[2] = {(Operation)destroy, (Operation)destroy};
    static Version version = {destructors, {0, 20, 100}};
    (void)self;
    moduleLog("position 2");
    return &version;
}
static const char *getModuleName(Object *self)
{
    (void)self;
    moduleLog("position 3");
    return info.name;
}
static int getModuleId(Object *self)
{
    moduleLog("position 4");
    return self->id;
}
static int initialize(Object *self, void *anchor, int parts)
{
    (void)self;
    moduleLog("position 5 %p %d", anchor, parts);
    return 0;
}
static void terminate(Object *self, void *anchor)
{
    (void)self;
    moduleLog("position 6 %p", anchor);
}

#define PLAIN(position)                                                                                      \
    static void plain##position(Object *self)                                                                \
    {                                                                                                        \
        (void)self;                                                                                          \
        moduleLog("position " #position);                                                                    \
    }
#define WITH_PARTS(position)                                                                                 \
    static void withParts##position(Object *self, int parts)                                                 \
    {                                                                                                        \
        (void)self;                                                                                          \
        moduleLog("position " #position " %d", parts);                                                       \
    }
PLAIN(7)
WITH_PARTS(8)
WITH_PARTS(9)
WITH_PARTS(10)
PLAIN(11)
PLAIN(12)
PLAIN(13)
PLAIN(14)
PLAIN(15)

static void reserved(Object *self)
{
    (void)self;
    moduleLog("reserved position");
}
static void *getMainWidget(Object *self)
{
    (void)self;
    moduleLog("position 18");
    return testMainWidget != NULL ? testMainWidget() : NULL;
}
static void startGui(Object *self, void *anchor)
{
    (void)self;
    moduleLog("position 21 %p", anchor);
}

static const Operation positions[22] = {
    (Operation)destroy,       (Operation)deletingDestroy, (Operation)getInterfaceVersion,
    (Operation)getModuleName, (Operation)getModuleId,     (Operation)initialize,
    (Operation)terminate,     (Operation)plain7,          (Operation)withParts8,
    (Operation)withParts9,    (Operation)withParts10,     (Operation)plain11,
    (Operation)plain12,       (Operation)plain13,         (Operation)plain14,
    (Operation)plain15,       (Operation)reserved,        (Operation)reserved,
    (Operation)getMainWidget, (Operation)reserved,        (Operation)reserved,
    (Operation)startGui,
};

__attribute__((visibility("default"))) const ModuleInfo *VQMGetModuleInfo(void)
{
    return &info;
}

__attribute__((visibility("default"))) Object *VQMCreateModuleInterfaceInstance(int id)
{
    Object *object = malloc(sizeof *object);
    if (object != NULL) {
        object->positions = positions;
        object->id = id;
    }
    return object;
}
