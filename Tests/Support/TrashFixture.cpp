#include "Tests/Support/TrashFixture.h"

#include "Tests/Support/Surroundings.h"

#include <QProcess>
#include <QStandardPaths>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <sys/stat.h>

namespace Tests {
namespace {

QString Text(const std::string& text)
{
    return QString::fromStdString(text);
}

} // namespace

bool EntryExists(const std::string& path)
{
    return std::filesystem::exists(std::filesystem::symlink_status(path));
}

ino_t InodeOf(const std::string& path)
{
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0)
        throw std::runtime_error("nothing at " + path);
    return status.st_ino;
}

std::string FindProgram(const std::string& name)
{
    const QString found = QStandardPaths::findExecutable(Text(name));
    const QStringList onlyForRoot = {Text("/usr/sbin"), Text("/sbin")};
    return (found.isEmpty() ? QStandardPaths::findExecutable(Text(name), onlyForRoot) : found).toStdString();
}

void TrashFixture::SetUpTestSuite()
{
    PreferATemporaryFolderWithATrash();
}

void TrashFixture::SetUp()
{
    if (const std::string why = WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    if (FindProgram("trash-list").empty() || FindProgram("trash-restore").empty())
        GTEST_SKIP() << "trash-list and trash-restore are not installed (trash-cli)";
    MakeFolder("home", 0777);
    MakeFolder("work", 0777);
}

Outcome TrashFixture::Run(const std::string& program, const Arguments& arguments,
                          const std::string& input) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(Text("HOME"), Text(Path("home")));
    environment.insert(Text("LC_ALL"), Text("C.UTF-8"));
    if (dataHome)
        environment.insert(Text("XDG_DATA_HOME"), Text(*dataHome));
    else
        environment.remove(Text("XDG_DATA_HOME"));
    QStringList texts;
    for (const std::string& argument : arguments)
        texts << Text(argument);

    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(Text(Path("work")));
    process.start(Text(program), texts);
    process.write(QByteArray::fromStdString(input));
    process.closeWriteChannel();
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        throw std::runtime_error(program + " did not end normally");
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

bool TrashFixture::Trash(const std::string& path, Arguments options) const
{
    options.push_back(QByteArray::fromStdString(path).toPercentEncoding().toStdString());
    const Outcome outcome = Run(TRASH_TOOL, options);
    EXPECT_THAT(outcome.exitCode, testing::AnyOf(EXIT_SUCCESS, EXIT_FAILURE)) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    return outcome.exitCode == EXIT_SUCCESS;
}

std::string TrashFixture::TrashList() const
{
    const Outcome outcome = Run(FindProgram("trash-list"), {});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    return outcome.output;
}

std::string TrashFixture::OnlyTrashedPath() const
{
    const size_t dateLength = std::string("2000-12-31 23:59:59 ").size();
    const std::string list = TrashList();
    if (list.size() < dateLength)
        return "nothing in " + list;
    return list.substr(dateLength, list.size() - dateLength - 1);
}

void TrashFixture::Restore(int index) const
{
    const Arguments everywhere = {"/"};
    const Outcome outcome = Run(FindProgram("trash-restore"), everywhere, std::to_string(index) + '\n');
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
}

std::map<std::string, std::string> TrashFixture::Files() const
{
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Path())) {
        if (entry.is_symlink())
            files[entry.path()] = "link to " + std::filesystem::read_symlink(entry).string();
        else if (entry.is_regular_file())
            files[entry.path()].assign(std::istreambuf_iterator<char>(std::ifstream(entry.path()).rdbuf()),
                                       {});
    }
    return files;
}

void TrashFixture::ExpectTrashedAndRestored(const std::string& path, const std::string& entry) const
{
    const auto before = Files();

    EXPECT_TRUE(Trash(path)) << path;

    EXPECT_FALSE(EntryExists(entry)) << path;
    EXPECT_EQ(OnlyTrashedPath(), entry);
    EXPECT_NE(Files(), before);
    Restore();
    EXPECT_EQ(Files(), before);
    EXPECT_EQ(TrashList(), "");
}

void TrashFixture::ExpectRefused(const std::string& path, const Arguments& options) const
{
    const auto before = Files();

    EXPECT_FALSE(Trash(path, options)) << path;

    EXPECT_EQ(Files(), before) << path;
}

std::string TrashFixture::HardLinkIntoTrash(const std::string& file, const std::string& name) const
{
    MakeFolder("home/data/Trash/files");
    MakeFolder("home/data/Trash/info");
    const std::string link = Path("home/data/Trash/files/" + name);
    std::filesystem::create_hard_link(file, link);
    return link;
}

void TrashFixture::TakeNamesInTrashAfter(const std::string& name) const
{
    for (int i = 2; i <= 300; ++i)
        Write("home/data/Trash/info/" + name + "." + std::to_string(i) + ".trashinfo", "");
}

void TrashFixture::FillTrash(int count) const
{
    for (int i = 0; i < count; ++i) {
        const std::string name = "old " + std::to_string(i);
        Write("home/data/Trash/files/" + name);
        Write("home/data/Trash/info/" + name + ".trashinfo",
              "[Trash Info]\nPath=" + Path(name) + "\nDeletionDate=2020-01-01T00:00:00\n");
    }
}

} // namespace Tests
