/* The floor: what a start of modules costs in a C program that has nothing else to do.
 *
 *   bare-start discover FILE...    opens the libraries, asks for both entry points and calls them;
 *                                  prints the nanoseconds
 *   bare-start whole CONFIGURATION reads the list with expat, opens, sorts by id, initializes, announces all
 *                                  stages, terminates and closes
 *   bare-start beside LIBRARY ...  either in a process that has this library, and what it needs, open
 */

#include "registry/VQMModuleC.h"

#include <dlfcn.h>
#include <expat.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

typedef struct
{
    int id;
    char name[32];
    void *library;
    VQMModuleObject *object;
} Module;

static int64_t now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (int64_t)time.tv_sec * 1000000000 + time.tv_nsec;
}

static Module open_module(const char *path)
{
    Module module = {0, "", dlopen(path, RTLD_NOW | RTLD_LOCAL), NULL};
    const VQMModuleInfo *(*describe)(void) = NULL;
    VQMModuleObject *(*create)(int) = NULL;
    if (module.library != NULL) {
        *(void **)&describe = dlsym(module.library, "VQMGetModuleInfo");
        *(void **)&create = dlsym(module.library, "VQMCreateModuleInterfaceInstance");
    }
    if (describe == NULL || create == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        exit(1);
    }
    module.id = describe()->defaultId;
    module.object = create(module.id);
    return module;
}

static int discover(char **paths)
{
    const int64_t begin = now();
    for (; *paths != NULL; ++paths)
        open_module(*paths);
    printf("%lld\n", (long long)(now() - begin));
    return 0;
}

typedef struct
{
    char *folder;
    size_t count, capacity;
    Module *modules;
} Table;

static const char *attribute(const XML_Char **attributes, const char *name)
{
    while (*attributes != NULL && strcmp(*attributes, name) != 0)
        attributes += 2;
    return *attributes != NULL ? attributes[1] : "";
}

static void XMLCALL start_element(void *data, const XML_Char *name, const XML_Char **attributes)
{
    Table *table = data;
    char path[4096];
    if (strcmp(name, "Directory") == 0)
        table->folder = strdup(attribute(attributes, "nameLinux"));
    if (strcmp(name, "File") != 0)
        return;
    if (table->count == table->capacity) {
        table->capacity = table->capacity * 2 + 16;
        table->modules = realloc(table->modules, table->capacity * sizeof(Module));
    }
    snprintf(path, sizeof path, "%s/%s", table->folder, attribute(attributes, "name"));
    Module module = open_module(path);
    module.object->operations->getInterfaceVersion(module.object);
    strncpy(module.name, module.object->operations->getModuleName(module.object), sizeof module.name - 1);
    module.id = module.object->operations->getModuleId(module.object);
    table->modules[table->count++] = module;
}

static int compare_ids(const void *left, const void *right)
{
    const int a = ((const Module *)left)->id, b = ((const Module *)right)->id;
    return (a > b) - (a < b);
}

static Table read_list(const char *name)
{
    Table table = {NULL, 0, 0, NULL};
    FILE *file = fopen(name, "rb");
    XML_Parser parser = XML_ParserCreate(NULL);
    char buffer[65536];
    size_t length;
    XML_SetUserData(parser, &table);
    XML_SetStartElementHandler(parser, start_element);
    while ((length = file != NULL ? fread(buffer, 1, sizeof buffer, file) : 0) > 0)
        if (XML_Parse(parser, buffer, (int)length, 0) != XML_STATUS_OK)
            exit(1);
    if (file == NULL || XML_Parse(parser, buffer, 0, 1) != XML_STATUS_OK)
        exit(1);
    XML_ParserFree(parser);
    fclose(file);
    return table;
}

enum Stage
{
    ModulesFinished,
    LoadablesFinished,
    PluginsFinished,
    PluginLoadablesFinished,
    CompleteFinished,
    TerminateModules,
    TerminateLoadables,
    TerminatePlugins,
    TerminatePluginLoadables
};

/* As the start-up announces them to base modules, see docs/start-up.md. */
static const enum Stage startStages[] = {ModulesFinished,         LoadablesFinished, PluginsFinished,
                                         PluginLoadablesFinished, LoadablesFinished, PluginsFinished,
                                         PluginLoadablesFinished, CompleteFinished};
static const enum Stage shutdownStages[] = {TerminatePluginLoadables, TerminatePlugins, TerminateLoadables,
                                            TerminateModules, TerminateModules};

static void announce(const Table *table, enum Stage stage)
{
    for (size_t i = 0; i < table->count; ++i) {
        VQMModuleObject *object = table->modules[i].object;
        switch (stage) {
        case ModulesFinished:
            object->operations->modulesFinished(object);
            break;
        case LoadablesFinished:
            object->operations->loadablesFinished(object, 0);
            break;
        case PluginsFinished:
            object->operations->pluginsFinished(object, 0);
            break;
        case PluginLoadablesFinished:
            object->operations->pluginLoadablesFinished(object, 0);
            break;
        case CompleteFinished:
            object->operations->completeFinished(object);
            break;
        case TerminateModules:
            object->operations->terminateModules(object);
            break;
        case TerminateLoadables:
            object->operations->terminateLoadables(object);
            break;
        case TerminatePlugins:
            object->operations->terminatePlugins(object);
            break;
        case TerminatePluginLoadables:
            object->operations->terminatePluginLoadables(object);
            break;
        }
    }
}

static int whole(const char *name)
{
    Table table = read_list(name);
    qsort(table.modules, table.count, sizeof(Module), compare_ids);
    for (size_t i = 0; i < table.count; ++i)
        if (table.modules[i].object->operations->initialize(table.modules[i].object, NULL, -1) != 0)
            exit(1);
    for (size_t i = 0; i < sizeof startStages / sizeof *startStages; ++i)
        announce(&table, startStages[i]);
    for (size_t i = 0; i < sizeof shutdownStages / sizeof *shutdownStages; ++i)
        announce(&table, shutdownStages[i]);
    for (size_t i = table.count; i-- > 0;) {
        table.modules[i].object->operations->terminate(table.modules[i].object, NULL);
        table.modules[i].object->operations->destroyAndFree(table.modules[i].object);
    }
    for (size_t i = table.count; i-- > 0;)
        dlclose(table.modules[i].library);
    return 0;
}

int main(int argc, char **argv)
{
    if (argc > 3 && strcmp(argv[1], "beside") == 0) {
        /* cppcheck-suppress leakReturnValNotUsed ; open as long as the process lives */
        if (dlopen(argv[2], RTLD_NOW | RTLD_LOCAL) == NULL) {
            fprintf(stderr, "%s\n", dlerror());
            return 1;
        }
        argc -= 2;
        argv += 2;
    }
    if (argc > 2 && strcmp(argv[1], "discover") == 0)
        return discover(argv + 2);
    if (argc == 3 && strcmp(argv[1], "whole") == 0)
        return whole(argv[2]);
    return 2;
}
