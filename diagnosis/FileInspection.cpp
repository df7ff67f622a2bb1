#include "diagnosis/ElfLibrary.h"
#include "diagnosis/ModuleInspection.h"
#include "diagnosis/ModuleNotes.h"
#include "diagnosis/NeededLibraries.h"
#include "registry/VQMModuleContract.h"

namespace Orvia {

FileInspection inspectModuleFile(const QString &path)
{
    using enum Finding::Severity;
    const ElfLibrary library = readElfLibrary(path, ElfSymbols::Read);
    FileInspection inspection{library.rule.isEmpty(), library.kind, library.needed, {}, {}};
    const auto add = [&](Finding::Severity severity, const char *rule, const QString &text) {
        inspection.findings.append({severity, rule, path, 0, 0, text});
    };
    if (!inspection.isLibrary) {
        inspection.findings.append({Defect, library.rule, path, 0, 0, library.problem});
        return inspection;
    }
    inspection.note = readModuleNote(path, library, &inspection.findings);
    if (!library.hasTables) {
        add(Note, "not-checked", "has no section headers: its symbols and its needs are not checked");
        return inspection;
    }
    for (const char *symbol : {moduleInfoSymbol, createInstanceSymbol}) {
        if (!library.functions.contains(symbol))
            add(Defect, "entry-point-missing", QString("exports no function ") + symbol);
    }
    for (const QString &text : missingLibraries(path, library))
        add(Defect, "library-missing", text);
    if (!library.uniqueSymbols.isEmpty())
        add(Defect, "stays-mapped",
            QString("stays mapped after closing: %1 of its symbols are unique in the process, such as %2 "
                    "(-fno-gnu-unique)")
                .arg(library.uniqueSymbols.size())
                .arg(library.uniqueSymbols.first().constData()));
    else if (library.noDelete)
        add(Note, "stays-mapped", "stays mapped after closing: it was linked with -z nodelete");
    return inspection;
}

} // namespace Orvia
