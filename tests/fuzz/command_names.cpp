// What a process in a made-up /proc is called. Four texts, separated by the record separator
// (0x1e): the name of its executable, comm, the command line, and another name of the same file.

#include "libexec/names/CommandName.h"
#include "libexec/names/KnownNames.h"
#include "libexec/names/ProgramName.h"
#include "libexec/proc/Descriptor.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/MemoryDirectory.h"

#include <climits>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <unistd.h>

using namespace tidewick::libexec;

namespace
{

namespace files = std::filesystem;

/// A directory with the files of one process, and with its executable.
class FakeProcess
{
public:
    FakeProcess(const std::string &name, const std::string &comm, const std::string &commandLine,
                const std::string &alias)
        : m_executable(m_root / "bin" / name)
    {
        files::create_directories(m_root / "bin");
        write("comm", comm + '\n');
        write("cmdline", commandLine);
        write(files::path("bin") / name, "");
        files::create_symlink(m_executable, m_root / "exe");
        std::error_code isThere;
        files::create_hard_link(m_executable, m_root / "bin" / alias, isThere);
        if (isThere || name == alias)
            m_hasAlias = false;
    }

    const files::path &root() const { return m_root; }
    const files::path &executable() const { return m_executable; }
    bool hasAlias() const { return m_hasAlias; }
    void hideExecutable() const { files::remove(m_root / "exe"); }

private:
    void write(const files::path &path, const std::string &text) const
    {
        std::ofstream(m_root / path, std::ios::binary) << text;
    }

    MemoryDirectory m_directory;
    const files::path m_root = m_directory.path();
    const files::path m_executable;
    bool m_hasAlias = true;
};

/// A file's name, made of any text.
std::string fileName(QByteArray text)
{
    text.replace('/', '_').replace('\0', '_').truncate(NAME_MAX);
    return text.isEmpty() || text == "." || text == ".." ? "name" : text.toStdString();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 4, '\x1e');
    const std::string name = fileName(texts[0]);
    const std::string comm = texts[1].left(15).replace('\0', ' ').toStdString();
    const std::string alias = fileName(texts[3]);
    const FakeProcess process(name, comm, texts[2].toStdString(), alias);
    const Descriptor directory(openDirectory(AT_FDCWD, process.root().c_str()));

    const std::string command = commandOf(directory.value(), "");
    promise(!command.empty() && command.size() <= NAME_MAX, "a command is a name");
    const std::string own = programName(process.executable().string(), true, {});
    const bool isAlias = process.hasAlias() && comm == alias && command == foldName(alias);
    promise(command == own || own.empty() || isAlias || isDynamicLoader(own),
            "a command is a name of its file");
    promise(!isKnownName(own) || command == own, "nothing hides a known name");

    process.hideExecutable();
    const std::string hidden = hiddenProgramName(comm);
    promise(commandOf(directory.value(), "") == (hidden.empty() ? "?" : hidden),
            "what is hidden is called what the kernel calls it");
    promise(hiddenCommandOf(directory.value(), "") == commandOf(directory.value(), ""),
            "both ways tell the same");
    return 0;
}
