#pragma once

#include "Startup/ESuStage.h"
#include "Startup/ESwpStartupStep.h"
#include "Startup/VQMMainStartupInterface.h"
#include "platform/Export.h"
#include "registry/CPtrSearchTbl.h"
#include "registry/VQMLoadedModuleInformation.h"

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>

namespace Orvia {

class FirstException;
class VQMMainThread;

/// How many modules declare a part, and how many have initialized it.
struct PartCounters
{
    std::uint32_t moduleCount = 0;
    std::uint32_t modulesInitialized = 0;
    bool stageReported = false; ///< the group's stage has been announced for this part
};

/// The same for a group of modules: loadables, plug-ins or plug-in loadables.
struct ModuleGroupCounters
{
    std::uint32_t moduleCount = 0;
    std::uint32_t modulesInitialized = 0; ///< modules whose declared parts are all initialized
    PartCounters partCounters[3];         ///< Database, Scpi, Gui
};

/// The startup object: finds the module libraries, brings their modules up in stages and takes them down.
///
/// Call order: setProgArgument(), setTargetId() and anchorInterface; findModules(); initializeModules() and
/// initializePlugIns(); plugInsTerminate() and modulesTerminate(); freeProgressBar(); freeResources();
/// destruction. Operations run on the thread that calls them, take no locks and must not overlap.
///
/// Throws nothing of its own. What a module's initialize() throws passes through at once; what terminate() or
/// a stage operation throws passes through when all the other modules have had their turn.
class VQM_EXPORT VQMMainStartupImplementation : public VQMMainStartupInterface
{
public:
    /// An id of -1 stands for 2, one below that for 0.
    explicit VQMMainStartupImplementation(int id);
    /// Neither closes the libraries nor removes the progress bars.
    ~VQMMainStartupImplementation() override;
    VQMMainStartupImplementation(const VQMMainStartupImplementation &) = delete;
    VQMMainStartupImplementation &operator=(const VQMMainStartupImplementation &) = delete;

    // The order of the virtual operations is a binary interface.
    VQMModuleVersion *getInterfaceVersion() override;
    const char *getModuleName() override;
    int getModuleId() override;
    HwESigGenFamily getTargetId() override;
    using VQMMainStartupInterface::modulesTerminate;
    /// Closes all libraries, last to first. All modules must be terminated: their code is gone afterwards.
    void freeResources() override;
    void destroyAnnouncement(int id) override;
    void destroyAllAnnouncements() override;
    virtual void setId(int id);
    virtual void setTargetId(HwESigGenFamily family);
    virtual void freeProgressBar();
    /// Loads the modules that the load list names (null: the one of the program arguments). 0, or 10001 when
    /// there is no list or it names no file. Does nothing while anchorInterface is null or once it has run.
    virtual int findModules(const char *loadList);
    /// Brings up the base modules selected: with `exclude` those not in `names`, else those in it. Returns
    /// the status of the last module that ran.
    virtual int initializeModules(const QStringList &names, bool exclude);
    /// Brings up the requested parts of all other modules; stops at the first status that is not 0 and
    /// returns it.
    virtual int initializePlugIns(int parts);
    /// Registers `callback` (step 0) or calls the registered one with `step`. Always 0.
    virtual int initializeSwpRemote(ESwpStartupStep step, void (*callback)(ESwpStartupStep, VQMMainThread *));
    virtual void plugInsTerminate();
    /// Announces a stage to the debug output, every module object and the anchor's stage listener.
    virtual void stageInfo(ESuStage stage, int parts);
    /// Takes the load list's path from "-l". The arguments are not copied and must outlive this object.
    virtual void setProgArgument(int argc, char **argv);
    virtual const char *const &getProgArgument() const;
    /// One more module file; called by the load list's reader in document order.
    virtual void addLoadListFile(const QString &path);
    /// Takes down the base modules selected, last to first. Always 0.
    virtual int modulesTerminate(const QStringList &names, bool exclude);

    void parseLoadList();
    /// Whether `name` is in `list`, compared with `inList`.
    bool isExcluded(const char *name, const QStringList &list, bool inList) const;
    /// One line of debug and trace output. Level 1 is an error with its code, level 3 progress. Any thread.
    static void suDebugMsgOut(int kind, const QString &text, int level, int code);
    /// Reports a start-up error, as an alert too except for 10002 to 10004; returns `code`. Any thread.
    int dumpError(int code, const char *title, const QString &text) const;

    /// Set by the launcher: a module whose initialization throws is named in exceptionLocation.
    static bool platform;
    /// Set by the launcher before findModules(); not owned.
    static VQMAnchorInterface *anchorInterface;
    static char exceptionLocation[20];

protected:
    using ModuleTable = CPtrSearchTbl<int, VQMLoadedModuleInformation>;
    using ModuleIterator = CPtrSearchTblIterator<int, VQMLoadedModuleInformation>;

    ModuleTable *moduleTable; ///< owned; the records in it are not
    bool showProgress;
    const char *moduleName;
    int moduleId;
    int loadProgressBarId = -1;
    int baseProgressBarId = -1;
    int plugInProgressBarId = -1;
    std::uint32_t baseModuleCount = 0;
    std::uint32_t baseModulesInitialized = 0;
    ModuleGroupCounters groupCounters[3]; ///< loadables, plug-ins, plug-in loadables
    HwESigGenFamily targetId = 0;
    const char *loadListName = nullptr; ///< not owned
    QList<QFileInfo> loadListFiles;

private:
    // Discovery
    void loadModules();
    bool loadModule(const QFileInfo &file, int *plugInCounter);
    bool describeModule(VQMLoadedModuleInformation *record, const QFileInfo &file) const;
    static bool createModuleObject(VQMLoadedModuleInformation *record, int id);
    static void reportModule(const VQMLoadedModuleInformation *record);
    void reportUnloadable(const QFileInfo &file) const;
    void reportMissingEntry(const char *symbol, const QFileInfo &file) const;
    void classifyModules();
    void checkRequiredModules() const;

    // Base modules, and what the plug-ins share with them
    int initializeGuarded(VQMLoadedModuleInformation *record);
    void showBaseProgress();
    /// The integer part; counters that went below 0 have wrapped and make it very large.
    static int wholePercent(double percent);
    static void showProgressBar(int *barId, const char *title, int percent);
    static void noteThrowingModule(const VQMLoadedModuleInformation *record);
    /// False when its terminate() threw.
    static bool terminateModule(VQMLoadedModuleInformation *record, FirstException *failure);

    // Plug-ins
    int initializePlugInsOfType(int row, int parts, std::uint32_t total);
    void notePartsInitialized(VQMLoadedModuleInformation *record, ModuleGroupCounters *group, int parts);
    void announceFinishedParts(int row, int parts);
    int plugInPercent(int parts, std::uint32_t total) const;
    static bool terminatePlugIn(VQMLoadedModuleInformation *record, FirstException *failure);
};

} // namespace Orvia
