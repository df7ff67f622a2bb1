/* The note of a module library, as registry/VQMModuleContract.h describes it; C as well as C++. Its values
 * are those of vqm_add_module(). */

#include "registry/VQMModuleC.h"

#include <stddef.h>
#include <stdint.h>

struct VQMModuleNote
{
    uint32_t ownerSize, size, type;
    char owner[4];
    int32_t contractVersion, major, minor, build, defaultId, moduleType, parts;
    uint32_t families;
    char name[sizeof VQM_MODULE_NAME];
};

/* Linkers keep what is in a section of this kind, and so does strip. */
static const struct VQMModuleNote note __attribute__((section(".note.vqm"), used, aligned(4))) = {
    sizeof note.owner,
    offsetof(struct VQMModuleNote, name) + sizeof note.name - offsetof(struct VQMModuleNote, contractVersion),
    VQM_MODULE_NOTE_TYPE,
    VQM_MODULE_NOTE_OWNER,
    VQM_CONTRACT_VERSION,
    VQM_MODULE_MAJOR,
    VQM_MODULE_MINOR,
    VQM_MODULE_BUILD,
    VQM_MODULE_ID,
    VQM_MODULE_TYPE,
    VQM_MODULE_PARTS,
    VQM_MODULE_FAMILY,
    VQM_MODULE_NAME,
};
