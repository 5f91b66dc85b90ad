#include "shell/switcher_models.h"

namespace tarnix {

const QStringList &switcherModelIds()
{
    static const QStringList ids{
        // Roland models, in the order of their table.
        "v8hd", "vr50hd-mk2", "v600uhd", "v160hd", "v80hd", "v1-4k", "v1hd-plus", "v1sdi", "v1hd", "v02hd-mk2",
        "vr4hd", "vr6hd", "vr120hd",
        // Kinds with a device of their own.
        "atem", "vr50hd",
    };
    return ids;
}

bool isKnownSwitcherModel(const QString &id)
{
    return switcherModelIds().contains(id);
}

} // namespace tarnix
