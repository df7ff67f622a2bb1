#pragma once

#include <exception>
#include <utility>

namespace Orvia {

/// Runs steps that must all be tried whatever one of them throws; the first exception leaves at the end.
class FirstException
{
public:
    /// False when `step` threw.
    template <typename Step>
    bool run(Step &&step)
    {
        try {
            std::forward<Step>(step)();
            return true;
        } catch (...) {
            if (!m_first)
                m_first = std::current_exception();
            return false;
        }
    }

    /// Nothing has thrown so far.
    bool empty() const { return !m_first; }

    void rethrow()
    {
        if (m_first)
            std::rethrow_exception(std::exchange(m_first, nullptr));
    }

private:
    std::exception_ptr m_first;
};

} // namespace Orvia
