#ifndef VQM_MODULE_C_H
#define VQM_MODULE_C_H

/* The contract between the start-up library and module libraries, for modules in C. What its records and
 * operations mean, and who calls them when on which thread, stands in registry/VQMModuleContract.h; this is
 * the same binary interface. examples/module-template-c/ is a module made with it. */

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VQM_CONTRACT_VERSION 1
#define VQM_MODULE_NOTE_OWNER "VQM"
#define VQM_MODULE_NOTE_TYPE 1

/* Bits of the parts mask of initialize() and of the stages */
enum
{
    VQMDatabasePart = 0x1,
    VQMScpiPart = 0x2,
    VQMGuiPart = 0x4
};

typedef struct VQMModuleObject VQMModuleObject;
typedef struct VQMModuleVersion VQMModuleVersion;
typedef struct VQMAnchorInterface VQMAnchorInterface;

typedef struct
{
    int32_t own[2], major, minor, build;
    const char *name;
    int32_t defaultId, moduleType, parts;
    uint32_t targetMask;
} VQMModuleInfo;

typedef struct
{
    void (*destroy)(VQMModuleVersion *self);
    void (*destroyAndFree)(VQMModuleVersion *self);
} VQMModuleVersionOperations;

/* Nobody destroys the one that getInterfaceVersion() answers. */
struct VQMModuleVersion
{
    const VQMModuleVersionOperations *operations;
    int32_t major, minor, build;
};

/* What a module object can do. None may be null: the start-up announces every stage to every module, and
 * destroys objects by destroyAndFree. */
typedef struct
{
    void (*destroy)(VQMModuleObject *self);
    void (*destroyAndFree)(VQMModuleObject *self);
    VQMModuleVersion *(*getInterfaceVersion)(VQMModuleObject *self);
    const char *(*getModuleName)(VQMModuleObject *self);
    int (*getModuleId)(VQMModuleObject *self);
    int (*initialize)(VQMModuleObject *self, VQMAnchorInterface *anchor, int parts);
    void (*terminate)(VQMModuleObject *self, VQMAnchorInterface *anchor);
    void (*modulesFinished)(VQMModuleObject *self);
    void (*loadablesFinished)(VQMModuleObject *self, int parts);
    void (*pluginsFinished)(VQMModuleObject *self, int parts);
    void (*pluginLoadablesFinished)(VQMModuleObject *self, int parts);
    void (*completeFinished)(VQMModuleObject *self);
    void (*terminateModules)(VQMModuleObject *self);
    void (*terminateLoadables)(VQMModuleObject *self);
    void (*terminatePlugins)(VQMModuleObject *self);
    void (*terminatePluginLoadables)(VQMModuleObject *self);
    void (*reserved16)(VQMModuleObject *self);
    void (*reserved17)(VQMModuleObject *self);
    void *(*getMainWidget)(VQMModuleObject *self);
    void (*reserved19)(VQMModuleObject *self);
    void (*reserved20)(VQMModuleObject *self);
    void (*startGui)(VQMModuleObject *self, VQMAnchorInterface *anchor);
} VQMModuleOperations;

/* A module object; the module's own fields come behind, in a record that begins with this one. */
struct VQMModuleObject
{
    const VQMModuleOperations *operations;
};

struct VQMAnchorInterface
{
    void *creator[3];
    VQMModuleObject *guiModule;
    VQMModuleObject *scpiModule;
    VQMModuleObject *databaseModule;
    VQMModuleObject *stageListener;
    void *plugInInterfaces; /* a container of C++ */
};

/* The entry points, which every module library defines. */
__attribute__((visibility("default"))) const VQMModuleInfo *VQMGetModuleInfo(void);
__attribute__((visibility("default"))) VQMModuleObject *VQMCreateModuleInterfaceInstance(int id);

/* The description record as vqm_add_module() was told it. */
#define VQM_MODULE_INFO                                                                                      \
    {                                                                                                        \
        {0, 0}, VQM_MODULE_MAJOR, VQM_MODULE_MINOR, VQM_MODULE_BUILD, VQM_MODULE_NAME, VQM_MODULE_ID,        \
            VQM_MODULE_TYPE, VQM_MODULE_PARTS, VQM_MODULE_FAMILY                                             \
    }

#ifdef __cplusplus
}
#endif

#endif
