#include "tests/support/system/Holdings.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <malloc.h>

namespace
{

QStringList entries(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A child belongs to the thread that started it.
int childCount()
{
    int count = 0;
    for (const QString &thread : entries(QStringLiteral("/proc/self/task")))
        count += static_cast<int>(
            contents(QStringLiteral("/proc/self/task/%1/children").arg(thread)).count(' '));
    return count;
}

double residentKilobytes()
{
    for (const QByteArray &line : contents(QStringLiteral("/proc/self/status")).split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.simplified().split(' ').value(1).toDouble();
    }
    return 0;
}

double heapKilobytes()
{
    const auto heap = mallinfo2();
    return double(heap.uordblks + heap.hblkhd) / 1024;
}

} // namespace

Holdings holdings()
{
    Holdings result;
    result.descriptors = static_cast<int>(entries(QStringLiteral("/proc/self/fd")).size());
    result.threads = static_cast<int>(entries(QStringLiteral("/proc/self/task")).size());
    result.children = childCount();
    result.resident = residentKilobytes();
    result.heap = heapKilobytes();
    return result;
}
