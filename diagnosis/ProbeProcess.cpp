#include "diagnosis/ProbeProcess.h"

#include "diagnosis/ProbeProtocol.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Orvia {

namespace {

constexpr int maxUntaken = 1 << 20; // bytes; nothing sensible is longer

QString folderOfProgram()
{
    return QFileInfo(QFileInfo("/proc/self/exe").symLinkTarget()).path();
}

/// This process's variables, with the libraries that a start-up has loaded before any module found first.
std::vector<std::string> environmentOfProbe()
{
    constexpr const char *variable = "LD_LIBRARY_PATH=";
    std::string libraries = variable + QFile::encodeName(folderOfProgram() + "/../lib").toStdString();
    std::vector<std::string> all;
    for (char **entry = environ; *entry != nullptr; ++entry) {
        if (std::strncmp(*entry, variable, std::strlen(variable)) == 0)
            libraries += ':' + std::string(*entry + std::strlen(variable));
        else
            all.emplace_back(*entry);
    }
    all.push_back(libraries);
    return all;
}

void closeDescriptor(int *descriptor)
{
    if (*descriptor >= 0)
        ::close(*descriptor);
    *descriptor = -1;
}

} // namespace

ProbeProcess::ProbeProcess(const QString &modulePath)
{
    const QString program = folderOfProgram() + "/../libexec/vqmstartup/vqm-module-probe";
    // As the start-up library opens it: never by the loader's own search.
    const QString module = modulePath.contains('/') ? modulePath : "./" + modulePath;
    int ends[2];
    int error = ::pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno;
    if (error == 0) {
        m_results = ends[0];
        ::fcntl(m_results, F_SETFL, O_NONBLOCK);
        if (!start(QFile::encodeName(program), QFile::encodeName(module), ends[1]))
            error = errno;
        ::close(ends[1]);
    }
    if (error != 0)
        m_startError = program + " could not be run: " + QString::fromLocal8Bit(std::strerror(error));
    m_open = error == 0;
}

ProbeProcess::~ProbeProcess()
{
    finish();
    closeDescriptor(&m_results);
}

bool ProbeProcess::start(const QByteArray &program, const QByteArray &module, int resultEnd)
{
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, resultEnd, probe::resultDescriptor);
    for (int standard = 0; standard < 3; ++standard)
        posix_spawn_file_actions_addopen(&files, standard, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_addclosefrom_np(&files, probe::resultDescriptor + 1);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);

    std::vector<std::string> variables = environmentOfProbe();
    std::vector<char *> environment;
    environment.reserve(variables.size() + 1);
    for (std::string &variable : variables)
        environment.push_back(variable.data());
    environment.push_back(nullptr);
    char *const arguments[] = {const_cast<char *>(program.constData()),
                               const_cast<char *>(module.constData()), nullptr};
    const int error =
        ::posix_spawn(&m_process, program.constData(), &files, &attributes, arguments, environment.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        m_process = -1;
        errno = error;
        return false;
    }
    m_ended = static_cast<int>(::syscall(SYS_pidfd_open, m_process, 0));
    return m_ended >= 0;
}

std::optional<QByteArray> ProbeProcess::nextLine(Clock::time_point deadline)
{
    for (;;) {
        const qsizetype end = m_output.indexOf('\n');
        if (end >= 0) {
            const QByteArray line = m_output.left(end);
            m_output.remove(0, end + 1);
            return line;
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (!m_open || left.count() <= 0)
            return std::nullopt;
        pollfd events[] = {{m_results, POLLIN, 0}, {m_ended, POLLIN, 0}};
        ::poll(events, 2, static_cast<int>(std::min<std::int64_t>(left.count(), 60'000)));
        // Not the pipe's end: what the module has started may keep that open for ever.
        const bool ended = events[1].revents != 0;
        takeOutput();
        m_open = m_open && !ended;
    }
}

void ProbeProcess::takeOutput()
{
    char bytes[4096];
    ssize_t count = -1;
    while (m_output.size() < maxUntaken && (count = ::read(m_results, bytes, sizeof bytes)) > 0)
        m_output.append(bytes, count);
    if (count == 0)
        closeDescriptor(&m_results); // which may be long before it ends
    m_open = m_output.size() < maxUntaken;
}

std::optional<ProbeProcess::End> ProbeProcess::finish()
{
    if (m_process < 0)
        return std::nullopt;
    siginfo_t before = {};
    const bool hadEnded =
        ::waitid(P_PID, static_cast<id_t>(m_process), &before, WEXITED | WNOHANG | WNOWAIT) == 0 &&
        before.si_pid == m_process;
    ::kill(-m_process, SIGKILL);
    ::kill(m_process, SIGKILL); // in case that it left its group
    int status = 0;
    while (::waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
    }
    m_process = -1;
    closeDescriptor(&m_ended);
    if (!hadEnded)
        return std::nullopt;
    return WIFSIGNALED(status) ? End{WTERMSIG(status), 0} : End{0, WEXITSTATUS(status)};
}

} // namespace Orvia
