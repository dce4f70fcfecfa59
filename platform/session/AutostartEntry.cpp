#include "platform/session/AutostartEntry.h"

#include "platform/session/DesktopEntry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <cerrno>
#include <filesystem>
#include <utility>

namespace tidewick
{
namespace
{

const QString fileName = QStringLiteral("/autostart/org.tidewick.Tidewick.desktop");
const QString hidden = QStringLiteral("Hidden");
const QString enabledInGnome = QStringLiteral("X-GNOME-Autostart-enabled");
const QString tryExec = QStringLiteral("TryExec");
const QString yes = QStringLiteral("true");
const QString no = QStringLiteral("false");

/// More than any entry that was meant as one.
constexpr qint64 entryLimit = 65536;

/// The base directory specification of freedesktop.org has a relative path ignored.
QString userDirectory()
{
    const QString set = QFile::decodeName(qgetenv("XDG_CONFIG_HOME"));
    return QDir::isAbsolutePath(set) ? set : QDir::homePath() + QStringLiteral("/.config");
}

QString userFile()
{
    return userDirectory() + fileName;
}

/// The files of this name, the user's first, then the system's in their order.
QStringList existingFiles()
{
    const auto location = QStandardPaths::GenericConfigLocation;
    QStringList directories = QStandardPaths::standardLocations(location);
    directories.removeAll(QStandardPaths::writableLocation(location));
    directories.prepend(userDirectory());
    QStringList files;
    for (const QString &directory : directories) {
        if (QFileInfo::exists(directory + fileName))
            files.append(directory + fileName);
    }
    return files;
}

/// A file's entry, and why it must not be written back: then that is not all of the file.
struct ReadEntry
{
    DesktopEntry entry = DesktopEntry();
    std::optional<QString> error;
};

/// An entry without anything where there is none, or something else: a pipe would never answer.
ReadEntry read(const QString &path)
{
    if (!QFileInfo(path).isFile())
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {DesktopEntry(), file.errorString()};
    ReadEntry result{DesktopEntry(file.read(entryLimit)), std::nullopt};
    if (file.error() != QFile::NoError)
        result.error = file.errorString();
    else if (!file.read(1).isEmpty())
        result.error = qt_error_string(EFBIG);
    return result;
}

/// A disk that is nearly full takes a part.
bool writeAll(QIODevice &device, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const qint64 written = device.write(bytes.data(), bytes.size());
        if (written <= 0)
            return false;
        bytes = bytes.sliced(written);
    }
    return true;
}

std::optional<QString> write(const QString &path, const DesktopEntry &entry)
{
    std::error_code error;
    std::filesystem::create_directories(
        std::filesystem::path(QFile::encodeName(path).toStdString()).parent_path(), error);
    if (error)
        return QString::fromStdString(error.message());
    // An entry that is masked by a link to /dev/null is replaced, not written through.
    const QFileInfo info(path);
    if (info.isSymLink() && !info.isFile())
        QFile::remove(path);
    // Buffered, it would not notice a full disk, and put an empty file in the old one's place.
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && writeAll(file, entry.toText()) &&
        file.commit())
        return std::nullopt;
    return file.errorString();
}

bool isOn(const DesktopEntry &entry)
{
    return !entry.value(QStringLiteral("Exec")).value_or(QString()).isEmpty() &&
           entry.value(hidden) != yes && entry.value(enabledInGnome) != no;
}

} // namespace

AutostartEntry::AutostartEntry(QString program) : m_program(std::move(program)) {}

LoginItemStatus AutostartEntry::status() const
{
    const QStringList files = existingFiles();
    if (files.isEmpty())
        return LoginItemStatus::notRegistered;
    const DesktopEntry entry = read(files.first()).entry;
    if (!isOn(entry))
        return LoginItemStatus::notRegistered;
    const auto needed = entry.value(tryExec);
    const bool isThere = !needed || QFileInfo(*needed).isExecutable() ||
                         !QStandardPaths::findExecutable(*needed).isEmpty();
    return isThere ? LoginItemStatus::enabled : LoginItemStatus::notFound;
}

std::optional<QString> AutostartEntry::registerItem()
{
    auto [entry, error] = read(userFile());
    if (error)
        return error;
    entry.setValue(QStringLiteral("Type"), QStringLiteral("Application"));
    entry.setValue(QStringLiteral("Name"), QStringLiteral("Tidewick"));
    entry.setValue(QStringLiteral("Comment"),
                   QStringLiteral("Local development servers in the status bar"));
    entry.setValue(QStringLiteral("Icon"), QStringLiteral("org.tidewick.Tidewick"));
    entry.setValue(QStringLiteral("Exec"),
                   QStringLiteral("env %1=1 %2")
                       .arg(QLatin1String(autostartVariable), quotedForExec(m_program)));
    entry.setValue(tryExec, m_program);
    entry.setValue(QStringLiteral("Terminal"), no);
    entry.setValue(QStringLiteral("X-LXQt-Need-Tray"), yes);
    entry.setValue(enabledInGnome, yes);
    entry.remove(hidden);
    entry.remove(QStringLiteral("OnlyShowIn"));
    entry.remove(QStringLiteral("NotShowIn"));
    return write(userFile(), entry);
}

std::optional<QString> AutostartEntry::unregisterItem()
{
    QStringList files = existingFiles();
    const bool isUsers = files.removeOne(userFile());
    if (!files.isEmpty()) {
        auto [entry, error] = read(isUsers ? userFile() : files.first());
        if (error)
            return error;
        entry.setValue(hidden, yes);
        entry.setValue(enabledInGnome, no);
        return write(userFile(), entry);
    }
    QFile file(userFile());
    if (!isUsers || file.remove())
        return std::nullopt;
    return file.errorString();
}

} // namespace tidewick
