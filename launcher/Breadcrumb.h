#pragma once

#include <QString>

#include <optional>
#include <string_view>

namespace Orvia {

/// A small file that says what start-up is in the middle of, so that the next start can say where this one
/// ended when it could not say so itself. One write a step, of one page, which the end of the process cannot
/// tear; the file is emptied while nothing is under way. Not thread-safe.
class Breadcrumb
{
public:
    Breadcrumb() = default;
    /// Leaves the file as it is.
    ~Breadcrumb();
    Breadcrumb(const Breadcrumb &) = delete;
    Breadcrumb &operator=(const Breadcrumb &) = delete;

    /// Opens the file, made if there is none, and returns what an earlier process was in the middle of, with
    /// the time, for a report; no value when it had come to an end. A file that holds anything else is left
    /// alone. Without a file, marks go nowhere; why is said in `error`.
    std::optional<QString> open(const QString &fileName, QString *error);
    bool isOpen() const { return m_descriptor >= 0; }
    /// What is under way now: a text of one line, cut where it is too long.
    void mark(std::string_view text);
    /// Nothing is under way.
    void clear();

private:
    void close();

    int m_descriptor = -1;
};

} // namespace Orvia
