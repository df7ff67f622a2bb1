#pragma once

/// @file
/// What a module library in C++ is made with, on top of the contract. A module is a class with initialize()
/// and terminate(); what it is called and where it belongs is said in CMake, by vqm_add_module():
///
///     class Attenuator final : public Orvia::VQMModule<>
///     {
///     public:
///         using VQMModule::VQMModule;
///         int initialize(Orvia::VQMAnchorInterface *anchor, int parts) override;
///         void terminate(Orvia::VQMAnchorInterface *anchor) override;
///     };
///
///     VQM_MODULE(Attenuator)

#include "registry/VQMModuleContract.h"

#include <type_traits>

extern "C" {
__attribute__((visibility("default"))) const Orvia::VQMModuleInfo *VQMGetModuleInfo();
__attribute__((visibility("default"))) Orvia::VQMModuleInterface *VQMCreateModuleInterfaceInstance(int id);
}

namespace Orvia {

/// A module object's answers about itself.
///
/// `Interface` is the contract, for loadables and plug-ins VQMPlugInDllModuleInterface, or a class derived
/// from it with further operations for other modules. The numbers are that interface's version; that of the
/// contract alone is 1.0.0.
template <class Interface = VQMDllModuleInterface, int major = 1, int minor = 0, int build = 0>
class VQMModule : public Interface
{
public:
    /// `id` is the one handed to VQMCreateModuleInterfaceInstance().
    explicit VQMModule(int id) : m_id(id) {}

    VQMModuleVersion *getInterfaceVersion() override
    {
        static VQMModuleVersion version(major, minor, build);
        return &version;
    }
    const char *getModuleName() override { return VQMGetModuleInfo()->name; }
    int getModuleId() override { return m_id; }

protected:
    int id() const { return m_id; }

private:
    const int m_id;
};

namespace sdk {

/// Whether objects of the class are what the start-up takes modules of the type for.
template <class Class>
constexpr bool isOfType(int moduleType)
{
    constexpr int withParts = VQMLoadable | VQMLoadable2 | VQMPlugIn | VQMPlugInLoadable | VQMPlugInLoadable2;
    return std::is_base_of_v<VQMDllModuleInterface, Class> &&
           ((moduleType & withParts) == 0 || std::is_base_of_v<VQMPlugInDllModuleInterface, Class>);
}

} // namespace sdk

} // namespace Orvia

/// The description record as vqm_add_module() was told it.
#define VQM_MODULE_INFO                                                                                      \
    {                                                                                                        \
        {0, 0}, VQM_MODULE_MAJOR, VQM_MODULE_MINOR, VQM_MODULE_BUILD, VQM_MODULE_NAME, VQM_MODULE_ID,        \
            VQM_MODULE_TYPE, VQM_MODULE_PARTS, VQM_MODULE_FAMILY                                             \
    }

/// Defines the two entry points of a module library, in one of its sources, outside of namespaces. The object
/// is made by Class(int id); what its constructor throws goes to the start-up, which reports it.
#define VQM_MODULE(Class)                                                                                    \
    static_assert(Orvia::sdk::isOfType<Class>(VQM_MODULE_TYPE),                                              \
                  "a base module derives from VQMDllModuleInterface, any other from "                        \
                  "VQMPlugInDllModuleInterface");                                                            \
    extern "C" const Orvia::VQMModuleInfo *VQMGetModuleInfo()                                                \
    {                                                                                                        \
        static constexpr Orvia::VQMModuleInfo info = VQM_MODULE_INFO;                                        \
        return &info;                                                                                        \
    }                                                                                                        \
    extern "C" Orvia::VQMModuleInterface *VQMCreateModuleInterfaceInstance(int id)                           \
    {                                                                                                        \
        return new Class(id);                                                                                \
    }
