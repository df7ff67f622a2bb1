#include "diagnosis/ModuleNotes.h"

#include "diagnosis/ElfLibrary.h"
#include "registry/VQMModuleContract.h"

#include <array>
#include <cstring>

namespace Orvia {

namespace {

std::optional<ModuleNote> parse(const QByteArray &contents)
{
    std::array<std::int32_t, 8> words;
    const qsizetype nameAt = sizeof words;
    const qsizetype nameEnd = contents.indexOf('\0', nameAt);
    if (nameEnd < 0)
        return std::nullopt;
    std::memcpy(words.data(), contents.constData(), sizeof words);
    const auto &[contract, major, minor, build, defaultId, moduleType, parts, families] = words;
    const QString name = "" + QString::fromLocal8Bit(contents.mid(nameAt, nameEnd - nameAt)); // never null
    return ModuleNote{
        contract,
        {{major, minor, build}, name, defaultId, moduleType, parts, static_cast<std::uint32_t>(families)}};
}

QString inWords(const ModuleProbe::Version &version)
{
    return QString("%1.%2.%3").arg(version.major).arg(version.minor).arg(version.build);
}

QString inWords(std::uint32_t bits)
{
    return "0x" + QString::number(bits, 16);
}

} // namespace

std::optional<ModuleNote> readModuleNote(const QString &file, const ElfLibrary &library, Findings *findings)
{
    const auto add = [&](const char *rule, const QString &text) {
        findings->append({Finding::Severity::Defect, rule, file, 0, 0, text});
    };
    const qsizetype count = library.moduleNotes.size();
    if (library.hasDamagedNotes)
        add("note-malformed", "has notes that are not as long as they say");
    if (count > 1)
        add("note-malformed", QString("has %1 module notes instead of one").arg(count));
    if (library.hasDamagedNotes || count != 1)
        return std::nullopt;
    std::optional<ModuleNote> note = parse(library.moduleNotes.first());
    if (!note)
        add("note-malformed", "has a module note that is cut off");
    else if (note->contractVersion != contractVersion)
        add("contract-version",
            QString("was built with version %1 of the module contract; this is version %2")
                .arg(note->contractVersion)
                .arg(contractVersion));
    return note;
}

Findings compareWithNote(const QString &path, const ModuleNote &note, const ModuleProbe::Record &record)
{
    Findings findings;
    const auto compare = [&](const char *what, const QString &noted, const QString &recorded) {
        if (noted != recorded)
            findings.append({Finding::Severity::Defect, "note-differs", path, 0, 0,
                             QString("its note says %1 %2, its record %3").arg(what, noted, recorded)});
    };
    const auto bits = [](int value) { return inWords(static_cast<std::uint32_t>(value)); };
    const ModuleProbe::Record &noted = note.record;
    compare("name", '"' + noted.name + '"', record.name.isNull() ? "no name" : '"' + record.name + '"');
    compare("version", inWords(noted.version), inWords(record.version));
    compare("type", bits(noted.moduleType), bits(record.moduleType));
    compare("parts", bits(noted.parts), bits(record.parts));
    compare("families", inWords(noted.families), inWords(record.families));
    compare("id", QString::number(noted.defaultId), QString::number(record.defaultId));
    return findings;
}

} // namespace Orvia
