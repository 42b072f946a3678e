#include "torv/platform/replaced_file.h"

#include "platform/small_disk.h"
#include "platform/temp_folder.h"

#include <doctest/doctest.h>

#include <functional>
#include <set>
#include <thread>

#if !defined(_WIN32)
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using torv::ReplacedFile;

bool Put(ReplacedFile& file, const std::string& text) { return file.Write(text.data(), text.size()); }

bool Save(const std::string& path, const std::string& text) {
    ReplacedFile file(path.c_str());
    return Put(file, text) && file.Commit();
}

using Texts = std::set<std::string>;

} // namespace

TEST_CASE("replaced file: the old content stands until the new is whole") {
    const TempFolder folder;
    const std::string path = folder.File("a", "old");
    std::string expected = "old";
    ReplacedFile file(path.c_str());
    REQUIRE(file.IsOpen());
    CHECK(Put(file, "12345678"));
    CHECK(file.Seek(2));
    CHECK(Put(file, "ab"));
    CHECK(folder.Content("a") == "old");
    SUBCASE("committed") {
        CHECK(file.Commit());
        CHECK_FALSE(file.IsOpen());
        expected = "12ab5678";
    }
    SUBCASE("given up") { file.Discard(); }
    SUBCASE("written by name, as a wave writer does, which may want the file for itself") {
        file.Discard();
        ReplacedFile named(path.c_str());
        CFile other(named.Path(), CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive);
        other.Write("wave", 4);
        other.Close();
        CHECK(named.Commit());
        expected = "wave";
    }
    SUBCASE("gone meanwhile") {
        std::filesystem::remove(file.Path());
        CHECK_FALSE(file.Commit());
        CHECK(file.Error());
    }
    CHECK_FALSE(file.Commit()); // once
    CHECK(folder.Content("a") == expected);
    CHECK(folder.Names() == Texts{"a"});
}

TEST_CASE("replaced file: what cannot be begun or put in place is told, and leaves nothing") {
    const TempFolder folder;
    folder.Folder("folder");
    for (const std::string& path : {folder.Path("folder"), folder.Path("none/a"), std::string()}) {
        CAPTURE(path);
        ReplacedFile file(path.c_str());
        CHECK_FALSE(file.IsOpen());
        CHECK(file.Error());
        CHECK_FALSE(file.IsDiskFull());
        CHECK_FALSE(Put(file, "new"));
        CHECK_FALSE(file.Commit());
    }
    CHECK_FALSE(ReplacedFile(nullptr).IsOpen());
    ReplacedFile file(folder.Path("a").c_str());
    folder.Folder("a"); // by somebody else
    CHECK(Put(file, "new"));
    CHECK_FALSE(file.Commit());
    CHECK(folder.Names() == Texts{"a", "folder"});
}

TEST_CASE("replaced file: threads and processes that save one path at once leave what one of them wrote, whole") {
    const TempFolder folder;
    const std::string path = folder.File("a", "old");
    const auto saveOften = [&path](char letter) {
        bool saved = true;
        for (int n = 0; n < 20; ++n)
            saved = Save(path, std::string(10000u * static_cast<unsigned char>(letter), letter)) && saved;
        return saved;
    };
#if !defined(_WIN32)
    const pid_t child = fork();
    if (child == 0)
        _exit(saveOften('a') ? 0 : 1);
#endif
    bool isSavedThere = false;
    std::thread other([&] { isSavedThere = saveOften('b'); });
    CHECK(saveOften('c'));
    other.join();
    CHECK(isSavedThere);
#if !defined(_WIN32)
    int status = -1;
    CHECK(waitpid(child, &status, 0) == child);
    CHECK(status == 0);
#endif
    const std::string content = folder.Content("a");
    const std::string whole(10000u * static_cast<unsigned char>(content.front()), content.front());
    CHECK((content == whole)); // not shown: it is long
    CHECK(folder.Names() == Texts{"a"});
}

TEST_CASE("replaced file: a host that ends on a signal has all that is under way removed") {
    const TempFolder folder;
    ReplacedFile first(folder.File("a", "old").c_str());
    ReplacedFile second(folder.Path("b").c_str());
    ReplacedFile::RemoveAllUnfinished();
    CHECK_FALSE(first.Commit());
    CHECK_FALSE(second.Commit());
    CHECK(folder.Names() == Texts{"a"});
}

TEST_CASE("replaced file: a file that may not be written stays") {
    const TempFolder folder;
    const std::string path = folder.File("a", "old");
#if !defined(_WIN32)
    if (geteuid() == 0)
        return; // who may do all
#endif
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    CHECK_FALSE(Save(path, "new"));
    CHECK(folder.Names() == Texts{"a"});
    CHECK(folder.Content("a") == "old");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

#if defined(_WIN32)

TEST_CASE("replaced file: the mode of the old file is kept; a device is written into") {
    const TempFolder folder;
    const std::string path = folder.File("a", "old");
    REQUIRE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_HIDDEN));
    CHECK(Save(path, "new"));
    CHECK(folder.Content("a") == "new");
    CHECK((GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0);
    CHECK(Save("NUL", "new"));
}

#else

TEST_CASE("replaced file: the mode of the old file is kept, and a new one has the usual") {
    const TempFolder folder;
    const auto modeOf = [&folder](const char* name) {
        struct stat status {};
        REQUIRE(stat(folder.Path(name).c_str(), &status) == 0);
        return status.st_mode & 07777;
    };
    const mode_t mask = umask(027);
    for (const mode_t mode : {0600u, 0666u, 0755u}) {
        const std::string path = folder.File("a", "old");
        chmod(path.c_str(), mode);
        CHECK(Save(path, "new"));
        CHECK(modeOf("a") == mode);
    }
    CHECK(Save(folder.Path("b"), "new"));
    CHECK(modeOf("b") == 0640);
    umask(mask);
}

TEST_CASE("replaced file: where a link leads is replaced, not the link; one that leads to itself is refused") {
    const TempFolder folder;
    folder.Folder("real");
    std::filesystem::create_symlink("real", folder.Path("folder"));
    std::filesystem::create_symlink(folder.Path("folder/a"), folder.Path("first")); // not there at first
    std::filesystem::create_symlink("first", folder.Path("second"));
    std::filesystem::create_symlink("circle", folder.Path("circle"));
    for (const char* text : {"new", "newer"}) {
        CHECK(Save(folder.Path("second"), text));
        CHECK(folder.Content("real/a") == text);
    }
    CHECK_FALSE(Save(folder.Path("circle"), "new"));
    for (const char* link : {"folder", "first", "second", "circle"})
        CHECK(std::filesystem::is_symlink(folder.Path(link)));
    CHECK(folder.Names() == Texts{"circle", "first", "folder", "real", "second"});
    CHECK(folder.Names("real") == Texts{"a"});
}

namespace {

/// A device of the test's own where the system lets it have one: who replaces the machine's takes it from all.
std::string Device(const TempFolder& folder, const char* name, unsigned minor) {
    const std::string own = folder.Path(name);
    const int opened =
        mknod(own.c_str(), S_IFCHR | 0666, makedev(1, minor)) == 0 ? open(own.c_str(), O_WRONLY) : -1; // or "nodev"
    if (opened < 0)
        std::filesystem::remove(own);
    return close(opened) == 0 ? own : std::string("/dev/") + name;
}

} // namespace

TEST_CASE("replaced file: a full disk is told and leaves the old file") {
    const TempFolder folder;
    const std::string path = folder.File("a", "old");
    {
        const SmallDisk disk(1000);
        ReplacedFile file(path.c_str());
        CHECK(Put(file, std::string(900, 'x')));
        CHECK_FALSE(Put(file, std::string(900, 'x')));
        CHECK(file.IsDiskFull());
        CHECK_FALSE(file.Seek(0));
        CHECK_FALSE(file.Commit()); // though a part was written
    }
    CHECK(folder.Names() == Texts{"a"});
    CHECK(folder.Content("a") == "old");

    ReplacedFile full(Device(folder, "full", 7).c_str());
    CHECK(Put(full, "new"));
    CHECK_FALSE(full.Commit());
    CHECK(full.IsDiskFull());
}

namespace {

/// Lets another process do something and answers how it ended, as wait tells it.
int InAnotherProcess(const std::function<void()>& work) {
    std::fflush(stdout); // else both may write what has been said until here
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

} // namespace

TEST_CASE("replaced file: a process that is killed leaves the old file, and one that ends on a signal nothing else") {
    const TempFolder folder;
    const std::string path = folder.File("a", "old");
    const auto endBy = [&path](int signal) {
        return InAnotherProcess([&] {
            std::signal(SIGTERM, [](int) {
                ReplacedFile::RemoveAllUnfinished();
                _exit(3);
            });
            ReplacedFile file(path.c_str());
            Put(file, "new");
            raise(signal);
        });
    };
    CHECK(WEXITSTATUS(endBy(SIGTERM)) == 3);
    CHECK(folder.Names() == Texts{"a"});
    CHECK(WTERMSIG(endBy(SIGKILL)) == SIGKILL);
    CHECK(folder.Content("a") == "old");
    CHECK(Save(path, "new")); // beside what was left
}

TEST_CASE("replaced file: a name that is taken is neither used nor followed") {
    const TempFolder folder;
    const std::string path = folder.File("a", "old");
    folder.File("precious", "precious");
    std::string name;
    InAnotherProcess([&] {
        const std::string first = ReplacedFile(path.c_str()).Path();
        // The next ones this process will ask for, as a malicious or a forgetful one may have left them.
        const std::size_t number = first.rfind('-') + 1;
        const int count = std::stoi(first.substr(number));
        for (int n = 1; n < 4; ++n)
            symlink(folder.Path("precious").c_str(),
                    (first.substr(0, number) + std::to_string(count + n) + ".new").c_str());
        Save(path, "new");
    });
    CHECK(folder.Content("a") == "new");
    CHECK(folder.Content("precious") == "precious");
}

TEST_CASE("replaced file: what is no regular file is written into and stays what it is") {
    const TempFolder folder;
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    const auto openBefore = openFiles();
    const std::string null = Device(folder, "null", 3);
    CHECK(Save(null, "new"));
    CHECK(std::filesystem::is_character_file(null));

    const std::string pipe = folder.Path("pipe");
    REQUIRE(mkfifo(pipe.c_str(), 0600) == 0);
    bool isSaved = false;
    std::thread writer([&] { isSaved = Save(pipe, "through"); });
    CHECK(folder.Content("pipe") == "through");
    writer.join();
    CHECK(isSaved);
    CHECK(std::filesystem::is_fifo(pipe));

    // Standard output that leads into a file: behind what the program has said already. As /dev/stdout names it.
    const std::string output = folder.Path("stdout");
    std::filesystem::create_symlink("/proc/self/fd/1", output);
    CHECK(InAnotherProcess([&] {
              const int file = open(folder.Path("out").c_str(), O_WRONLY | O_CREAT, 0600);
              dup2(file, STDOUT_FILENO);
              if (write(STDOUT_FILENO, "said,", 5) != 5 || !Save(output, "saved"))
                  _exit(1);
          }) == 0);
    CHECK(folder.Content("out") == "said,saved");
    CHECK(std::filesystem::is_symlink(output));
    std::filesystem::remove(folder.Path("null")); // there is one if the test may make devices
    CHECK(folder.Names() == Texts{"out", "pipe", "stdout"});
    CHECK(openFiles() == openBefore);
}

#endif
