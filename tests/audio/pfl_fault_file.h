#pragma once

#include <QFile>
#include <QString>
#include <QTemporaryDir>

namespace tarnix::test {

// Writes the fault the faulty PFL helper build reads at its start (see
// pfl_helper_faults.cpp) and returns the file's path for
// TARNIX_PFL_HELPER_FAULT_FILE; empty if it could not be written.
inline QString writePflHelperFault(const QTemporaryDir &directory, const char *fault)
{
    QFile file(directory.filePath(QStringLiteral("fault")));
    if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(fault) + '\n') < 0)
        return {};
    return file.fileName();
}

} // namespace tarnix::test
