#pragma once

#include <QList>
#include <QPalette>
#include <QString>
#include <QStringList>

namespace tarnix {

// One look of the controller window: style sheets embedded as resources and
// the palette that goes under them.
struct ControllerSkin {
    QString key;
    QString displayName;
    QStringList styleSheets;        // resource paths, joined in this order
    bool usesHardwareEffects = false; // widgets may paint lamps and bevels of their own
    QString paletteId;
};

// The skins, the default first.
const QList<ControllerSkin> &controllerSkins();
QString defaultControllerSkin();
const ControllerSkin *findControllerSkin(const QString &key);

// The skin applied last in this run; empty before the first.
QString currentControllerSkin();

// The palette a skin's sheets are drawn over.
QPalette controllerSkinPalette(const QString &paletteId);

// Makes a skin the application's look: reads its sheets, sets the palette,
// the application properties "controllerSkinKey",
// "controllerSkinUsesHardwareEffects" and "controllerUnscaledStyleSheet",
// and the sheet scaled for the current interface scale and text size. An
// unknown key or a sheet that cannot be read changes nothing and returns
// false with the reason. Main thread, with a QApplication; the sheets are
// resources, so nothing waits on a disk.
bool applyControllerSkin(const QString &key, QString *error = nullptr);

// Sets the application's style sheet again from the unscaled text of the
// skin in use, after the interface scale or the text size changed. Nothing
// happens before a skin was applied.
void rescaleControllerSkin();

// A style sheet's lengths scaled: every px and pt value inside a rule's
// braces is multiplied by `scale`, and by `textFactor` as well when it is a
// font size; results are rounded half away from zero and a positive value
// stays at least 1. url(...), quoted strings and comments are left as they
// are. Always give it the unscaled text.
QString scaleStyleSheet(const QString &unscaled, double scale, double textFactor);

} // namespace tarnix
