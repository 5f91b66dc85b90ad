#pragma once

#include "shell/localized_text.h"

#include <QStringList>

namespace tarnix::ui {

// A catalogue text of the panels, with the English words beside the key
// so that the code reads as what the operator sees.
inline QString text(const char *key, const char *fallback, const QStringList &args = {})
{
    return LocalizedText(QString::fromLatin1(key), args, QString::fromUtf8(fallback)).toString();
}

} // namespace tarnix::ui
