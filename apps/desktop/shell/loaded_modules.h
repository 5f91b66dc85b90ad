#pragma once

#include <QList>
#include <QString>

namespace tarnix {

struct LoadedModule {
    QString name;  // file name
    QString path;  // absolute path as the dynamic loader reports it
};

// Every shared object mapped into the process, the executable first. Empty
// only when the loader could not be asked.
QList<LoadedModule> loadedModules();

// The final path of an open file descriptor, read from /proc/self/fd.
// Returns false and the errno value when the link cannot be read.
bool pathOfOpenDescriptor(int fd, QString *path, int *errorNumber);

} // namespace tarnix
