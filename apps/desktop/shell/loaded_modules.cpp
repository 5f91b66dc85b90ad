#include "shell/loaded_modules.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <climits>
#include <link.h>
#include <unistd.h>

namespace tarnix {

namespace {

int collectModule(struct dl_phdr_info *info, size_t, void *data)
{
    auto *modules = static_cast<QList<LoadedModule> *>(data);
    QString path = info->dlpi_name ? QFile::decodeName(info->dlpi_name) : QString();
    if (path.isEmpty()) {
        // The first entry, with an empty name, is the executable itself; the
        // vDSO has an empty name too and has no file.
        if (!modules->isEmpty())
            return 0;
        path = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
    }
    if (!path.startsWith(QLatin1Char('/')))
        return 0;  // the vDSO: mapped by the kernel, no file behind it
    modules->append({QFileInfo(path).fileName(), path});
    return 0;
}

} // namespace

QList<LoadedModule> loadedModules()
{
    QList<LoadedModule> modules;
    dl_iterate_phdr(collectModule, &modules);
    return modules;
}

bool pathOfOpenDescriptor(int fd, QString *path, int *errorNumber)
{
    char buffer[PATH_MAX];
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(fd);
    const ssize_t n = ::readlink(link.constData(), buffer, sizeof(buffer) - 1);
    if (n < 0) {
        if (errorNumber)
            *errorNumber = errno;
        return false;
    }
    if (path)
        *path = QFile::decodeName(QByteArray(buffer, int(n)));
    return true;
}

} // namespace tarnix
