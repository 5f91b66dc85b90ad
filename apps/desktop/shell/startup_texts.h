#pragma once

#include <QString>

namespace tarnix {

// English texts of the translation keys used while the application starts.
// They are the fallback texts of those keys: the language catalogues resolve
// the same keys once they are loaded. An unknown key returns the key itself,
// so a missing text is visible rather than blank.
QString startupText(const char *key);

} // namespace tarnix
