#include "diagnosis/NeededLibraries.h"

#include "diagnosis/ElfLibrary.h"

#include <QFile>
#include <QFileInfo>
#include <QQueue>
#include <QRegularExpression>
#include <QSet>

#include <dlfcn.h>
#include <glob.h>
#include <memory>

namespace Orvia {

namespace {

constexpr int maxIncludes = 10; // deep

/// A library whose needs are looked for.
struct Requester
{
    QString path;
    QStringList needed;
    QStringList ancestralFolders; ///< from RPATH: its own and those of the libraries that led to it
    QStringList runpathFolders;   ///< from RUNPATH
    bool hasRunpath = false;      ///< and so no use for ancestralFolders
};

QStringList split(QString folders, const QString &origin)
{
    folders.replace("${ORIGIN}", origin).replace("$ORIGIN", origin);
    return folders.isEmpty() ? QStringList() : folders.split(':');
}

/// Appends the folders that a file like /etc/ld.so.conf lists.
void appendConfigured(const QString &fileName, QStringList *folders, int depth = 0)
{
    QFile file(fileName);
    if (depth > maxIncludes || !QFileInfo(fileName).isFile() || !file.open(QIODevice::ReadOnly))
        return;
    while (!file.atEnd()) {
        const QString line = QFile::decodeName(file.readLine()).section('#', 0, 0).trimmed();
        if (!line.startsWith("include ")) {
            *folders += line.split(QRegularExpression("[\\s:,]+"), Qt::SkipEmptyParts);
            continue;
        }
        QString pattern = line.mid(8).trimmed();
        if (!pattern.startsWith('/'))
            pattern.prepend(QFileInfo(fileName).path() + '/');
        glob_t matches = {};
        if (::glob(QFile::encodeName(pattern).constData(), 0, nullptr, &matches) == 0) {
            for (std::size_t i = 0; i < matches.gl_pathc; ++i)
                appendConfigured(QFile::decodeName(matches.gl_pathv[i]), folders, depth + 1);
        }
        ::globfree(&matches);
    }
}

/// Those of the program that runs, the loader's default folders among them.
void appendOwn(QStringList *folders)
{
    void *program = ::dlopen(nullptr, RTLD_LAZY);
    Dl_serinfo size;
    if (program == nullptr || ::dlinfo(program, RTLD_DI_SERINFOSIZE, &size) != 0)
        return;
    const auto memory = std::make_unique<std::byte[]>(size.dls_size);
    auto *list = reinterpret_cast<Dl_serinfo *>(memory.get());
    *list = size;
    if (::dlinfo(program, RTLD_DI_SERINFO, list) == 0) {
        const Dl_serpath *paths = list->dls_serpath;
        for (unsigned int i = 0; i < list->dls_cnt; ++i)
            folders->append(QFile::decodeName(paths[i].dls_name));
    }
    ::dlclose(program);
}

/// The folders that are searched for every library, in order.
const QStringList &commonFolders()
{
    static const QStringList folders = [] {
        QStringList list;
        appendConfigured("/etc/ld.so.conf", &list);
        appendOwn(&list);
        list.append(QFileInfo(QFileInfo("/proc/self/exe").symLinkTarget()).path() + "/../lib");
        return list;
    }();
    return folders;
}

bool isLoaded(const QString &name)
{
    void *library = ::dlopen(QFile::encodeName(name).constData(), RTLD_LAZY | RTLD_NOLOAD);
    if (library != nullptr)
        ::dlclose(library);
    return library != nullptr;
}

QStringList placesOf(const QString &name, const Requester &requester)
{
    if (name.contains('/'))
        return {name};
    QStringList places;
    const QStringList environment = split(qEnvironmentVariable("LD_LIBRARY_PATH"), ".");
    for (const QStringList &folders : {requester.hasRunpath ? QStringList() : requester.ancestralFolders,
                                       environment, requester.runpathFolders, commonFolders()}) {
        for (const QString &folder : folders)
            places.append((folder.isEmpty() ? QStringLiteral(".") : folder) + '/' + name);
    }
    return places;
}

Requester requesterOf(const QString &path, const ElfLibrary &library, const QStringList &ancestralFolders)
{
    const QString origin = QFileInfo(path).canonicalPath();
    Requester requester{path, library.needed, {}, split(library.runpath, origin), !library.runpath.isEmpty()};
    if (!requester.hasRunpath)
        requester.ancestralFolders = split(library.rpath, origin);
    requester.ancestralFolders += ancestralFolders;
    return requester;
}

/// Looks for one library and, when it is there, queues it. The loader passes over what is of another class or
/// machine, while the first that is damaged ends its search. Returns what is wrong, empty when nothing is.
QString find(const QString &name, const Requester &requester, QQueue<Requester> *found)
{
    static const QSet<QString> passedOver = {"file-missing", "not-a-file", "unreadable", "wrong-class",
                                             "wrong-machine"};
    for (const QString &place : placesOf(name, requester)) {
        const ElfLibrary library = readElfLibrary(place, ElfSymbols::Skip);
        if (passedOver.contains(library.rule))
            continue;
        if (!library.rule.isEmpty())
            return place + ' ' + library.problem;
        found->enqueue(requesterOf(place, library, requester.ancestralFolders));
        return QString();
    }
    return "is not found";
}

} // namespace

QStringList missingLibraries(const QString &path, const ElfLibrary &library)
{
    QStringList missing;
    QSet<QString> seen;
    QQueue<Requester> queue;
    queue.enqueue(requesterOf(path, library, {}));
    while (!queue.isEmpty()) {
        const Requester requester = queue.dequeue();
        for (const QString &name : requester.needed) {
            if (seen.contains(name))
                continue;
            seen.insert(name);
            if (isLoaded(name))
                continue;
            const QString problem = find(name, requester, &queue);
            const QString who = requester.path == path ? QString() : ", needed by " + requester.path + ',';
            if (!problem.isEmpty())
                missing.append("needs " + name + who + (who.isEmpty() ? ", which " : " which ") + problem);
        }
    }
    return missing;
}

} // namespace Orvia
