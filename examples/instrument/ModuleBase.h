#pragma once

#include "platform/Debug.h"
#include "registry/VQMModule.h"

#include <QString>

namespace Orvia {

/// What the module objects of this example have in common: a log.
///
/// Text that services keep (properties, names, error details) must not be a QStringLiteral: its characters
/// would go with the library when it is closed.
template <class Interface = VQMDllModuleInterface, int interfaceMajor = 1>
class ModuleBase : public VQMModule<Interface, interfaceMajor>
{
public:
    using VQMModule<Interface, interfaceMajor>::VQMModule;

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
        if (Debug::isActive(this->id(), level, 0))
            Debug::println(this->id(), 0, text, level, code, nullptr, -1);
    }
};

} // namespace Orvia
