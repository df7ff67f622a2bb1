#pragma once

/* The log that all test modules share, C and C++ alike. NOLINTBEGIN(modernize-use-nullptr) */

#ifndef _GNU_SOURCE
#define _GNU_SOURCE /* the C library's name; dladdr. NOLINT(bugprone-reserved-identifier) */
#endif

#include <dlfcn.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#ifdef __cplusplus
#include <stdexcept>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Exported by the unit tests; absent when the module runs in another program. */
void testModuleLog(const char *line) __attribute__((weak));

/* Of modules that know the library. */
void testModuleCallsBack(void) __attribute__((weak));

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

/* What a module itself has to do to misbehave as it was asked to. */
enum Misbehaviour
{
    NoMisbehaviour,
    Fails,
    DeletesItself
};

/* VQM_TEST_MISBEHAVES is "HOW FILE OPERATION". When the line is about that, does what HOW says or has it
 * done:
 * - a number: raises this signal
 * - hang: waits for 300 ms
 * - remove=PATH: removes this file
 * - throw: throws a std::exception with FILE as its text; with throw-int the number 5
 * - call-back: calls back into the library, where the module has something to do so
 * - fail, delete-itself: is for the caller to do */
static enum Misbehaviour misbehave(const char *line)
{
    const char *how = getenv("VQM_TEST_MISBEHAVES");
    const char *where = how != NULL ? strchr(how, ' ') : NULL;
    if (where == NULL)
        return NoMisbehaviour;
    const size_t length = strlen(++where);
    if (strncmp(line, where, length) != 0 || (line[length] != '\0' && line[length] != ' '))
        return NoMisbehaviour;
    if (*how >= '0' && *how <= '9')
        raise((int)strtol(how, NULL, 10));
    else if (strncmp(how, "hang ", 5) == 0)
        usleep(300000);
    else if (strncmp(how, "remove=", 7) == 0) {
        char path[1000];
        snprintf(path, sizeof path, "%.*s", (int)(where - 1 - how - 7), how + 7);
        unlink(path);
    } else if (strncmp(how, "fail ", 5) == 0)
        return Fails;
    else if (strncmp(how, "delete-itself ", 14) == 0)
        return DeletesItself;
#ifdef __cplusplus
    else if (strncmp(how, "throw ", 6) == 0)
        throw std::runtime_error(moduleFile());
    else if (strncmp(how, "throw-int ", 10) == 0)
        throw 5;
#endif
    else if (strncmp(how, "call-back ", 10) == 0 && testModuleCallsBack != NULL)
        testModuleCallsBack();
    return NoMisbehaviour;
}

/* Logs "<file> <text>": to the test's process, or by appending to the file that VQM_TEST_MODULE_LOG names. */
__attribute__((format(printf, 1, 2))) static enum Misbehaviour moduleLog(const char *format, ...)
{
    char line[200];
    const int length = snprintf(line, sizeof line, "%s ", moduleFile());
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line + length, sizeof line - (size_t)length, format, arguments);
    va_end(arguments);
    if (testModuleLog != NULL) {
        testModuleLog(line);
        return NoMisbehaviour;
    }
    const char *fileName = getenv("VQM_TEST_MODULE_LOG");
    FILE *file = fileName != NULL ? fopen(fileName, "a") : NULL;
    if (file != NULL) {
        fprintf(file, "%s\n", line);
        fclose(file);
    }
    return misbehave(line);
}

/* NOLINTEND(modernize-use-nullptr) */
