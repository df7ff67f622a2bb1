#pragma once

#include "platform/Export.h"

namespace Orvia {

/// The unit that position 27 of the repository returns. Other builds of the hardware abstraction layer
/// provide these objects, so the positions count: the destructors do not stand before them.
class VQM_EXPORT VQMHwUnit
{
public:
    virtual void reserved0() {}
    virtual void setReady(int ready) = 0; // 1

protected:
    ~VQMHwUnit() = default;
};

/// What the instrument is made of. Positions 0 to 27 of the virtual table; those not named are never called
/// here.
class VQM_EXPORT VQMHwRepository
{
public:
    /// What findOption() answers for a name that no option has.
    static constexpr int unknownOption = 288;

    virtual void reserved0() {}
    virtual void reserved1() {}
    /// Identifier of the option with this name (Latin-1), or unknownOption.
    virtual int findOption(const char *name, int index) = 0; // 2
    /// Whether the instrument has the option.
    virtual bool hasOption(unsigned short option, int index) = 0; // 3
    virtual void reserved4() {}
    virtual void reserved5() {}
    /// What kind of instrument this is.
    virtual int code() = 0; // 6
    virtual void reserved7() {}
    virtual void reserved8() {}
    virtual void reserved9() {}
    virtual void reserved10() {}
    virtual void reserved11() {}
    virtual void reserved12() {}
    virtual void reserved13() {}
    virtual void reserved14() {}
    virtual void reserved15() {}
    virtual void reserved16() {}
    virtual void reserved17() {}
    virtual void reserved18() {}
    virtual void reserved19() {}
    virtual void reserved20() {}
    virtual void reserved21() {}
    virtual void reserved22() {}
    virtual void reserved23() {}
    virtual void reserved24() {}
    virtual void reserved25() {}
    virtual void reserved26() {}
    /// The unit with this index; not owned by the caller.
    virtual VQMHwUnit *unit(int index) = 0; // 27

protected:
    ~VQMHwRepository() = default;
};

/// Where the instrument's repository is found.
class VQM_EXPORT HwAbstractionLayer
{
public:
    /// Null when the instrument has no repository. Set before start-up, unchanged afterwards.
    static VQMHwRepository *m_repository;

    /// For the launcher: the host's repository, built from the properties of section "Hardware":
    /// "knownOptions" and "installedOptions" (names separated by "|") and "code".
    static void createHostRepository();
};

} // namespace Orvia
