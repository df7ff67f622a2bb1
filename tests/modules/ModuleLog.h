#pragma once

/* The log that all test modules share, C and C++ alike. */

#ifndef _GNU_SOURCE
#define _GNU_SOURCE /* dladdr */
#endif

#include <dlfcn.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Exported by the unit tests; absent when the module runs in another program. */
void testModuleLog(const char *line) __attribute__((weak));

#ifdef __cplusplus
}
#endif

/* The base name of this module's own file, without ".so". */
static const char *moduleFile(void)
{
    static char name[64];
    Dl_info self;
    if (name[0] == '\0' && dladdr(name, &self) != 0) {
        const char *slash = strrchr(self.dli_fname, '/');
        snprintf(name, sizeof name, "%s", slash != NULL ? slash + 1 : self.dli_fname);
        name[strcspn(name, ".")] = '\0';
    }
    return name;
}

/* Raises the signal when VQM_TEST_DIES_IN, "<signal> <file> <operation>", names what the line begins with. */
static void dieIn(const char *line)
{
    const char *where = getenv("VQM_TEST_DIES_IN");
    if (where == NULL)
        return;
    char *operation;
    const int number = (int)strtol(where, &operation, 10);
    if (strncmp(line, operation + 1, strlen(operation + 1)) == 0)
        raise(number);
}

/* Logs "<file> <text>": to the test's process, or by appending to the file that VQM_TEST_MODULE_LOG names. */
__attribute__((format(printf, 1, 2))) static void moduleLog(const char *format, ...)
{
    char line[200];
    const int length = snprintf(line, sizeof line, "%s ", moduleFile());
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line + length, sizeof line - (size_t)length, format, arguments);
    va_end(arguments);
    if (testModuleLog != NULL) {
        testModuleLog(line);
        return;
    }
    dieIn(line);
    const char *fileName = getenv("VQM_TEST_MODULE_LOG");
    FILE *file = fileName != NULL ? fopen(fileName, "a") : NULL;
    if (file != NULL) {
        fprintf(file, "%s\n", line);
        fclose(file);
    }
}
