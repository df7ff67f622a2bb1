#include "Startup/Version.h"

const char VersionVersMain[] = "0.01 beta1";
const char VersionDateMain[] = __DATE__;
const char VersionTimeMain[] = __TIME__;

// The text file as a section of its own, ended by a NUL; "R" keeps the linker from dropping it.
__asm__(".pushsection .fwversion, \"aR\", @progbits\n"
        ".incbin \"Startup/VersionInfo\"\n"
        ".byte 0\n"
        ".popsection\n");
