#include "platform/LibraryReadAhead.h"
#include "platform/VQMSharedLibrary.h"
#include "tests/unit/StartupFixture.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/mman.h>
#include <sys/uio.h>
#include <thread>
#include <unistd.h>

namespace Orvia {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class SharedLibraryTest : public StartupTest
{
};

TEST_F(SharedLibraryTest, SaysWhyTheLoaderFailed)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"missing", "cannot open shared object file: No such file or directory"},
        {"text", "file too short"},
        {"unresolved", "undefined symbol: symbolThatNoLibraryDefines"}};
    VQMSharedLibrary library;
    EXPECT_STREQ(library.lastError(), "");
    for (const auto &[file, reason] : cases) {
        EXPECT_FALSE(library.open(path(file).c_str(), true, false)) << file;
        EXPECT_FALSE(library.isOpen());
        EXPECT_EQ(std::string(library.lastError()).find(path(file)), 0u) << library.lastError();
        EXPECT_THAT(library.lastError(), HasSubstr(reason));
    }
    EXPECT_TRUE(library.open(path("unresolved").c_str(), false, false)); // bound when called
    for (const char *none : {"", static_cast<const char *>(nullptr)}) {
        EXPECT_FALSE(library.open(none, true, false));
        EXPECT_STREQ(library.lastError(), "no file name given");
    }
    EXPECT_FALSE(isMapped("unresolved"));
    VQMLoadedModuleInformation module;
    module.openLibrary("./absent.so");
    EXPECT_FALSE(module.moduleLoaded());
    EXPECT_THAT(module.getLastErrorText(), HasSubstr("./absent.so: cannot open shared object file"));
}

TEST_F(SharedLibraryTest, FindsSymbolsWhileOpen)
{
    VQMSharedLibrary library;
    EXPECT_EQ(library.getProcAddress("VQMGetModuleInfo"), nullptr);
    ASSERT_TRUE(library.open(path("base3").c_str(), true, false));
    EXPECT_NE(library.getProcAddress("VQMGetModuleInfo"), nullptr);
    EXPECT_EQ(library.getProcAddress("noSuchSymbol"), nullptr);
    EXPECT_THAT(library.lastError(), HasSubstr("undefined symbol: noSuchSymbol"));
    EXPECT_EQ(::dlsym(RTLD_DEFAULT, "VQMGetModuleInfo"), nullptr); // for nobody else
    library.close();
    library.close();
    EXPECT_EQ(library.getProcAddress("VQMGetModuleInfo"), nullptr);
    EXPECT_FALSE(isMapped("base3"));
    EXPECT_THAT(calls.of("trace"), IsEmpty());
}

TEST_F(SharedLibraryTest, ClosesOnReopeningAndDestructionAndSaysWhatStaysMapped)
{
    {
        VQMSharedLibrary library;
        EXPECT_TRUE(library.open(path("base3").c_str(), true, false));
        EXPECT_TRUE(library.open(path("database").c_str(), true, false));
        EXPECT_FALSE(isMapped("base3"));
    }
    EXPECT_FALSE(isMapped("database"));
    EXPECT_THAT(calls.of("trace"), IsEmpty());
    answers.tracing = true;
    VQMSharedLibrary first;
    VQMSharedLibrary second;
    EXPECT_TRUE(first.open(path("base3").c_str(), true, false) &&
                second.open(path("base3").c_str(), true, false));
    first.close();
    EXPECT_FALSE(second.open("./absent.so", true, false));
    EXPECT_FALSE(isMapped("base3"));
    ASSERT_TRUE(first.open(path("base3").c_str(), true, false));
    ::setenv("VQM_KEEP_MODULES", "1", 1);
    first.close();
    ::unsetenv("VQM_KEEP_MODULES");
    EXPECT_TRUE(isMapped("base3"));
    const std::string name = path("base3");
    EXPECT_THAT(calls.of("trace"),
                testing::ElementsAre("begin open: " + name, "end open", "begin open: " + name, "end open",
                                     "begin close: " + name, "end close: stays mapped",
                                     "begin close: " + name, "end close", "begin open: ./absent.so",
                                     testing::StartsWith("end open: ./absent.so: cannot open shared object"),
                                     "begin open: " + name, "end open", "begin close: " + name,
                                     "end close: stays mapped because of VQM_KEEP_MODULES"));
}

TEST_F(SharedLibraryTest, TakesANameWithoutSlashInTheCurrentFolderOnly)
{
    VQMSharedLibrary library;
    EXPECT_FALSE(library.open("libc.so.6", true, false)); // the loader would find it
    ASSERT_TRUE(QDir::setCurrent(TEST_MODULE_DIR));
    EXPECT_TRUE(library.open("base3.so", true, false));
}

class ReadAheadTest : public StartupTest
{
protected:
    /// A file of 256 KiB of which nothing is in the page cache; false when the file system cannot tell or
    /// forget.
    static bool makeUncached(const std::string &file)
    {
        const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
        const std::string contents(1 << 18, 'x');
        EXPECT_EQ(::write(descriptor, contents.data(), contents.size()),
                  static_cast<ssize_t>(contents.size()));
        ::fsync(descriptor);
        char byte;
        const iovec buffer = {&byte, 1};
        const bool tells = ::preadv2(descriptor, &buffer, 1, 0, RWF_NOWAIT) >= 0 || errno == EAGAIN;
        const auto forgets = [&] {
            ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_DONTNEED);
            return cachedPages(file) == 0; // a page that the kernel itself still uses stays for a while
        };
        const bool uncached = tells && holdsSoon(forgets, std::chrono::seconds(5));
        ::close(descriptor);
        return uncached;
    }
    static long cachedPages(const std::string &file)
    {
        const int descriptor = ::open(file.c_str(), O_RDONLY);
        const std::size_t length = 1 << 18;
        void *mapping = ::mmap(nullptr, length, PROT_READ, MAP_SHARED, descriptor, 0);
        std::vector<unsigned char> pages(length / ::sysconf(_SC_PAGESIZE), 1);
        ::mincore(mapping, length, pages.data());
        ::munmap(mapping, length);
        ::close(descriptor);
        return std::count_if(pages.begin(), pages.end(), [](unsigned char page) { return (page & 1) != 0; });
    }
    /// A read-ahead of a list that names `uncached`, which is in the page cache again at once now and then:
    /// some kernels fetch what a reader that will not wait has asked for. Null when the file system cannot
    /// tell.
    static std::unique_ptr<LibraryReadAhead> readAheadOf(const std::vector<std::string> &files,
                                                         const std::string &uncached)
    {
        std::unique_ptr<LibraryReadAhead> readAhead;
        for (int attempt = 0; attempt < 50 && !(readAhead && readAhead->isNeeded()); ++attempt) {
            if (!makeUncached(uncached))
                return nullptr;
            readAhead = std::make_unique<LibraryReadAhead>(files);
        }
        EXPECT_TRUE(readAhead->isNeeded());
        return readAhead;
    }
    template <typename Condition>
    static bool holdsSoon(Condition condition, std::chrono::seconds limit = std::chrono::seconds(30))
    {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
};

TEST_F(ReadAheadTest, AnnouncesAllFilesWhenOneOfThreeIsNotCached)
{
    const std::string cold = folder.filePath("cold").toStdString();
    const std::string warm = path("base3");
    const std::vector<std::vector<std::string>> lists = {
        {cold, warm, "/missing", warm}, {warm, "/missing", cold, warm, warm}, {warm, warm, "/missing", cold}};
    for (const std::vector<std::string> &files : lists) {
        const auto readAhead = readAheadOf(files, cold);
        if (!readAhead)
            GTEST_SKIP() << "the file system keeps what it has cached";
        EXPECT_TRUE(holdsSoon([&] { return readAhead->announced() == static_cast<int>(files.size()) - 1; }));
        EXPECT_TRUE(holdsSoon([&] { return cachedPages(cold) != 0; }));
    }
}

TEST_F(ReadAheadTest, DoesNothingWithCachedMissingOrNoFiles)
{
    const std::string warm = path("base3");
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                             std::filesystem::directory_iterator());
    };
    const auto before = threads();
    for (const std::vector<std::string> &files :
         {std::vector<std::string>(9, warm), {}, {"/missing", "/missing"}, {warm, "/", "/dev/null"}}) {
        const LibraryReadAhead readAhead(files);
        EXPECT_EQ(threads(), before);
        EXPECT_FALSE(readAhead.isNeeded());
    }
}

TEST_F(ReadAheadTest, StopsWhenDestroyed)
{
    using Clock = std::chrono::steady_clock;
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    const int count = 5'000;
    auto readAhead = readAheadOf(std::vector<std::string>(count, "cold"), "cold");
    if (!readAhead)
        GTEST_SKIP() << "the file system keeps what it has cached";
    Clock::time_point begin = Clock::now();
    EXPECT_TRUE(holdsSoon([&] { return readAhead->announced() == count; }));
    const Clock::duration wholeTime = Clock::now() - begin;
    readAhead = readAheadOf(std::vector<std::string>(std::size_t{10} * count, "cold"), "cold");
    ASSERT_TRUE(readAhead);
    begin = Clock::now();
    readAhead.reset();
    EXPECT_LT(Clock::now() - begin, 5 * wholeTime); // all of them would take ten times as long
}

} // namespace
} // namespace Orvia
