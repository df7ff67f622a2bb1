#include "Startup/DebugOutput.h"
#include "Startup/FirstException.h"
#include "Startup/ModuleRules.h"
#include "Startup/StartupErrors.h"
#include "Startup/VQMIntegrationStartup.h"
#include "Startup/VQMMainStartupImplementation.h"
#include "platform/LibraryReadAhead.h"
#include "platform/VQMProgressBar.h"

#include <QDir>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

namespace Orvia {

namespace {

/// "01.00.00": each number of two digits at least.
std::string versionText(int major, int minor, int build)
{
    std::string text;
    for (const int number : {major, minor, build}) {
        const std::string digits = std::to_string(std::abs(std::int64_t(number)));
        if (!text.empty())
            text += '.';
        if (number < 0)
            text += '-';
        if (digits.size() < 2)
            text += '0';
        text += digits;
    }
    return text;
}

std::vector<std::string> pathsOf(const QList<QFileInfo> &files)
{
    std::vector<std::string> paths;
    paths.reserve(files.size());
    for (const QFileInfo &file : files)
        paths.push_back(file.filePath().toLatin1().toStdString());
    return paths;
}

/// What follows the file name of a module that is dropped in the debug output; empty when it is kept.
QString refusalText(Refusal refusal)
{
    switch (refusal) {
    case Refusal::Family:
        return QStringLiteral(" module will be unloaded because it isn't necessary for this device!");
    case Refusal::Type:
        return QStringLiteral(" module will be unloaded because of wrong module type");
    case Refusal::None:
        break;
    }
    return QString();
}

} // namespace

int VQMMainStartupImplementation::findModules(const char *loadList)
{
    if (baseModuleCount != 0 || anchorInterface == nullptr || groupCounters[0].moduleCount != 0 ||
        groupCounters[1].moduleCount != 0 || groupCounters[2].moduleCount != 0)
        return 0;
    if (!VQMProgressBar::isProgressHandlerInstalled())
        showProgress = false;

    if (loadList != nullptr)
        loadListName = loadList;
    if (loadListName == nullptr)
        return dumpError(StartupModuleNotFound, "Error: Loading Firmware DLL's", "No load list ");
    parseLoadList();
    if (loadListFiles.isEmpty())
        return dumpError(StartupModuleNotFound, "Error: Module load list",
                         "List is empty or parser error or no file could not be found!");

    loadModules();
    moduleTable->sortTbl(0, moduleTable->count - 1);
    classifyModules();
    checkRequiredModules();
    if (showProgress)
        VQMProgressBar::updateProgressBar(loadProgressBarId, 100, false);
    return 0;
}

void VQMMainStartupImplementation::freeResources()
{
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toLast(); record != nullptr; record = walk.previous()) {
        if (!record->moduleLoaded())
            continue;
        record->closeLibrary();
        record->setName("Unknown");
    }
}

void VQMMainStartupImplementation::loadModules()
{
    if (showProgress)
        showProgressBar(&loadProgressBarId, "Load Base System + Plugins", 0);
    const double step = 100.0 / static_cast<double>(loadListFiles.size());
    double progress = step;
    int plugInCounter = 0;

    const LibraryReadAhead readAhead(pathsOf(loadListFiles));
    for (const QFileInfo &file : std::as_const(loadListFiles)) {
        if (VQMIntegrationStartup::getAbortFlag())
            break;
        if (file.baseName() == QLatin1String(skippedBaseName) || !loadModule(file, &plugInCounter))
            continue;
        if (showProgress)
            VQMProgressBar::updateProgressBar(loadProgressBarId, static_cast<int>(progress), false);
        progress += step;
    }
}

bool VQMMainStartupImplementation::loadModule(const QFileInfo &file, int *plugInCounter)
{
    auto record = std::make_unique<VQMLoadedModuleInformation>();
    record->openLibrary(file.filePath().toLatin1().constData());
    if (!record->moduleLoaded()) {
        reportUnloadable(file);
        return false;
    }
    if (!describeModule(record.get(), file))
        return false;
    const VQMModuleInfo *info = record->info;
    const QString reason = refusalText(refusalOf(info->moduleType, info->targetMask, targetId));
    if (!reason.isEmpty()) {
        suDebugMsgOut(0, file.fileName() + reason, 3, 0);
        record->closeLibrary();
        return false;
    }
    debugProgress({"Module Name             : ", info->name != nullptr ? info->name : ""});

    record->createInstanceEntry =
        reinterpret_cast<CreateInstanceFunction>(record->getProcAddress(createInstanceSymbol));
    if (record->createInstanceEntry == nullptr) {
        reportMissingEntry(createInstanceSymbol, file);
        return false;
    }
    const int id = moduleIdOf(info->moduleType, info->defaultId, plugInCounter);
    if (!createModuleObject(record.get(), id)) {
        reportMissingEntry(createInstanceSymbol, file);
        return false;
    }
    reportModule(record.get());
    if (!moduleTable->append(id, record.get())) { // out of memory
        delete std::exchange(record->moduleInterface, nullptr);
        reportUnloadable(file);
        return false;
    }
    (void)record.release();
    return true;
}

void VQMMainStartupImplementation::reportModule(const VQMLoadedModuleInformation *record)
{
    const VQMModuleInfo *info = record->info;
    const VQMModuleVersion *version = record->interfaceVersion;
    debugProgress({"Module Id               : ", std::to_string(record->moduleId)});
    debugProgress({"Module Version          : ", versionText(info->major, info->minor, info->build)});
    debugProgress({"Module Interface Version: ",
                   version != nullptr ? versionText(version->major, version->minor, version->build)
                                      : versionText(0, 0, 0)});
}

bool VQMMainStartupImplementation::describeModule(VQMLoadedModuleInformation *record,
                                                  const QFileInfo &file) const
{
    record->getModuleInfoEntry =
        reinterpret_cast<GetModuleInfoFunction>(record->getProcAddress(moduleInfoSymbol));
    // A module that throws where it should describe itself is no better than one without the entry point.
    FirstException thrown;
    if (record->getModuleInfoEntry != nullptr)
        thrown.run([record] { record->info = record->getModuleInfoEntry(); });
    if (record->info == nullptr)
        reportMissingEntry(moduleInfoSymbol, file);
    return record->info != nullptr;
}

bool VQMMainStartupImplementation::createModuleObject(VQMLoadedModuleInformation *record, int id)
{
    FirstException thrown;
    const bool created = thrown.run([record, id] {
        record->moduleInterface = record->createInstanceEntry(id);
        if (record->moduleInterface == nullptr)
            return;
        record->interfaceVersion = record->moduleInterface->getInterfaceVersion();
        record->setName(record->moduleInterface->getModuleName());
        record->moduleId = record->moduleInterface->getModuleId();
    });
    if (!created)
        thrown.run([record] { delete std::exchange(record->moduleInterface, nullptr); });
    return record->moduleInterface != nullptr;
}

void VQMMainStartupImplementation::reportUnloadable(const QFileInfo &file) const
{
    dumpError(StartupModuleNotFound, "Error: Loading Module DLL's",
              "Could not load module\n" + file.filePath());
}

void VQMMainStartupImplementation::reportMissingEntry(const char *symbol, const QFileInfo &file) const
{
    dumpError(StartupInterfaceMethodNotFound, "Error: Accessing Module Interface",
              QString("Could not access the interface method ") + symbol + "of module " +
                  file.absoluteFilePath() + "!");
}

void VQMMainStartupImplementation::classifyModules()
{
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toFirst(); record != nullptr; record = walk.next()) {
        if (record->info->moduleType == VQMBaseModule) {
            ++baseModuleCount;
            if (record->moduleId == VQMGuiId)
                anchorInterface->guiModule = record->moduleInterface;
            else if (record->moduleId == VQMScpiId)
                anchorInterface->scpiModule = record->moduleInterface;
            else if (record->moduleId == VQMDatabaseId)
                anchorInterface->databaseModule = record->moduleInterface;
            continue;
        }
        const int group = groupOf(record->info->moduleType);
        if (group < 0)
            continue;
        ++groupCounters[group].moduleCount;
        for (int part = 0; part < 3; ++part) {
            if ((record->info->parts & (1 << part)) != 0)
                ++groupCounters[group].partCounters[part].moduleCount;
        }
        if (anchorInterface->plugInInterfaces != nullptr)
            anchorInterface->plugInInterfaces->push_back(
                static_cast<VQMPlugInDllModuleInterface *>(record->moduleInterface));
    }
}

void VQMMainStartupImplementation::checkRequiredModules() const
{
    for (const RequiredModules &row : requiredModules) {
        if ((row.families & targetId) == 0)
            continue;
        for (const RequiredModules::Slot &slot : row.modules) {
            if (slot.id != 0 && moduleTable->find(slot.id) == nullptr)
                dumpError(StartupModuleNotFound, "Error: Loading Firmware DLL's",
                          QString("Could not find\n  ") + slot.name + "\nmodule in\n " + QDir::currentPath());
        }
        return;
    }
}

} // namespace Orvia
