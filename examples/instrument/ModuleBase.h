#pragma once

#include "platform/Debug.h"
#include "platform/Export.h"
#include "registry/VQMModuleContract.h"

#include <QString>

namespace Orvia {

/// Instrument families that the modules of this example serve.
inline constexpr HwESigGenFamily signalGenerators = 0x2;
inline constexpr HwESigGenFamily powerMeters = 0x8;

/// Interface version of modules that offer the positions of the contract and nothing more.
inline VQMModuleVersion contractVersion(1, 0, 0);

/// What the module objects of this example have in common: the answers about themselves, and a log.
///
/// `Interface` is the contract alone, or a class derived from it with further operations for other modules.
/// Text that services keep (properties, names, error details) must not be a QStringLiteral: its characters
/// would go with the library when it is closed.
template <class Interface = VQMDllModuleInterface>
class ModuleBase : public Interface
{
public:
    /// Description and version stay as long as the library.
    ModuleBase(const VQMModuleInfo &info, int id, VQMModuleVersion &interfaceVersion = contractVersion)
        : m_info(info), m_id(id), m_interfaceVersion(interfaceVersion)
    {
    }

    VQMModuleVersion *getInterfaceVersion() override { return &m_interfaceVersion; }
    const char *getModuleName() override { return m_info.name; }
    int getModuleId() override { return m_id; }

protected:
    /// Progress and information. Any thread.
    void log(const QString &text) const { print(text, 3, 0); }
    /// Something failed, with the code of an error table. Returns the code. Any thread.
    int logError(const QString &text, int code) const
    {
        print(text, 1, code);
        return code;
    }

private:
    void print(const QString &text, int level, int code) const
    {
        if (Debug::isActive(m_id, level, 0))
            Debug::println(m_id, 0, text, level, code, nullptr, -1);
    }

    const VQMModuleInfo &m_info;
    const int m_id;
    VQMModuleVersion &m_interfaceVersion;
};

} // namespace Orvia

/// Defines the two entry points of a module library, the only symbols that it exports.
#define VQM_MODULE_ENTRY_POINTS(Class, info)                                                                 \
    extern "C" VQM_EXPORT const Orvia::VQMModuleInfo *VQMGetModuleInfo()                                     \
    {                                                                                                        \
        return &(info);                                                                                      \
    }                                                                                                        \
    extern "C" VQM_EXPORT Orvia::VQMModuleInterface *VQMCreateModuleInterfaceInstance(int id)                \
    {                                                                                                        \
        return new Class(id);                                                                                \
    }
