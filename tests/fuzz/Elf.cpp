#include "diagnosis/ElfLibrary.h"
#include "diagnosis/ModuleInspection.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>

// A file that is said to be a module library: its headers, tables and notes, and what it needs.

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace Orvia;
    const TimeLimit limit;
    static InputFile file;
    file.write(data, size);
    const ElfLibrary library = readElfLibrary(file.name(), ElfSymbols::Read);
    const ElfLibrary again = readElfLibrary(file.name(), ElfSymbols::Skip);
    require(library.rule == again.rule && library.kind == again.kind && library.needed == again.needed &&
                library.runpath == again.runpath && library.moduleNotes == again.moduleNotes,
            "the library read twice is the same");
    require(again.functions.isEmpty() && again.uniqueSymbols.isEmpty(),
            "no symbols are read unless asked for");
    require(library.rule.isEmpty() == library.problem.isEmpty(), "a problem has a rule and a text");

    const FileInspection inspection = inspectModuleFile(file.name());
    require(inspection.isLibrary == library.rule.isEmpty() && inspection.needed == library.needed,
            "the inspection is about the same library");
    require(inspection.isLibrary || inspection.findings.size() == 1, "what is no library has one finding");
    require(!inspection.note || library.moduleNotes.size() == 1, "a note is read where there is one");
    for (const Finding &finding : inspection.findings) {
        const QString text = toText(finding);
        require(!finding.rule.isEmpty() && !finding.text.isEmpty(), "a finding has a rule and a text");
        require(std::none_of(text.begin(), text.end(),
                             [](QChar c) { return c.category() == QChar::Other_Control; }),
                "a finding is one line of text");
    }
    return 0;
}
