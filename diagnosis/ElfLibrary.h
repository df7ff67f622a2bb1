#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

namespace Orvia {

/// What an ELF file says of itself that matters to those who load it.
struct ElfLibrary
{
    QString rule; ///< why it is no shared library for this process, as a rule of findings; empty: it is one
    QString problem; ///< the same in words

    QString kind; ///< class and machine, such as "64-bit x86-64"; known of every ELF file
    QStringList needed;
    QString rpath;          ///< DT_RPATH as it stands
    QString runpath;        ///< DT_RUNPATH as it stands
    bool noDelete = false;  ///< asks the loader to keep it mapped
    bool hasTables = false; ///< has section headers, without which what follows and `needed` are empty

    QList<QByteArray> moduleNotes; ///< what notes of module libraries contain, numbers as in this process
    bool hasDamagedNotes = false;  ///< there are notes that cannot be told apart

    QSet<QByteArray> functions;      ///< that it exports; empty unless asked for
    QList<QByteArray> uniqueSymbols; ///< that it defines as unique in the process; empty unless asked for
};

enum class ElfSymbols
{
    Read,
    Skip,
};

/// Reads the file; opens nothing but regular files, and believes none of its offsets. Any thread.
ElfLibrary readElfLibrary(const QString &path, ElfSymbols symbols);

} // namespace Orvia
