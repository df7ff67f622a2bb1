#pragma once

#include "diagnosis/Finding.h"

#include <QStringList>

#include <chrono>
#include <cstdint>
#include <optional>

namespace Orvia {

/// What a module library says of itself when it runs, in a process of its own.
struct ModuleProbe
{
    struct Version
    {
        int major = 0;
        int minor = 0;
        int build = 0;
    };
    /// Its VQMModuleInfo.
    struct Record
    {
        Version version;
        QString name; ///< null when the record names none
        int defaultId = 0;
        int moduleType = 0;
        int parts = 0;
        std::uint32_t families = 0;
    };
    /// What its module object answers.
    struct Object
    {
        int handedId = 0; ///< the id that it was created with
        int id = 0;
        QString name;                            ///< null when it answers none
        std::optional<Version> interfaceVersion; ///< none when it answers a null pointer
    };

    bool complete = false; ///< it got to its end: opened, asked, deleted, closed
    std::optional<Record> record;
    std::optional<Object> object;
    Findings findings; ///< among them, when not complete, the one that says in which step it ended and how
};

/// What a module library's file says of the module, in its note (registry/VQMModuleContract.h).
struct ModuleNote
{
    int contractVersion = 0;
    ModuleProbe::Record record; ///< as it is to be when the library runs; a plug-in's id is of no meaning
};

/// What a module library's file tells without being loaded.
struct FileInspection
{
    bool isLibrary = false; ///< an undamaged shared library of this process's class and machine; else a
                            ///< finding says why not
    QString kind;           ///< class and machine, such as "64-bit x86-64"; empty for what is no ELF file
    QStringList needed;     ///< libraries it needs, by name, in order
    std::optional<ModuleNote> note; ///< none: it has none, or a finding says why it cannot be read
    Findings findings;
};

/// Reads the file as the loader would find it on this machine; nothing of it is executed. Any thread.
FileInspection inspectModuleFile(const QString &path);

/// Rule of the one finding of a probe that could not be made, through no fault of the module.
inline constexpr const char *notProbedRule = "not-probed";
/// The rule of a module whose type discovery drops.
inline constexpr const char *unknownTypeRule = "type-unknown";

/// Opens the library in a child process, takes its record, creates a module object, asks it, deletes it and
/// closes the library. The module is not initialized, and there is no application object. Returns after
/// `limit` a step at the latest, whatever the module does. Any thread.
ModuleProbe probeModule(const QString &path, std::chrono::milliseconds limit);

/// A defect for each value in which the library's note and its record differ.
Findings compareWithNote(const QString &path, const ModuleNote &note, const ModuleProbe::Record &record);

} // namespace Orvia
