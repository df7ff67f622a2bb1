#pragma once

namespace Orvia {

/// Takes over the destruction of announcements. Its objects come from outside this library: the two
/// operations stand first in the virtual table, no destructor before them.
class IcppAnnouncementWrapper
{
public:
    virtual void destroyAnnouncement(int id) = 0;
    virtual void destroyAllAnnouncements() = 0;

protected:
    ~IcppAnnouncementWrapper() = default;
};

} // namespace Orvia
