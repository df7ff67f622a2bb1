/* The hardware repository and its unit as another build of the hardware abstraction layer provides them:
 * virtual tables by hand, from position 0 on. Each call is logged with its position. */

#include <stdio.h>

typedef void (*Operation)(void);

typedef struct
{
    const Operation *positions;
    int code;
    int hasUnit;
} Object;

void testModuleLog(const char *line);
void *handMadeRepository(int code, int hasUnit);

static void reserved(Object *self)
{
    (void)self;
    testModuleLog("reserved position");
}

static void setReady(Object *self, int ready)
{
    char line[40];
    (void)self;
    snprintf(line, sizeof line, "unit position 1 %d", ready);
    testModuleLog(line);
}

static Object *unit(Object *self, int index)
{
    static const Operation positions[2] = {(Operation)reserved, (Operation)setReady};
    static Object theUnit = {positions, 0, 0};
    char line[40];
    snprintf(line, sizeof line, "repository position 27 %d", index);
    testModuleLog(line);
    return self->hasUnit ? &theUnit : NULL;
}

static int code(Object *self)
{
    testModuleLog("repository position 6");
    return self->code;
}

void *handMadeRepository(int codeToAnswer, int hasUnit)
{
    static Operation positions[28];
    static Object repository = {positions, 0, 0};
    for (int position = 0; position < 28; ++position)
        positions[position] = (Operation)reserved;
    positions[6] = (Operation)code;
    positions[27] = (Operation)unit;
    repository.code = codeToAnswer;
    repository.hasUnit = hasUnit;
    return &repository;
}
